// What keys answer to the question about a taken name.

#include "conflict_question.h"

#include <chrono>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "asked_conflict.h"

namespace {

using FileQuestion = AskedConflict;
using DirectoryQuestion = AskedConflict;

} // namespace

TEST_F(FileQuestion, AnswersForThisFile) {
    EXPECT_EQ(AnswerTo(FileConflict(), 'o'), (ConflictAnswer{Action::Overwrite, {}, {}, {}}));
    EXPECT_EQ(AnswerTo(FileConflict(), 's'), (ConflictAnswer{Action::Skip, {}, {}, {}}));
    EXPECT_EQ(AnswerTo(FileConflict(), 'b'),
              (ConflictAnswer{Action::CompareByContent, {}, {}, {}}));
    EXPECT_EQ(AnswerTo(FileConflict(), 'k'), (ConflictAnswer{Action::Rename, FreePath, {}, {}}));
}

TEST_F(FileQuestion, AnswersForAllFiles) {
    EXPECT_EQ(AnswerTo(FileConflict(), 'O'),
              (ConflictAnswer{Action::Overwrite, {}, FileConflictChoice::Overwrite, {}}));
    EXPECT_EQ(AnswerTo(FileConflict(), 'S'),
              (ConflictAnswer{Action::Skip, {}, FileConflictChoice::Skip, {}}));
    EXPECT_EQ(AnswerTo(FileConflict(), 'B'),
              (ConflictAnswer{Action::CompareByContent, {}, FileConflictChoice::Compare, {}}));
    EXPECT_EQ(AnswerTo(FileConflict(), 'K'),
              (ConflictAnswer{Action::Rename, FreePath, FileConflictChoice::KeepBoth, {}}));
}

TEST_F(FileQuestion, OverwritesThisFileWithAllOlderWhenItIsOlder) {
    EXPECT_EQ(AnswerTo(FileConflict(), 'u'),
              (ConflictAnswer{Action::Overwrite, {}, FileConflictChoice::Older, {}}));
}

TEST_F(FileQuestion, SkipsThisFileWithAllOlderWhenItIsNotOlder) {
    const ConflictAnswer skip{Action::Skip, {}, FileConflictChoice::Older, {}};
    TarvaneTransferConflict conflict = FileConflict();
    conflict.SourceModifiedTicks = conflict.DestinationModifiedTicks;
    EXPECT_EQ(AnswerTo(conflict, 'u'), skip);
    conflict = FileConflict();
    conflict.bSourceHasModifiedTime = false;
    EXPECT_EQ(AnswerTo(conflict, 'u'), skip);
    conflict = FileConflict();
    conflict.bDestinationHasModifiedTime = false;
    EXPECT_EQ(AnswerTo(conflict, 'u'), skip);
}

TEST_F(FileQuestion, SkipsOnEnterAlone) {
    EXPECT_EQ(Ask(FileConflict()).Handle(kEnter), (ConflictAnswer{Action::Skip, {}, {}, {}}));
    EXPECT_EQ(Ask(FileOntoDirectory()).Handle(kEnter), (ConflictAnswer{Action::Skip, {}, {}, {}}));
}

TEST_F(FileQuestion, CancelsOnEscape) {
    EXPECT_EQ(Ask(FileConflict()).Handle(kEscape), (ConflictAnswer{Action::Cancel, {}, {}, {}}));
}

TEST_F(FileQuestion, TakesNoOtherKey) {
    for (const char key : std::string("mMxX1 yn.")) {
        EXPECT_EQ(AnswerTo(FileConflict(), key), std::nullopt) << key;
    }
    for (const KeyCode code : {KeyCode::Delete, KeyCode::Home, KeyCode::Other}) {
        EXPECT_EQ(Ask(FileConflict()).Handle({code, {}}), std::nullopt);
    }
    EXPECT_EQ(Ask(FileConflict()).Handle({KeyCode::Text, "ö"}), std::nullopt);
    EXPECT_EQ(Ask(FileConflict()).Handle({KeyCode::Alt, "o"}), std::nullopt);
    EXPECT_EQ(Ask(FileConflict()).Handle({KeyCode::Control, "o"}), std::nullopt);
}

TEST_F(FileQuestion, ComparesNothingThatHasNoSize) {
    for (const bool bSourceHasSize : {false, true}) {
        TarvaneTransferConflict conflict = FileConflict();
        conflict.bSourceHasSize = bSourceHasSize;
        conflict.bDestinationHasSize = !bSourceHasSize;
        for (const char key : std::string("bB")) {
            EXPECT_EQ(AnswerTo(conflict, key), std::nullopt) << key;
        }
    }
}

TEST_F(FileQuestion, RemovesADirectoryOnlyAfterASecondKey) {
    for (const char key : std::string("oOu")) {
        ConflictQuestion question = Ask(FileOntoDirectory());
        EXPECT_EQ(question.Handle(Letter(key)), std::nullopt) << key;
        EXPECT_TRUE(question.IsConfirming()) << key;
        const std::optional<ConflictAnswer> answer = question.Handle(Letter('y'));
        ASSERT_TRUE(answer.has_value()) << key;
        EXPECT_EQ(answer->Action, Action::Overwrite);
    }
}

TEST_F(FileQuestion, GoesBackWhenTheSecondKeyIsAnother) {
    for (const KeyPress& second :
         {kEnter, kEscape, Letter('o'), Letter('n'), KeyPress{KeyCode::Alt, "y"}}) {
        ConflictQuestion question = Ask(FileOntoDirectory());
        EXPECT_EQ(question.Handle(Letter('o')), std::nullopt);
        EXPECT_EQ(question.Handle(second), std::nullopt);
        EXPECT_FALSE(question.IsConfirming());
        EXPECT_EQ(question.Handle(Letter('y')), std::nullopt);
    }
}

TEST_F(FileQuestion, AsksForNoSecondKeyWhenNothingIsRemoved) {
    TarvaneTransferConflict conflict = FileOntoDirectory();
    EXPECT_NE(AnswerTo(conflict, 's'), std::nullopt);
    EXPECT_NE(AnswerTo(conflict, 'k'), std::nullopt);
    conflict.SourceModifiedTicks = 0;
    EXPECT_EQ(AnswerTo(conflict, 'u'),
              (ConflictAnswer{Action::Skip, {}, FileConflictChoice::Older, {}}));
}

TEST_F(FileQuestion, AsksForNoSecondKeyWhereALinkIsReplaced) {
    for (const TakenEntry& entry : {kLinkToFile, kLinkToDirectory}) {
        EXPECT_EQ(Ask(At(FileConflict(), entry)).Handle(Letter('o')),
                  (ConflictAnswer{Action::Overwrite, {}, {}, {}}));
    }
}

TEST_F(FileQuestion, OffersNothingThatReplacesWhereNobodyMay) {
    EXPECT_EQ(Letters(At(FileConflict(), EntryOf(FileConflict()))), "oOusSrkKbB");
    EXPECT_EQ(Letters(At(FileConflict(), kSpecial)), "sSrkK");
    TakenName holder = At(FileOntoDirectory(), EntryOf(FileOntoDirectory()));
    EXPECT_EQ(Letters(holder), "oOusSrkK");
    holder.bHoldsSource = true;
    EXPECT_EQ(Letters(holder), "sSrkK");
    for (const char key : std::string("oOubB")) {
        EXPECT_EQ(Ask(holder).Handle(Letter(key)), std::nullopt) << key;
        EXPECT_EQ(Ask(At(FileConflict(), kSpecial)).Handle(Letter(key)), std::nullopt) << key;
    }
}

TEST_F(FileQuestion, OffersNoComparisonForATrack) {
    TarvaneTransferConflict conflict = FileConflict();
    conflict.SourcePath = "cdda:/dev/sr0/Track 01.wav";
    conflict.bSourceHasSize = conflict.bSourceHasModifiedTime = false;
    EXPECT_EQ(Letters(At(conflict, EntryOf(conflict))), "oOsSrkK");
    for (const char key : std::string("ubB")) {
        EXPECT_EQ(AnswerTo(conflict, key), std::nullopt) << key;
    }
}

TEST_F(FileQuestion, SaysWhenThereIsNoFreeName) {
    FreePath.clear();
    ConflictQuestion question = Ask(FileConflict());
    EXPECT_EQ(question.Handle(Letter('k')), std::nullopt);
    EXPECT_EQ(question.WhyNotTaken(), "No free name was found.");
    EXPECT_EQ(question.Handle(Letter('x')), std::nullopt);
    EXPECT_EQ(question.WhyNotTaken(), "");
}

TEST_F(FileQuestion, LeavesALineWithTheAnswer) {
    ConflictQuestion question = Ask(FileConflict());
    question.Handle(Letter('O'));
    EXPECT_EQ(question.AnswerLine(), "File exists: /media/usb0/Backup/cover.jpg | overwrite all");
    ConflictQuestion both = Ask(FileConflict());
    both.Handle(Letter('k'));
    EXPECT_EQ(both.AnswerLine(), "File exists: /media/usb0/Backup/cover.jpg | keep both | "
                                 "/media/usb0/Backup/cover-2.jpg");
    ConflictQuestion canceled = Ask(FileConflict());
    canceled.Handle(kEscape);
    EXPECT_EQ(canceled.AnswerLine(), "File exists: /media/usb0/Backup/cover.jpg | cancel");
}

TEST_F(DirectoryQuestion, AnswersForThisDirectory) {
    EXPECT_EQ(AnswerTo(DirectoryConflict(), 'm'), (ConflictAnswer{Action::Merge, {}, {}, {}}));
    EXPECT_EQ(AnswerTo(DirectoryConflict(), 's'), (ConflictAnswer{Action::Skip, {}, {}, {}}));
    EXPECT_EQ(Ask(DirectoryConflict()).Handle(kEnter), (ConflictAnswer{Action::Skip, {}, {}, {}}));
    EXPECT_EQ(Ask(DirectoryConflict()).Handle(kEscape),
              (ConflictAnswer{Action::Cancel, {}, {}, {}}));
}

TEST_F(DirectoryQuestion, AnswersForAllDirectories) {
    EXPECT_EQ(AnswerTo(DirectoryConflict(), 'M'),
              (ConflictAnswer{Action::Merge, {}, {}, DirectoryConflictChoice::Merge}));
    EXPECT_EQ(AnswerTo(DirectoryConflict(), 'S'),
              (ConflictAnswer{Action::Skip, {}, {}, DirectoryConflictChoice::Skip}));
}

TEST_F(DirectoryQuestion, TakesNoAnswerForFiles) {
    for (const char key : std::string("oOurkKbBy")) {
        EXPECT_EQ(AnswerTo(DirectoryConflict(), key), std::nullopt) << key;
    }
}

TEST_F(DirectoryQuestion, ReplacesAFileOnlyAfterASecondKey) {
    for (const char key : std::string("mM")) {
        ConflictQuestion question = Ask(DirectoryOntoFile());
        EXPECT_EQ(question.Handle(Letter(key)), std::nullopt) << key;
        EXPECT_TRUE(question.IsConfirming()) << key;
        const std::optional<ConflictAnswer> answer = question.Handle(Letter('y'));
        ASSERT_TRUE(answer.has_value()) << key;
        EXPECT_EQ(answer->Action, Action::Merge);
    }
    ConflictQuestion link = Ask(At(DirectoryOntoFile(), kLinkToFile));
    EXPECT_EQ(link.Handle(Letter('m')), std::nullopt);
    EXPECT_TRUE(link.IsConfirming());
}

TEST_F(DirectoryQuestion, EntersALinkToADirectoryWithOneKey) {
    EXPECT_EQ(Ask(At(DirectoryConflict(), kLinkToDirectory)).Handle(Letter('m')),
              (ConflictAnswer{Action::Merge, {}, {}, {}}));
}

TEST_F(DirectoryQuestion, OffersNothingThatReplacesASpecialFile) {
    EXPECT_EQ(Letters(At(DirectoryConflict(), EntryOf(DirectoryConflict()))), "mMsS");
    EXPECT_EQ(Letters(At(DirectoryOntoFile(), kSpecial)), "sS");
}
