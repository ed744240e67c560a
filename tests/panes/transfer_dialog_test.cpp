#include "transfer_dialog.h"

#include "dialog_place.h"
#include "memory_screen.h"
#include "screen_text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace {

using Paths = std::vector<std::filesystem::path>;

constexpr TerminalSize kUsualSize{80, 24};
constexpr TerminalSize kSmallSize{61, 16};
constexpr TerminalSize kSmallestSize{60, 16};
constexpr TerminalSize kLargeSize{200, 60};

// How many times Tab leads there.
constexpr int kFiles = 1;
constexpr int kDirectories = 2;
constexpr int kExtras = 3;
constexpr int kFlush = 4;
constexpr int kButtons = 5;

TransferDialogSetup TwoEntries() {
    TransferDialogSetup setup;
    setup.Request.Operands = {"/home/u/Music/Live", "/home/u/Music/cover.jpg"};
    setup.Request.TargetDirectory = "/media/usb0/Backup";
    setup.Request.Preserve = {.bMode = true, .bTimes = true};
    setup.What = "2 entries";
    setup.Base = "/home/u/Music";
    return setup;
}

TransferDialogSetup MoveAsRoot() {
    TransferDialogSetup setup = TwoEntries();
    setup.Request.bMove = true;
    setup.Request.Preserve.bOwner = true;
    setup.bMayPreserveOwner = true;
    return setup;
}

class TransferDialogOnScreen : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    std::string Drawn(TransferDialog& Dialog, TerminalSize Size = kUsualSize) {
        Screen.Resize(Size);
        Screen.Erase();
        Dialog.Draw(Screen, {});
        return BoxOn(Screen);
    }
    static void Press(TransferDialog& Dialog, KeyCode Code, int Times = 1) {
        for (int i = 0; i < Times; ++i) {
            Dialog.TakeKey(Key(Code), {});
        }
    }
    static void Type(TransferDialog& Dialog, const std::string& Text) {
        for (const char letter : Text) {
            Dialog.TakeKey(Letter(std::string(1, letter)), {});
        }
    }
    // What comes out when these letters are pressed in one group.
    static TransferRequest RequestAfter(const TransferDialogSetup& Setup, int Group,
                                        const std::string& Letters) {
        TransferDialog dialog(Setup);
        Press(dialog, KeyCode::Tab, Group);
        Type(dialog, Letters);
        Press(dialog, KeyCode::Enter);
        return dialog.TakeWish().value_or(TransferWish()).Request;
    }
    // The same when the destination is replaced by that text.
    static TransferRequest RequestTo(const TransferDialogSetup& Setup, const std::string& Text) {
        TransferDialog dialog(Setup);
        Press(dialog, KeyCode::ClearLine);
        Type(dialog, Text);
        Press(dialog, KeyCode::Enter);
        return dialog.TakeWish().value_or(TransferWish()).Request;
    }

    MemoryScreen Screen;
};

} // namespace

TEST_F(TransferDialogOnScreen, ShowsAllChoices) {
    TransferDialog dialog(TwoEntries());
    EXPECT_EQ(Drawn(dialog), R"(
┌──────────────────────────────────── Copy ────────────────────────────────────┐
│ Copy 2 entries to:                                                           │
│ /media/usb0/Backup                                                           │
│                                                                              │
│ File exists:      (*) Ask  ( ) Overwrite  ( ) Skip  ( ) Older  ( ) Compare   │
│                   ( ) Larger  ( ) Size differs  ( ) Keep both  ( ) Fail      │
│ Directory exists: (*) Ask  ( ) Merge  ( ) Skip  ( ) Fail                     │
│ Also:             [x] Modes and dates  [ ] Follow links                      │
│ Wait for disk:    (*) Auto  ( ) Always  ( ) Never                            │
│                                                                              │
│ Enter begins. Tab and the arrows lead to the choices.                        │
│                                                                              │
│ [ Copy ] [ In background ] [ Cancel ]                                        │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(Drawn(dialog, kSmallSize), R"(
┌────────────────────────── Copy ───────────────────────────┐
│ Copy 2 entries to:                                        │
│ /media/usb0/Backup                                        │
│                                                           │
│ File exists:      (*) Ask  ( ) Overwrite  ( ) Skip        │
│                   ( ) Older  ( ) Compare  ( ) Larger      │
│                   ( ) Size differs  ( ) Keep both         │
│                   ( ) Fail                                │
│ Directory exists: (*) Ask  ( ) Merge  ( ) Skip  ( ) Fail  │
│ Also:             [x] Modes and dates  [ ] Follow links   │
│ Wait for disk:    (*) Auto  ( ) Always  ( ) Never         │
│                                                           │
│ Enter begins. Tab and the arrows lead to the choices.     │
│                                                           │
│ [ Copy ] [ In background ] [ Cancel ]                     │
└───────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(Drawn(dialog, kLargeSize), R"(
┌─────────────────────────────────────────────── Copy ───────────────────────────────────────────────┐
│ Copy 2 entries to:                                                                                 │
│ /media/usb0/Backup                                                                                 │
│                                                                                                    │
│ File exists:      (*) Ask  ( ) Overwrite  ( ) Skip  ( ) Older  ( ) Compare  ( ) Larger             │
│                   ( ) Size differs  ( ) Keep both  ( ) Fail                                        │
│ Directory exists: (*) Ask  ( ) Merge  ( ) Skip  ( ) Fail                                           │
│ Also:             [x] Modes and dates  [ ] Follow links                                            │
│ Wait for disk:    (*) Auto  ( ) Always  ( ) Never                                                  │
│                                                                                                    │
│ Enter begins. Tab and the arrows lead to the choices.                                              │
│                                                                                                    │
│ [ Copy ] [ In background ] [ Cancel ]                                                              │
└────────────────────────────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(ColumnsBefore(Screen), 49);
}

TEST_F(TransferDialogOnScreen, FitsTheSmallestWindowWithAllChoicesOfRoot) {
    TransferDialog dialog(MoveAsRoot());
    EXPECT_EQ(Drawn(dialog, kSmallestSize), R"(
┌────────────────────────── Move ──────────────────────────┐
│ Move 2 entries to:                                       │
│ /media/usb0/Backup                                       │
│                                                          │
│ File exists:      (*) Ask  ( ) Overwrite  ( ) Skip       │
│                   ( ) Older  ( ) Compare  ( ) Larger     │
│                   ( ) Size differs  ( ) Keep both        │
│                   ( ) Fail                               │
│ Directory exists: (*) Ask  ( ) Merge  ( ) Skip  ( ) Fail │
│ Also:             [x] Modes and dates  [ ] Follow links  │
│                   [x] Owner                              │
│ Wait for disk:    (*) Auto  ( ) Always  ( ) Never        │
│                                                          │
│ Enter begins. Tab and the arrows lead to the choices.    │
│ [ Move ] [ In background ] [ Cancel ]                    │
└──────────────────────────────────────────────────────────┘
)");
}

TEST_F(TransferDialogOnScreen, SaysWhatEachChoiceDoesInOneLine) {
    const int choicesOfGroups[] = {9, 4, 3, 3};
    for (int group = 0; group < 4; ++group) {
        TransferDialog dialog(MoveAsRoot());
        Press(dialog, KeyCode::Tab, kFiles + group);
        std::set<std::string> hints;
        for (int i = 0; i < choicesOfGroups[group]; ++i) {
            Drawn(dialog, kSmallestSize);
            const std::string hint = Screen.Row(13);
            EXPECT_EQ(hint.find('~'), std::string::npos) << hint;
            EXPECT_NE(hint.find('.'), std::string::npos) << hint;
            EXPECT_TRUE(hints.insert(hint).second) << hint;
            Press(dialog, KeyCode::Right);
        }
    }
}

TEST_F(TransferDialogOnScreen, ShowsTheEndOfALongDestination) {
    TransferDialogSetup setup = TwoEntries();
    setup.Request.TargetDirectory = "/media/usb0/" + std::string(100, 'x') + "/end";
    TransferDialog dialog(setup);
    Drawn(dialog);
    const std::string shown = Screen.TextWithRole(CellRole::Input);
    EXPECT_EQ(shown.substr(0, shown.find_last_not_of(' ') + 1).substr(shown.find('/')), "/end");
    EXPECT_TRUE(Screen.bCursor);
}

TEST_F(TransferDialogOnScreen, CleansTextsForTheScreen) {
    TransferDialogSetup setup = TwoEntries();
    setup.What = "new\nline";
    setup.Request.TargetDirectory = "/bad\xFF";
    TransferDialog dialog(setup);
    Drawn(dialog);
    EXPECT_EQ(Screen.TextWithRole(CellRole::Input).substr(0, 7), "/bad\xEF\xBF\xBD");
}

TEST_F(TransferDialogOnScreen, GivesTheRequestBackAsItWas) {
    const TransferDialogSetup setup = TwoEntries();
    TransferDialog dialog(setup);
    Press(dialog, KeyCode::Enter);
    EXPECT_TRUE(dialog.IsClosed());
    const std::optional<TransferWish> wish = dialog.TakeWish();
    ASSERT_TRUE(wish);
    EXPECT_FALSE(wish->bInBackground);
    EXPECT_EQ(wish->Request.Operands, setup.Request.Operands);
    EXPECT_EQ(wish->Request.TargetDirectory, setup.Request.TargetDirectory);
    EXPECT_EQ(wish->Request.OnConflict, FileConflictChoice::Ask);
    EXPECT_EQ(wish->Request.OnDirectoryConflict, std::nullopt);
    EXPECT_EQ(wish->Request.Preserve, setup.Request.Preserve);
    EXPECT_EQ(wish->Request.Flush, FlushChoice::Auto);
    EXPECT_FALSE(wish->Request.bFollowLinks);
    EXPECT_FALSE(dialog.TakeWish());
}

TEST_F(TransferDialogOnScreen, ShowsTheChoicesOfTheRequest) {
    TransferDialogSetup setup = TwoEntries();
    setup.Request.OnConflict = FileConflictChoice::KeepBoth;
    setup.Request.OnDirectoryConflict = DirectoryConflictChoice::Skip;
    setup.Request.Preserve = {};
    setup.Request.bFollowLinks = true;
    setup.Request.Flush = FlushChoice::Never;
    TransferDialog dialog(setup);
    EXPECT_EQ(Drawn(dialog), R"(
┌──────────────────────────────────── Copy ────────────────────────────────────┐
│ Copy 2 entries to:                                                           │
│ /media/usb0/Backup                                                           │
│                                                                              │
│ File exists:      ( ) Ask  ( ) Overwrite  ( ) Skip  ( ) Older  ( ) Compare   │
│                   ( ) Larger  ( ) Size differs  (*) Keep both  ( ) Fail      │
│ Directory exists: ( ) Ask  ( ) Merge  (*) Skip  ( ) Fail                     │
│ Also:             [ ] Modes and dates  [x] Follow links                      │
│ Wait for disk:    ( ) Auto  ( ) Always  (*) Never                            │
│                                                                              │
│ Enter begins. Tab and the arrows lead to the choices.                        │
│                                                                              │
│ [ Copy ] [ In background ] [ Cancel ]                                        │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    Press(dialog, KeyCode::Enter);
    const TransferRequest request = dialog.TakeWish().value_or(TransferWish()).Request;
    EXPECT_EQ(request.OnConflict, FileConflictChoice::KeepBoth);
    EXPECT_EQ(request.OnDirectoryConflict, DirectoryConflictChoice::Skip);
    EXPECT_EQ(request.Preserve, PreserveChoice());
    EXPECT_TRUE(request.bFollowLinks);
    EXPECT_EQ(request.Flush, FlushChoice::Never);
}

TEST_F(TransferDialogOnScreen, TakesALetterForEachChoiceForFiles) {
    using enum FileConflictChoice;
    const auto chosen = [](const char* Key) {
        return RequestAfter(TwoEntries(), kFiles, Key).OnConflict;
    };
    EXPECT_EQ(chosen("oa"), Ask);
    EXPECT_EQ(chosen("o"), Overwrite);
    EXPECT_EQ(chosen("s"), Skip);
    EXPECT_EQ(chosen("e"), Older);
    EXPECT_EQ(chosen("c"), Compare);
    EXPECT_EQ(chosen("l"), Larger);
    EXPECT_EQ(chosen("z"), SizeDiffers);
    EXPECT_EQ(chosen("k"), KeepBoth);
    EXPECT_EQ(chosen("f"), Fail);
}

TEST_F(TransferDialogOnScreen, TakesALetterForEachChoiceForDirectories) {
    using enum DirectoryConflictChoice;
    const auto chosen = [](const char* Key) {
        return RequestAfter(TwoEntries(), kDirectories, Key).OnDirectoryConflict;
    };
    EXPECT_EQ(chosen("a"), Ask);
    EXPECT_EQ(chosen("m"), Merge);
    EXPECT_EQ(chosen("s"), Skip);
    EXPECT_EQ(chosen("f"), Fail);
}

TEST_F(TransferDialogOnScreen, LetsDirectoriesFollowFilesUntilTheyAreChosen) {
    TransferDialog dialog(TwoEntries());
    Press(dialog, KeyCode::Tab, kFiles);
    Type(dialog, "o");
    EXPECT_NE(Drawn(dialog).find("( ) Ask  (*) Merge"), std::string::npos);
    Type(dialog, "a");
    EXPECT_NE(Drawn(dialog).find("(*) Ask  ( ) Merge"), std::string::npos);
    Press(dialog, KeyCode::Tab);
    Type(dialog, "a");
    Press(dialog, KeyCode::BackTab);
    Type(dialog, "o");
    EXPECT_NE(Drawn(dialog).find("(*) Ask  ( ) Merge"), std::string::npos);
}

TEST_F(TransferDialogOnScreen, TakesLettersForWhatElseThereIs) {
    EXPECT_EQ(RequestAfter(TwoEntries(), kExtras, "m").Preserve, PreserveChoice());
    EXPECT_TRUE(RequestAfter(TwoEntries(), kExtras, "f").bFollowLinks);
    EXPECT_FALSE(RequestAfter(TwoEntries(), kExtras, "o").Preserve.bOwner);
    EXPECT_FALSE(RequestAfter(MoveAsRoot(), kExtras, "o").Preserve.bOwner);
    EXPECT_TRUE(RequestAfter(MoveAsRoot(), kExtras, "oo").Preserve.bOwner);
    EXPECT_EQ(RequestAfter(TwoEntries(), kFlush, "l").Flush, FlushChoice::Always);
    EXPECT_EQ(RequestAfter(TwoEntries(), kFlush, "n").Flush, FlushChoice::Never);
    EXPECT_EQ(RequestAfter(TwoEntries(), kFlush, "na").Flush, FlushChoice::Auto);
}

TEST_F(TransferDialogOnScreen, LeavesHalfOfModesAndDatesUntilItIsTouched) {
    TransferDialogSetup setup = TwoEntries();
    setup.Request.Preserve = {.bTimes = true};
    EXPECT_EQ(RequestAfter(setup, kExtras, "").Preserve, setup.Request.Preserve);
    EXPECT_EQ(RequestAfter(setup, kExtras, "m").Preserve,
              (PreserveChoice{.bMode = true, .bTimes = true}));
}

TEST_F(TransferDialogOnScreen, ChoosesWithArrowsAndABlank) {
    TransferDialog dialog(TwoEntries());
    Press(dialog, KeyCode::Down, kFiles);
    Press(dialog, KeyCode::Right, 2);
    Press(dialog, KeyCode::Left);
    Press(dialog, KeyCode::Down, kExtras - kFiles);
    Press(dialog, KeyCode::Right);
    Type(dialog, " ");
    Press(dialog, KeyCode::Up, kExtras - kDirectories);
    Press(dialog, KeyCode::Right);
    Press(dialog, KeyCode::Enter);
    const TransferRequest request = dialog.TakeWish().value_or(TransferWish()).Request;
    EXPECT_EQ(request.OnConflict, FileConflictChoice::Overwrite);
    EXPECT_TRUE(request.bFollowLinks);
    EXPECT_EQ(request.OnDirectoryConflict, DirectoryConflictChoice::Skip);
}

TEST_F(TransferDialogOnScreen, TakesAnotherDestination) {
    const Paths sources = TwoEntries().Request.Operands;
    const TransferRequest absolute = RequestTo(TwoEntries(), "/srv/a b");
    EXPECT_EQ(absolute.TargetDirectory, std::nullopt);
    EXPECT_EQ(absolute.Operands, (Paths{sources[0], sources[1], "/srv/a b"}));
    const TransferRequest relative = RequestTo(TwoEntries(), "../Old");
    EXPECT_EQ(relative.Operands.back(), "/home/u/Music/../Old");
    TransferDialogSetup named = TwoEntries();
    named.Request.TargetDirectory.reset();
    named.Request.Operands.emplace_back("/media/usb0");
    EXPECT_EQ(RequestTo(named, "/srv").Operands, (Paths{sources[0], sources[1], "/srv"}));
}

TEST_F(TransferDialogOnScreen, KeepsTheBytesOfTheDestination) {
    TransferDialogSetup setup = TwoEntries();
    setup.Request.TargetDirectory = "/bad\xFF";
    TransferDialog dialog(setup);
    Type(dialog, "x");
    Press(dialog, KeyCode::Enter);
    EXPECT_EQ(dialog.TakeWish().value_or(TransferWish()).Request.Operands.back(), "/bad\xFFx");
}

TEST_F(TransferDialogOnScreen, WantsADestination) {
    TransferDialog dialog(TwoEntries());
    Press(dialog, KeyCode::ClearLine);
    Press(dialog, KeyCode::Tab, kFiles);
    Press(dialog, KeyCode::Enter);
    EXPECT_FALSE(dialog.IsClosed());
    EXPECT_FALSE(dialog.TakeWish());
    Drawn(dialog);
    EXPECT_EQ(Screen.TextWithRole(CellRole::Warning).substr(0, 13), "Say where to.");
    Type(dialog, "/srv");
    Drawn(dialog);
    EXPECT_EQ(Screen.TextWithRole(CellRole::Warning), "");
    Press(dialog, KeyCode::Enter);
    EXPECT_TRUE(dialog.TakeWish());
}

TEST_F(TransferDialogOnScreen, GoesToTheBackground) {
    TransferDialog byLetter(TwoEntries());
    Press(byLetter, KeyCode::Tab, kFlush);
    Type(byLetter, "b");
    EXPECT_TRUE(byLetter.TakeWish().value_or(TransferWish()).bInBackground);
    TransferDialog byButton(TwoEntries());
    Press(byButton, KeyCode::Tab, kButtons + 1);
    Press(byButton, KeyCode::Enter);
    EXPECT_TRUE(byButton.TakeWish().value_or(TransferWish()).bInBackground);
}

TEST_F(TransferDialogOnScreen, LeadsBackThroughTheButtons) {
    TransferDialog dialog(TwoEntries());
    Press(dialog, KeyCode::Tab, kButtons + 2);
    Press(dialog, KeyCode::BackTab, 1);
    Press(dialog, KeyCode::Enter);
    EXPECT_TRUE(dialog.TakeWish().value_or(TransferWish()).bInBackground);
}

TEST_F(TransferDialogOnScreen, IsCanceledWithoutAWish) {
    TransferDialog byKey(TwoEntries());
    Press(byKey, KeyCode::Escape);
    EXPECT_TRUE(byKey.IsClosed());
    EXPECT_FALSE(byKey.TakeWish());
    TransferDialog byButton(TwoEntries());
    Press(byButton, KeyCode::Tab, kButtons + 2);
    Press(byButton, KeyCode::Enter);
    EXPECT_TRUE(byButton.IsClosed());
    EXPECT_FALSE(byButton.TakeWish());
}

TEST_F(TransferDialogOnScreen, LeadsRoundInBothDirections) {
    TransferDialog dialog(TwoEntries());
    Press(dialog, KeyCode::Tab, kButtons + 3);
    Type(dialog, "1");
    Press(dialog, KeyCode::BackTab);
    Press(dialog, KeyCode::BackTab, kButtons);
    Type(dialog, "2");
    Press(dialog, KeyCode::Up);
    Press(dialog, KeyCode::Down);
    Type(dialog, "3");
    Drawn(dialog);
    EXPECT_EQ(Screen.TextWithRole(CellRole::Input).substr(0, 22), "/media/usb0/Backup123 ");
}

TEST_F(TransferDialogOnScreen, TakesTheMouse) {
    TransferDialog dialog(TwoEntries());
    Drawn(dialog);
    dialog.TakeKey(ClickOn(Screen, "Larger"), {});
    dialog.TakeKey(ClickOn(Screen, "Follow"), {});
    dialog.TakeKey(ClickOn(Screen, "/media"), {});
    Type(dialog, "x");
    dialog.TakeKey(ClickOn(Screen, "In background"), {});
    const std::optional<TransferWish> wish = dialog.TakeWish();
    ASSERT_TRUE(wish);
    EXPECT_TRUE(wish->bInBackground);
    EXPECT_TRUE(wish->Request.bFollowLinks);
    EXPECT_EQ(wish->Request.OnConflict, FileConflictChoice::Larger);
    EXPECT_EQ(wish->Request.Operands.back(), "/media/usb0/Backupx");
}

TEST_F(TransferDialogOnScreen, LeavesTheWheelAlone) {
    TransferDialog dialog(TwoEntries());
    const std::string before = Drawn(dialog);
    KeyPress wheel = ClickOn(Screen, "Larger");
    wheel.Mouse.Pressed = MousePress::Button::WheelUp;
    dialog.TakeKey(wheel, {});
    EXPECT_EQ(Drawn(dialog), before);
}

TEST_F(TransferDialogOnScreen, ShowsLettersWhereTheyCount) {
    TransferDialog dialog(TwoEntries());
    Drawn(dialog);
    EXPECT_EQ(Screen.TextWithRole(CellRole::Hotkey), "b");
    Press(dialog, KeyCode::Tab, kDirectories);
    Drawn(dialog);
    EXPECT_EQ(Screen.TextWithRole(CellRole::Hotkey), "M|S|F|b");
}
