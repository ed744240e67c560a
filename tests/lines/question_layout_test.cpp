// What the question about a taken name shows.

#include "question_layout.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "shown_question.h"

namespace {

using QuestionLayout = ShownQuestion;

} // namespace

TEST_F(QuestionLayout, ListsTheAnswersBelowBothSides) {
    EXPECT_EQ(Shown(Ask(FileConflict())),
              (Texts{
                  "File exists: /media/usb0/Backup/cover.jpg",
                  "             46.0 KB (47110 bytes)  2023-12-24 18:00:00",
                  "Source:      /home/u/Music/cover.jpg",
                  "             47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer",
                  "Canceling while a file is being overwritten loses the old one.",
                  "o           overwrite",
                  "O           overwrite all",
                  "u           overwrite all older",
                  "s or Enter  skip",
                  "S           skip all",
                  "r           rename",
                  "k           keep both",
                  "K           keep both for all",
                  "b           compare: skip when equal, overwrite when not",
                  "B           compare all",
                  "Esc         cancel the transfer",
                  "? ",
              }));
}

TEST_F(QuestionLayout, ShowsEachSideInOneLineOfAWideWindow) {
    const Texts shown = Shown(Ask(FileConflict()), {200, 50});
    EXPECT_EQ(Texts(shown.begin(), shown.begin() + 4),
              (Texts{
                  "File exists: /media/usb0/Backup/cover.jpg  46.0 KB (47110 bytes)  "
                  "2023-12-24 18:00:00",
                  "Source:      /home/u/Music/cover.jpg       47.1 KB (48230 bytes)  "
                  "2024-03-07 14:05:09  newer",
                  "Canceling while a file is being overwritten loses the old one.",
                  "o           overwrite",
              }));
    EXPECT_EQ(shown.size(), 15U);
}

TEST_F(QuestionLayout, LetsTheKeysStandOut) {
    const std::vector<ScreenLine> lines = LayOutQuestion(Ask(FileConflict()), kUsualSize).Lines;
    EXPECT_EQ(lines[5].Styles, (std::vector<StyledRange>{{0, 1, TextStyle::Key}}));
    EXPECT_EQ(lines[8].Styles,
              (std::vector<StyledRange>{{0, 1, TextStyle::Key}, {5, 10, TextStyle::Key}}));
}

TEST_F(QuestionLayout, PutsTheCursorBehindThePrompt) {
    const QuestionScreen screen = LayOutQuestion(Ask(FileConflict()), kUsualSize);
    EXPECT_EQ(screen.Cursor, (BlockCursor{16, "? "}));
}

TEST_F(QuestionLayout, MarksHowTheSourceCompares) {
    const auto sourceFacts = [this](const TarvaneTransferConflict& Conflict) {
        return Shown(Ask(Conflict))[3];
    };
    TarvaneTransferConflict conflict = FileConflict();
    conflict.SourceModifiedTicks = 0;
    EXPECT_EQ(sourceFacts(conflict),
              "             47.1 KB (48230 bytes)  2024-03-07 14:05:09  older");
    conflict.SourceModifiedTicks = conflict.DestinationModifiedTicks;
    conflict.DestinationSizeBytes = conflict.SourceSizeBytes;
    EXPECT_EQ(sourceFacts(conflict),
              "             47.1 KB (48230 bytes)  2024-03-07 14:05:09  same date, same size");
    conflict.bDestinationHasModifiedTime = false;
    EXPECT_EQ(sourceFacts(conflict),
              "             47.1 KB (48230 bytes)  2024-03-07 14:05:09  same size");
    conflict.bDestinationHasSize = false;
    EXPECT_EQ(sourceFacts(conflict), "             47.1 KB (48230 bytes)  2024-03-07 14:05:09");
}

TEST_F(QuestionLayout, SaysWhatIsUnknown) {
    TarvaneTransferConflict conflict = FileConflict();
    conflict.bSourceHasSize = conflict.bDestinationHasSize = false;
    conflict.bSourceHasModifiedTime = conflict.bDestinationHasModifiedTime = false;
    EXPECT_EQ(Shown(Ask(conflict))[0],
              "File exists: /media/usb0/Backup/cover.jpg  size unknown  date unknown");
    EXPECT_EQ(Shown(Ask(conflict))[1],
              "Source:      /home/u/Music/cover.jpg       size unknown  date unknown");
}

TEST_F(QuestionLayout, WrapsLongPaths) {
    TarvaneTransferConflict conflict = FileConflict();
    conflict.DestinationPath = "/" + std::string(100, 'd');
    EXPECT_EQ(Shown(Ask(conflict))[0], "File exists: /" + std::string(65, 'd'));
    EXPECT_EQ(Shown(Ask(conflict))[1], std::string(35, 'd'));
}

TEST_F(QuestionLayout, CleansNames) {
    TarvaneTransferConflict conflict = FileConflict();
    conflict.SourcePath = "/a\x1B[2J\n\xFF\u202E";
    EXPECT_EQ(Shown(Ask(conflict))[2], "Source:      /a?[2J?\uFFFD\uFFFD");
}

TEST_F(QuestionLayout, WarnsThatOverwritingRemovesADirectory) {
    const ConflictQuestion question = Ask(FileOntoDirectory());
    EXPECT_EQ(Shown(question)[0], "Directory exists: /media/usb0/Backup/cover.jpg");
    EXPECT_EQ(Shown(question)[1], "                  directory  2023-12-24 18:00:00");
    EXPECT_EQ(Warnings(question),
              Texts{"Overwriting removes this whole directory with all in it."});
}

TEST_F(QuestionLayout, ShowsBothSidesOfADirectory) {
    EXPECT_EQ(Shown(Ask(DirectoryConflict())),
              (Texts{
                  "Directory exists: /media/usb0/Backup/Live",
                  "                  directory  2023-12-24 18:00:00",
                  "Source:           /home/u/Music/Live",
                  "                  directory  2024-03-07 14:05:09  newer",
                  "m           merge",
                  "M           merge all",
                  "s or Enter  skip",
                  "S           skip all",
                  "Esc         cancel the transfer",
                  "? ",
              }));
}

TEST_F(QuestionLayout, WarnsThatMergingReplacesAFile) {
    const ConflictQuestion question = Ask(DirectoryOntoFile());
    EXPECT_EQ(Shown(question)[0], "File exists: /media/usb0/Backup/Live");
    EXPECT_EQ(Warnings(question), Texts{"Merging replaces this file by a directory."});
}

TEST_F(QuestionLayout, ShowsALinkAsOne) {
    const Texts shown = Shown(Ask(At(FileConflict(), kLinkToFile)));
    EXPECT_EQ(shown[0], "Link exists: /media/usb0/Backup/cover.jpg");
    EXPECT_EQ(shown[1], "             46.0 KB (47110 bytes)  2023-12-24 18:00:00  is a link to");
    EXPECT_EQ(shown[2], "             ../old.jpg");
    EXPECT_EQ(shown[5], "Overwriting replaces the link itself, not what it leads to.");
}

TEST_F(QuestionLayout, SaysWhatBecomesOfOtherNames) {
    TakenName shared = At(FileConflict(), {.LeadsTo = TakenEntry::Kind::File});
    shared.Entry.bHasOtherNames = true;
    const Texts shown = Shown(Ask(shared));
    EXPECT_EQ(shown[0], "File exists: /media/usb0/Backup/cover.jpg");
    EXPECT_NE(std::ranges::find(shown, "Overwriting leaves the old file its other names."),
              shown.end());
    EXPECT_EQ(Warnings(Ask(shared)), Texts{});
    shared.bFollowLinks = true;
    EXPECT_EQ(Warnings(Ask(shared)), Texts{"Overwriting changes the file under its other names."});
}

TEST_F(QuestionLayout, CleansWhereALinkLeads) {
    TakenEntry entry = kLinkToFile;
    entry.LinkTarget = "\x1B[2J\n";
    EXPECT_EQ(Shown(Ask(At(FileConflict(), entry)))[1],
              "             46.0 KB (47110 bytes)  2023-12-24 18:00:00  is a link to ?[2J?");
}

TEST_F(QuestionLayout, WarnsThatALinkIsWrittenThrough) {
    TakenName followed = At(FileConflict(), kLinkToFile);
    followed.bFollowLinks = true;
    EXPECT_EQ(Warnings(Ask(followed)),
              Texts{"Overwriting writes through the link, into what it leads to."});
    EXPECT_EQ(Warnings(Ask(At(DirectoryConflict(), kLinkToDirectory))),
              Texts{"Merging writes into the directory that the link leads to."});
    EXPECT_EQ(Warnings(Ask(At(DirectoryOntoFile(), kLinkToFile))),
              Texts{"Merging replaces this link by a directory."});
}

TEST_F(QuestionLayout, SaysWhyNothingCanBeOverwritten) {
    const ConflictQuestion special = Ask(At(FileConflict(), kSpecial));
    EXPECT_EQ(Shown(special)[0], "Special file exists: /media/usb0/Backup/cover.jpg");
    EXPECT_EQ(Warnings(special), Texts{"A device, a pipe or a socket is never overwritten."});
    TakenName holder = At(FileOntoDirectory(), EntryOf(FileOntoDirectory()));
    holder.bHoldsSource = true;
    EXPECT_EQ(Warnings(Ask(holder)),
              Texts{"This directory holds the source, so nothing can take its place."});
}

TEST_F(QuestionLayout, ShortensPathsBeforeItsAnswers) {
    TarvaneTransferConflict conflict = FileConflict();
    conflict.DestinationPath = "/media/" + std::string(3000, 'd') + "/cover.jpg";
    conflict.SourcePath = "/home/" + std::string(3000, 's') + "/cover.jpg";
    const Texts shown = Shown(Ask(conflict), {80, 21});
    EXPECT_EQ(Texts(shown.begin(), shown.begin() + 10),
              (Texts{
                  "File exists: /media/" + std::string(59, 'd'),
                  std::string(44, 'd') + "..." + std::string(32, 'd'),
                  std::string(69, 'd') + "/cover.jpg",
                  "             46.0 KB (47110 bytes)  2023-12-24 18:00:00",
                  "Source:      /home/" + std::string(60, 's'),
                  std::string(44, 's') + "..." + std::string(32, 's'),
                  std::string(69, 's') + "/cover.jpg",
                  "             47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer",
                  "Canceling while a file is being overwritten loses the old one.",
                  "o           overwrite",
              }));
    EXPECT_EQ(shown.size(), 21U);
    EXPECT_EQ(Shown(Ask(conflict), {80, 17})[0], "File exists: /media/" + std::string(24, 'd') +
                                                     "..." + std::string(22, 'd') + "/cover.jpg");
    EXPECT_EQ(Shown(Ask(conflict), {80, 17})[5], "o           overwrite");
}

TEST_F(QuestionLayout, LetsItsAnswersFlowWhereRowsAreFew) {
    EXPECT_EQ(Shown(Ask(FileConflict()), {80, 12}),
              (Texts{
                  "File exists: /media/usb0/Backup/cover.jpg",
                  "             46.0 KB (47110 bytes)  2023-12-24 18:00:00",
                  "Source:      /home/u/Music/cover.jpg",
                  "             47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer",
                  "Canceling while a file is being overwritten loses the old one.",
                  "o overwrite  O overwrite all  u overwrite all older  s or Enter skip",
                  "S skip all  r rename  k keep both  K keep both for all",
                  "b compare: skip when equal, overwrite when not  B compare all",
                  "Esc cancel the transfer",
                  "? ",
              }));
}

TEST_F(QuestionLayout, KeepsItsAnswersInASmallWindow) {
    EXPECT_EQ(Shown(Ask(FileConflict()), {40, 10}), (Texts{
                                                        "File exists: /media/usb0...up/cover.jpg",
                                                        "Source:      /home/u/Music/cover.jpg",
                                                        "o overwrite  O overwrite all",
                                                        "u overwrite all older  s or Enter skip",
                                                        "S skip all  r rename  k keep both",
                                                        "K keep both for all",
                                                        "b compare: skip when equal, overwrite",
                                                        "  when not  B compare all",
                                                        "Esc cancel the transfer",
                                                        "[? details] ",
                                                    }));
}

TEST_F(QuestionLayout, ShowsWhatItHasLeftOutOnAQuestionMark) {
    ConflictQuestion question = Ask(FileConflict());
    EXPECT_EQ(question.Handle(Letter('?')), std::nullopt);
    EXPECT_EQ(Shown(question, {40, 10}), (Texts{
                                             "File exists: /media/usb0/Backup/cover.j",
                                             "pg",
                                             "             46.0 KB (47110 bytes)",
                                             "             2023-12-24 18:00:00",
                                             "Source:      /home/u/Music/cover.jpg",
                                             "             47.1 KB (48230 bytes)",
                                             "             2024-03-07 14:05:09  newer",
                                             "Canceling while a file is being",
                                             "overwritten loses the old one.",
                                             "[oOusSrkKbB Esc, ? lists] ",
                                         }));
    EXPECT_EQ(Shown(question, {40, 5}).back(), "[oOusSrkKbB Esc, ? lists] ");
    question.Handle(Letter('?'));
    EXPECT_EQ(Shown(question, {40, 10}).back(), "[? details] ");
}

TEST_F(QuestionLayout, ShowsTheKeysAloneWhereTheListHasNoRoomBelowTheTitle) {
    ConflictQuestion question = Ask(FileConflict());
    EXPECT_EQ(Shown(question, {80, 5}), (Texts{
                                            "File exists: /media/usb0/Backup/cover.jpg",
                                            ("             46.0 KB (47110 bytes)  "
                                             "2023-12-24 18:00:00"),
                                            "Source:      /home/u/Music/cover.jpg",
                                            ("             47.1 KB (48230 bytes)  "
                                             "2024-03-07 14:05:09  newer"),
                                            "[oOusSrkKbB Esc, ? lists] ",
                                        }));
    Type(question, "?");
    EXPECT_EQ(Shown(question, {80, 5}),
              (Texts{
                  "o overwrite  O overwrite all  u overwrite all older  s or Enter skip",
                  "S skip all  r rename  k keep both  K keep both for all",
                  "b compare: skip when equal, overwrite when not  B compare all",
                  "Esc cancel the transfer",
                  "? ",
              }));
}

TEST_F(QuestionLayout, KeepsTheWarningInASmallWindow) {
    EXPECT_EQ(Shown(Ask(FileOntoDirectory()), {60, 2}),
              (Texts{"Overwriting removes this whole directory with all in it.",
                     "[oOusSrkK Esc, ? lists] "}));
}

TEST_F(QuestionLayout, LeavesNoFactsBehindWithoutTheirPath) {
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    for (int rows = 1; rows < 10; ++rows) {
        const Texts shown = Shown(question, {40, rows});
        EXPECT_FALSE(shown[0].starts_with(" "));
        for (std::size_t i = 1; i < shown.size(); ++i) {
            if (shown[i].starts_with("             46.0 KB")) {
                EXPECT_TRUE(shown[i - 1].ends_with("pg")) << shown[i - 1];
            }
            if (shown[i].starts_with("             47.1 KB")) {
                EXPECT_EQ(shown[i - 1], "Source:      /home/u/Music/cover.jpg");
            }
        }
    }
}

TEST_F(QuestionLayout, AsksToConfirmWhatRemovesAnEntry) {
    ConflictQuestion directory = Ask(FileOntoDirectory());
    Type(directory, "o");
    EXPECT_EQ(Shown(directory).back(), "Remove the directory? ");
    ConflictQuestion file = Ask(DirectoryOntoFile());
    Type(file, "m");
    EXPECT_EQ(Shown(file).back(), "Remove the file? ");
    ConflictQuestion link = Ask(At(DirectoryOntoFile(), kLinkToFile));
    Type(link, "m");
    EXPECT_EQ(Shown(link).back(), "Remove the link? ");
    link.Handle(kEscape);
    EXPECT_EQ(Shown(link).back(), "? ");
}

TEST_F(QuestionLayout, EditsTheNewNameInItsLastLine) {
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    const QuestionScreen screen = LayOutQuestion(question, kUsualSize);
    EXPECT_EQ(screen.Lines.back().Text, "Rename to: cover-2.jpg");
    EXPECT_EQ(screen.Lines[screen.Lines.size() - 2].Text,
              "Enter use this name  Esc back to the answers");
    EXPECT_EQ(screen.Cursor, (BlockCursor{screen.Lines.size() - 1, "Rename to: cover-2.jpg"}));
}

TEST_F(QuestionLayout, CleansTheNewName) {
    FreePath = "/x/bad\xFF\xFE\n-2.bin";
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    EXPECT_EQ(Shown(question).back(), "Rename to: bad\uFFFD\uFFFD?-2.bin");
}

TEST_F(QuestionLayout, SaysWhyAnAnswerIsNotTaken) {
    Refusal = "That name exists already.";
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    EXPECT_EQ(question.Handle(kEnter), std::nullopt);
    EXPECT_NE(ShownText(question).find("\nThat name exists already.\n"), std::string::npos);
    Type(question, "3");
    EXPECT_EQ(ShownText(question).find("That name exists already."), std::string::npos);
}

TEST_F(QuestionLayout, NeverExceedsTheWindow) {
    for (const TarvaneTransferConflict& conflict :
         {FileConflict(), DirectoryConflict(), FileOntoDirectory(), DirectoryOntoFile()}) {
        for (const char* key : {"", "?", "r"}) {
            ConflictQuestion question = Ask(conflict);
            Type(question, key);
            ExpectToFitEveryWindow(question);
        }
    }
    ConflictQuestion confirmation = Ask(FileOntoDirectory());
    Type(confirmation, "o");
    ExpectToFitEveryWindow(confirmation);
}
