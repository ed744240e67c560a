// Questions about taken names, and what the tests of them press.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "conflict_question.h"
#include "screen_text.h"

using Action = TarvaneTransferConflictAction;
using Texts = std::vector<std::string>;

inline TarvaneTransferConflict FileConflict() {
    TarvaneTransferConflict conflict;
    conflict.SourcePath = "/home/u/Music/cover.jpg";
    conflict.DestinationPath = "/media/usb0/Backup/cover.jpg";
    conflict.SourceDate = "2024-03-07 14:05:09";
    conflict.DestinationDate = "2023-12-24 18:00:00";
    conflict.SourceSizeBytes = 48230;
    conflict.DestinationSizeBytes = 47110;
    conflict.SourceModifiedTicks = 2;
    conflict.DestinationModifiedTicks = 1;
    conflict.bSourceHasSize = conflict.bDestinationHasSize = true;
    conflict.bSourceHasModifiedTime = conflict.bDestinationHasModifiedTime = true;
    return conflict;
}

inline TarvaneTransferConflict DirectoryConflict() {
    TarvaneTransferConflict conflict = FileConflict();
    conflict.Kind = TarvaneTransferConflictKind::Directory;
    conflict.SourcePath = "/home/u/Music/Live";
    conflict.DestinationPath = "/media/usb0/Backup/Live";
    conflict.bSourceDirectory = conflict.bDestinationDirectory = true;
    conflict.bSourceHasSize = conflict.bDestinationHasSize = false;
    return conflict;
}

// A file that comes where a directory is.
inline TarvaneTransferConflict FileOntoDirectory() {
    TarvaneTransferConflict conflict = FileConflict();
    conflict.bDestinationDirectory = true;
    conflict.bDestinationHasSize = false;
    return conflict;
}

// A directory that comes where a file is.
inline TarvaneTransferConflict DirectoryOntoFile() {
    TarvaneTransferConflict conflict = DirectoryConflict();
    conflict.bDestinationDirectory = false;
    conflict.bDestinationHasSize = true;
    return conflict;
}

inline TakenEntry EntryOf(const TarvaneTransferConflict& Conflict) {
    return {Conflict.bDestinationDirectory ? TakenEntry::Kind::Directory : TakenEntry::Kind::File};
}

inline KeyPress Letter(char Byte) {
    return {KeyCode::Text, std::string(1, Byte)};
}

class AskedConflict : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    // What stands at the conflict's name, links not followed.
    static TakenName At(const TarvaneTransferConflict& Conflict, const TakenEntry& Entry) {
        return {Conflict, Entry, kHoldsNoSource, kLinksStay};
    }

    // About what the record describes, which is no link.
    ConflictQuestion Ask(const TarvaneTransferConflict& Conflict) {
        return Ask(At(Conflict, EntryOf(Conflict)));
    }

    ConflictQuestion Ask(const TakenName& Name) { return ConflictQuestion(Name, Advice()); }

    RenameAdvice Advice() {
        RenameAdvice advice;
        advice.ProposeFreePath = [this] { return FreePath; };
        advice.Refusal = [this](const std::string& Path) {
            Checked.push_back(Path);
            return Refusal;
        };
        return advice;
    }

    // The keys that are offered.
    static std::string Letters(const TakenName& Name) {
        std::string letters;
        for (const ConflictChoice& choice : ChoicesFor(Name)) {
            letters += choice.Letter;
        }
        return letters;
    }

    // What one key of a fresh question answers.
    std::optional<ConflictAnswer> AnswerTo(const TarvaneTransferConflict& Conflict, char Key) {
        return Ask(Conflict).Handle(Letter(Key));
    }

    static void Type(ConflictQuestion& Question, std::string_view Text) {
        for (const char byte : Text) {
            EXPECT_EQ(Question.Handle(Letter(byte)), std::nullopt);
        }
    }

    const TakenEntry kLinkToFile{TakenEntry::Kind::File, true, "../old.jpg"};
    const TakenEntry kLinkToDirectory{TakenEntry::Kind::Directory, true, "/elsewhere"};
    const TakenEntry kSpecial{TakenEntry::Kind::Special};

    static constexpr bool kHoldsNoSource = false;
    static constexpr bool kLinksStay = false;
    const KeyPress kEnter{KeyCode::Enter, {}};
    const KeyPress kEscape{KeyCode::Escape, {}};

    std::string FreePath = "/media/usb0/Backup/cover-2.jpg";
    std::string Refusal;
    Texts Checked;
};
