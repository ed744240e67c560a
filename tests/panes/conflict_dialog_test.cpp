// The question about a taken name in its dialog: how it looks, and what keys and clicks answer.

#include "conflict_dialog.h"

#include <chrono>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "asked_conflict.h"
#include "shown_dialog.h"

namespace {

class ConflictOnScreen : public AskedConflict {
protected:
    ConflictDialog& Open(const TarvaneTransferConflict& Conflict) {
        return Open(At(Conflict, EntryOf(Conflict)));
    }

    // Keys are not dead any more.
    ConflictDialog& Open(const TakenName& Name) {
        Asked = std::make_unique<ConflictDialog>(ConflictDesk::Question{kId, Name}, Advice(), Guard,
                                                 Now);
        Asked->ShowJob("Stage: Waiting for conflict choice", "Overall 1.5 GB / 12.0 GB   13%");
        Now += KeyGuard::kDeadTime;
        return *Asked;
    }

    std::optional<ConflictAnswer> Press(const KeyPress& Pressed) {
        Asked->TakeKey(Pressed, Now);
        const auto answer = Asked->TakeAnswer();
        EXPECT_EQ(answer.has_value(), Asked->IsClosed());
        EXPECT_EQ(answer ? answer->first : kId, kId);
        return answer ? std::optional(answer->second) : std::nullopt;
    }

    // Both sides of a frame and its last line of text stand below each other.
    static void ExpectWholeBox(const std::string& Box) {
        std::istringstream rows(Box.substr(1));
        std::string first;
        ASSERT_TRUE(std::getline(rows, first));
        std::string row;
        std::string beforeLast;
        std::string last = first;
        while (std::getline(rows, row)) {
            ASSERT_EQ(DisplayWidth(row), DisplayWidth(first)) << row;
            beforeLast = std::exchange(last, row);
        }
        EXPECT_TRUE(last.starts_with("└")) << Box;
        EXPECT_NE(beforeLast.find("Esc: "), std::string::npos) << Box;
    }

    static void ExpectWholeBoxInEveryWindow(ConflictDialog& Dialog) {
        for (const int columns : {60, 61, 79, 80, 137, 200}) {
            for (const int rows : {16, 17, 24, 60}) {
                ExpectWholeBox(BoxOn(Drawn(Dialog, {columns, rows})));
            }
        }
    }

    // Long, wide, not in UTF-8, with a newline.
    static TarvaneTransferConflict OddNames() {
        TarvaneTransferConflict conflict = FileConflict();
        std::string wide;
        for (int i = 0; i < 12; ++i) {
            wide += "日本の音楽";
        }
        conflict.DestinationPath = "/media/usb0/" + wide + "/bad\xFF\n.jpg";
        return conflict;
    }

    static TakenEntry LongLink() {
        return {TakenEntry::Kind::File, true, "/" + std::string(4000, 'x') + "/old.jpg"};
    }

    static constexpr std::uint64_t kId = 7;
    const ConflictAnswer kSkip{Action::Skip, {}, {}, {}};
    const ConflictAnswer kOverwrite{Action::Overwrite, {}, {}, {}};
    const ConflictAnswer kCancel{Action::Cancel, {}, {}, {}};

    ConflictDialog::TimePoint Now{std::chrono::hours(1)};
    KeyGuard Guard;
    std::unique_ptr<ConflictDialog> Asked;
};

constexpr bool kAscii = false;
constexpr TerminalSize kSmall{61, 16};
constexpr TerminalSize kSmallest{60, 16};
constexpr TerminalSize kLarge{200, 60};

constexpr const char* kFile = R"(
┌──────────────────────────── File already exists ─────────────────────────────┐
│ Source                                                                       │
│   /home/u/Music/cover.jpg                                                    │
│   47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer                          │
│ Destination                                                                  │
│   /media/usb0/Backup/cover.jpg                                               │
│   46.0 KB (47110 bytes)  2023-12-24 18:00:00                                 │
│                                                                              │
│ Canceling while a file is being overwritten loses the old one.               │
│                                                                              │
│                                                                              │
│                                                                              │
│ [ overwrite ] [ Overwrite all ] [ u overwrite all older ] [ skip ]           │
│ [ Skip all ] [ rename ] [ keep both ] [ Keep both for all ]                  │
│ [ compare by content ] [ B compare all ] [ Esc cancel ]                      │
│                                                                              │
│ Stage: Waiting for conflict choice            Overall 1.5 GB / 12.0 GB   13% │
│ Tab, arrows: choose  Enter: answer  Esc: cancel transfer                     │
└──────────────────────────────────────────────────────────────────────────────┘
)";

constexpr const char* kFileInASmallWindow = R"(
┌─────────────────── File already exists ───────────────────┐
│ Source                                                    │
│   /home/u/Music/cover.jpg                                 │
│   47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer       │
│ Destination                                               │
│   /media/usb0/Backup/cover.jpg                            │
│   46.0 KB (47110 bytes)  2023-12-24 18:00:00              │
│ Canceling while a file is being overwritten loses the old │
│ one.                                                      │
│ [ overwrite ] [ Overwrite all ] [ u overwrite all older ] │
│ [ skip ] [ Skip all ] [ rename ] [ keep both ]            │
│ [ Keep both for all ] [ compare by content ]              │
│ [ B compare all ] [ Esc cancel ]                          │
│ Stage: Waiting for confl~  Overall 1.5 GB / 12.0 GB   13% │
│ Tab, arrows: choose  Enter: answer  Esc: cancel transfer  │
└───────────────────────────────────────────────────────────┘
)";

constexpr const char* kFileInTheSmallestWindow = R"(
┌────────────────── File already exists ───────────────────┐
│ Source                                                   │
│   /home/u/Music/cover.jpg                                │
│   47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer      │
│ Destination                                              │
│   /media/usb0/Backup/cover.jpg                           │
│   46.0 KB (47110 bytes)  2023-12-24 18:00:00             │
│ Canceling while a file is being overwritten loses the    │
│ old one.                                                 │
│ [ overwrite ] [ Overwrite all ]                          │
│ [ u overwrite all older ] [ skip ] [ Skip all ]          │
│ [ rename ] [ keep both ] [ Keep both for all ]           │
│ [ compare by content ] [ B compare all ] [ Esc cancel ]  │
│ Stage: Waiting for conf~  Overall 1.5 GB / 12.0 GB   13% │
│ Tab, arrows: choose  Enter: answer  Esc: cancel transfer │
└──────────────────────────────────────────────────────────┘
)";

constexpr const char* kDirectory = R"(
┌────────────────────────── Directory already exists ──────────────────────────┐
│ Source                                                                       │
│   /home/u/Music/Live                                                         │
│   directory  2024-03-07 14:05:09  newer                                      │
│ Destination                                                                  │
│   /media/usb0/Backup/Live                                                    │
│   directory  2023-12-24 18:00:00                                             │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│ [ merge ] [ Merge all ] [ skip ] [ Skip all ] [ Esc cancel ]                 │
│                                                                              │
│ Stage: Waiting for conflict choice            Overall 1.5 GB / 12.0 GB   13% │
│ Tab, arrows: choose  Enter: answer  Esc: cancel transfer                     │
└──────────────────────────────────────────────────────────────────────────────┘
)";

constexpr const char* kOddNames = R"(
┌──────────────────────────── Link already exists ─────────────────────────────┐
│ Source                                                                       │
│   /home/u/Music/cover.jpg                                                    │
│   47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer                          │
│ Destination                                                                  │
│   /media/usb0/日本の音楽日本の音楽日本の音楽日本の音楽日本の音楽日本の音楽日 │
│   本の音楽日本の音楽日本の音楽日本の音楽日本の音楽日本の音楽/bad�?.jpg       │
│   46.0 KB (47110 bytes)  2023-12-24 18:00:00  is a link to                   │
│   /xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...xxxxxxxxxxxxxxxxxxxxxxxxxxxx/old.jpg │
│                                                                              │
│ Overwriting replaces the link itself, not what it leads to.                  │
│                                                                              │
│                                                                              │
│                                                                              │
│ [ overwrite ] [ Overwrite all ] [ u overwrite all older ] [ skip ]           │
│ [ Skip all ] [ rename ] [ keep both ] [ Keep both for all ]                  │
│ [ compare by content ] [ B compare all ] [ Esc cancel ]                      │
│                                                                              │
│ Stage: Waiting for conflict choice            Overall 1.5 GB / 12.0 GB   13% │
│ Tab, arrows: choose  Enter: answer  Esc: cancel transfer                     │
└──────────────────────────────────────────────────────────────────────────────┘
)";

constexpr const char* kOddNamesInTheSmallestWindow = R"(
┌────────────────── Link already exists ───────────────────┐
│ Source                                                   │
│   /home/u/Music/cover.jpg                                │
│   47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer      │
│ Destination                                              │
│   /media/usb0/日本の音楽日...の音楽日本の音楽/bad�?.jpg  │
│   46.0 KB (47110 bytes)  2023-12-24 18:00:00  is a link  │
│   to /xxxxxxxxxxxxxxxxxxxxx...xxxxxxxxxxxxxxxxxx/old.jpg │
│ [ overwrite ] [ Overwrite all ]                          │
│ [ u overwrite all older ] [ skip ] [ Skip all ]          │
│ [ rename ] [ keep both ] [ Keep both for all ]           │
│ [ compare by content ] [ B compare all ] [ Esc cancel ]  │
│ Stage: Waiting for conf~  Overall 1.5 GB / 12.0 GB   13% │
│ Tab, arrows: choose  Enter: answer  Esc: cancel transfer │
└──────────────────────────────────────────────────────────┘
)";

constexpr const char* kConfirmation = R"(
┌────────────────────────── Directory already exists ──────────────────────────┐
│ Source                                                                       │
│   /home/u/Music/cover.jpg                                                    │
│   47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer                          │
│ Destination                                                                  │
│   /media/usb0/Backup/cover.jpg                                               │
│   directory  2023-12-24 18:00:00                                             │
│                                                                              │
│ Overwriting removes this whole directory with all in it.                     │
│ Remove the directory?                                                        │
│                                                                              │
│                                                                              │
│ [ Yes, remove it ] [ No ]                                                    │
│                                                                              │
│                                                                              │
│ Stage: Waiting for conflict choice            Overall 1.5 GB / 12.0 GB   13% │
│ y: remove it and go on   Esc: back to the buttons                            │
└──────────────────────────────────────────────────────────────────────────────┘
)";

constexpr const char* kRefusedName = R"(
┌──────────────────────────── File already exists ─────────────────────────────┐
│ Source                                                                       │
│   /home/u/Music/cover.jpg                                                    │
│   47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer                          │
│ Destination                                                                  │
│   /media/usb0/Backup/cover.jpg                                               │
│   46.0 KB (47110 bytes)  2023-12-24 18:00:00                                 │
│                                                                              │
│ Canceling while a file is being overwritten loses the old one.               │
│ Rename to: cover-2.jpg                                                       │
│ That name exists already.                                                    │
│                                                                              │
│ [ overwrite ] [ Overwrite all ] [ u overwrite all older ] [ skip ]           │
│ [ Skip all ] [ rename ] [ keep both ] [ Keep both for all ]                  │
│ [ compare by content ] [ B compare all ] [ Esc cancel ]                      │
│                                                                              │
│ Stage: Waiting for conflict choice            Overall 1.5 GB / 12.0 GB   13% │
│ Enter: use this name   Esc: back to the buttons                              │
└──────────────────────────────────────────────────────────────────────────────┘
)";

constexpr const char* kRefusedNameInTheSmallestWindow = R"(
┌────────────────── File already exists ───────────────────┐
│ Source                                                   │
│   /home/u/Music/cover.jpg                                │
│   47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer      │
│ Destination                                              │
│   /media/usb0/Backup/cover.jpg                           │
│   46.0 KB (47110 bytes)  2023-12-24 18:00:00             │
│ Canceling while a file is being overwritten loses the    │
│ old one.                                                 │
│ Rename to: cover-2.jpg                                   │
│ That name exists already.                                │
│ Stage: Waiting for conf~  Overall 1.5 GB / 12.0 GB   13% │
│ Enter: use this name   Esc: back to the buttons          │
└──────────────────────────────────────────────────────────┘
)";

} // namespace

TEST_F(ConflictOnScreen, ShowsBothSidesOfAFileAndItsAnswers) {
    EXPECT_EQ(Box(Open(FileConflict())), kFile);
    EXPECT_EQ(Box(Open(FileConflict()), kLarge), kFile);
}

TEST_F(ConflictOnScreen, KeepsWhatMattersInASmallWindow) {
    EXPECT_EQ(Box(Open(FileConflict()), kSmall), kFileInASmallWindow);
    EXPECT_EQ(Box(Open(FileConflict()), kSmallest), kFileInTheSmallestWindow);
}

TEST_F(ConflictOnScreen, IsDrawnInAsciiWhereThereIsNothingElse) {
    const std::string shown = BoxOn(Drawn(Open(DirectoryConflict()), kSmall, kAscii));
    EXPECT_EQ(shown.substr(0, 62),
              "\n+---------------- Directory already exists -----------------+");
}

TEST_F(ConflictOnScreen, OffersADirectoryNothingForFiles) {
    EXPECT_EQ(Box(Open(DirectoryConflict())), kDirectory);
}

TEST_F(ConflictOnScreen, WarnsOfWhatIsLost) {
    const Drawn screen(Open(FileOntoDirectory()));
    EXPECT_EQ(screen.TextWithRole(CellRole::Warning),
              "Overwriting removes this whole directory with all in it.");
    EXPECT_EQ(Drawn(Open(FileConflict())).TextWithRole(CellRole::Warning), "");
}

TEST_F(ConflictOnScreen, ShowsTheLettersOfItsAnswers) {
    const Drawn screen(Open(FileConflict()));
    EXPECT_EQ(screen.TextWithRole(CellRole::ButtonFocus), "[ skip ]");
    EXPECT_EQ(screen.TextWithRole(CellRole::Hotkey), "o|O|u|S|r|k|K|b|B|Esc");
}

TEST_F(ConflictOnScreen, ShortensLongPathsOnlyWhereItMust) {
    EXPECT_EQ(Box(Open(At(OddNames(), LongLink()))), kOddNames);
    EXPECT_EQ(Box(Open(At(OddNames(), LongLink())), kSmallest), kOddNamesInTheSmallestWindow);
    const std::string whole = Box(Open(At(OddNames(), kLinkToFile)), kLarge);
    EXPECT_NE(whole.find(CleanForScreen(OddNames().DestinationPath)), std::string::npos);
}

TEST_F(ConflictOnScreen, CleansWhatItsOwnerSays) {
    ConflictDialog& dialog = Open(FileConflict());
    dialog.ShowJob("Stage: \x1B[2J", "\xFF%");
    EXPECT_NE(Box(dialog).find("│ Stage: ?[2J" + std::string(61, ' ') + "  \uFFFD% │\n"),
              std::string::npos)
        << Box(dialog);
}

TEST_F(ConflictOnScreen, KeepsInItsFrameWhateverItsOwnerSays) {
    ConflictDialog& dialog = Open(FileConflict());
    dialog.ShowJob(std::string(300, 's'), std::string(300, 'd'));
    ExpectWholeBoxInEveryWindow(dialog);
}

TEST_F(ConflictOnScreen, SkipsOnEnterAlone) {
    Open(FileConflict());
    EXPECT_EQ(Press(kEnter), kSkip);
    Open(DirectoryConflict());
    EXPECT_EQ(Press(kEnter), kSkip);
}

TEST_F(ConflictOnScreen, PressesTheButtonWithTheFocus) {
    Open(FileConflict());
    EXPECT_EQ(Press(Key(KeyCode::Tab)), std::nullopt);
    EXPECT_EQ(Press(kEnter), (ConflictAnswer{Action::Skip, {}, FileConflictChoice::Skip, {}}));
    Open(FileConflict());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Press(Key(KeyCode::BackTab)), std::nullopt);
    }
    EXPECT_EQ(Press(Letter(' ')), kOverwrite);
}

TEST_F(ConflictOnScreen, AnswersByLetter) {
    Open(FileConflict());
    EXPECT_EQ(Press(Letter('O')),
              (ConflictAnswer{Action::Overwrite, {}, FileConflictChoice::Overwrite, {}}));
    Open(FileConflict());
    EXPECT_EQ(Press(Letter('b')), (ConflictAnswer{Action::CompareByContent, {}, {}, {}}));
    Open(DirectoryConflict());
    EXPECT_EQ(Press(Letter('o')), std::nullopt);
    EXPECT_EQ(Press(Letter('m')), (ConflictAnswer{Action::Merge, {}, {}, {}}));
}

TEST_F(ConflictOnScreen, AnswersByClick) {
    const Drawn screen(Open(FileConflict()));
    ASSERT_TRUE(screen.Row(13).starts_with("│ [ overwrite ]")) << screen.Text();
    EXPECT_EQ(Press(Click(1, 13)), std::nullopt);
    EXPECT_EQ(Press(Click(2, 13)), kOverwrite);
}

TEST_F(ConflictOnScreen, CancelsTheTransferOnEscapeAndItsButton) {
    Open(FileConflict());
    EXPECT_EQ(Press(kEscape), kCancel);
    Box(Open(DirectoryConflict()));
    for (int i = 0; i < 2; ++i) {
        Press(Key(KeyCode::Right));
    }
    EXPECT_EQ(Press(kEnter), kCancel);
}

TEST_F(ConflictOnScreen, GivesItsAnswerOnce) {
    ConflictDialog& dialog = Open(FileConflict());
    EXPECT_EQ(dialog.QuestionId(), kId);
    EXPECT_EQ(Press(Letter('s')), kSkip);
    EXPECT_EQ(dialog.TakeAnswer(), std::nullopt);
    dialog.TakeKey(Letter('o'), Now);
    EXPECT_EQ(dialog.TakeAnswer(), std::nullopt);
    EXPECT_TRUE(dialog.IsClosed());
}

TEST_F(ConflictOnScreen, KeepsKeysDeadAtFirst) {
    Open(FileConflict());
    Now -= std::chrono::milliseconds(1);
    EXPECT_EQ(Press(Letter('o')), std::nullopt);
    Now += KeyGuard::kDeadTime;
    EXPECT_EQ(Press(Letter('o')), kOverwrite);
    Open(FileConflict());
    Now -= KeyGuard::kDeadTime;
    EXPECT_EQ(Press(kEscape), kCancel);
}

TEST_F(ConflictOnScreen, KeepsKeysDeadForLessAfterAnAnswer) {
    Open(FileConflict());
    EXPECT_EQ(Press(Letter('s')), kSkip);
    Open(FileConflict());
    Now += KeyGuard::kDeadTimeAfterAnswer - KeyGuard::kDeadTime;
    EXPECT_EQ(Press(Letter('s')), kSkip);
}

TEST_F(ConflictOnScreen, RemovesADirectoryOnlyAfterASecondKey) {
    ConflictDialog& dialog = Open(FileOntoDirectory());
    EXPECT_EQ(Press(Letter('o')), std::nullopt);
    EXPECT_EQ(Box(dialog), kConfirmation);
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::ButtonFocus), "[ No ]");
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::Warning),
              "Overwriting removes this whole directory with all in it.|Remove the directory?");
    EXPECT_EQ(Press(Letter('x')), std::nullopt);
    EXPECT_EQ(Press(Letter('y')), kOverwrite);
}

TEST_F(ConflictOnScreen, GoesBackFromTheSecondKey) {
    for (const KeyPress& back : {kEnter, kEscape, Letter('n')}) {
        ConflictDialog& dialog = Open(FileOntoDirectory());
        Press(Letter('o'));
        EXPECT_EQ(Press(back), std::nullopt);
        EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::ButtonFocus), "[ overwrite ]");
        EXPECT_EQ(Press(Letter('y')), std::nullopt);
        EXPECT_EQ(Press(kEscape), kCancel);
    }
}

TEST_F(ConflictOnScreen, AsksForTheSecondKeyEachTimeWithTheFocusOnNo) {
    ConflictDialog& dialog = Open(FileOntoDirectory());
    Press(Letter('o'));
    Press(Key(KeyCode::Left));
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::ButtonFocus), "[ Yes, remove it ]");
    Press(kEscape);
    Press(Letter('O'));
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::ButtonFocus), "[ No ]");
    Press(Key(KeyCode::Left));
    EXPECT_EQ(Press(kEnter),
              (ConflictAnswer{Action::Overwrite, {}, FileConflictChoice::Overwrite, {}}));
}

TEST_F(ConflictOnScreen, EditsAProposedName) {
    ConflictDialog& dialog = Open(FileConflict());
    EXPECT_EQ(Press(Letter('r')), std::nullopt);
    const Drawn screen(dialog);
    EXPECT_EQ(screen.Row(10).substr(0, 26), "│ Rename to: cover-2.jpg");
    EXPECT_TRUE(screen.bCursor);
    EXPECT_EQ(screen.CursorColumn, 2 + 11 + 11);
    EXPECT_EQ(screen.CursorRow, 10);
    EXPECT_EQ(screen.TextWithRole(CellRole::ButtonFocus), "");
    EXPECT_EQ(screen.TextWithRole(CellRole::Input), "cover-2.jpg" + std::string(54, ' '));
    for (const KeyPress& key : {Letter('o'), Letter(' '), Key(KeyCode::Tab), Click(2, 13)}) {
        EXPECT_EQ(Press(key), std::nullopt);
    }
    EXPECT_EQ(Press(kEnter),
              (ConflictAnswer{Action::Rename, "/media/usb0/Backup/cover-2.jpgo ", {}, {}}));
}

TEST_F(ConflictOnScreen, SaysWhyANameIsNotTaken) {
    Refusal = "That name exists already.";
    ConflictDialog& dialog = Open(FileConflict());
    Press(Letter('r'));
    EXPECT_EQ(Press(kEnter), std::nullopt);
    EXPECT_EQ(Box(dialog), kRefusedName);
    EXPECT_EQ(Box(dialog, kSmallest), kRefusedNameInTheSmallestWindow);
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::Warning), "That name exists already.");
    EXPECT_EQ(Press(kEscape), std::nullopt);
    EXPECT_FALSE(Drawn(dialog).bCursor);
    EXPECT_EQ(Press(Letter('s')), kSkip);
}

TEST_F(ConflictOnScreen, FitsEveryWindow) {
    for (const TakenName& name : {At(OddNames(), LongLink()), At(DirectoryOntoFile(), LongLink()),
                                  At(FileOntoDirectory(), EntryOf(FileOntoDirectory()))}) {
        for (const char key : std::string("?rom")) {
            ConflictDialog& dialog = Open(name);
            dialog.TakeKey(Letter(key), Now);
            ExpectWholeBoxInEveryWindow(dialog);
        }
    }
}
