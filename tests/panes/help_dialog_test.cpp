// The help, and that it knows the keys that there are.

#include "help_dialog.h"

#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "memory_screen.h"
#include "pane_commands.h"

namespace {

class Help : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    std::string DrawIn(TerminalSize Window) {
        Screen = std::make_unique<MemoryScreen>(Window);
        Shown.Draw(*Screen, {});
        return Screen->Text();
    }
    void Press(KeyCode Code) { Shown.TakeKey({.Code = Code}, {}); }

    HelpDialog Shown;
    std::unique_ptr<MemoryScreen> Screen;
};

const std::map<KeyCode, std::string> kNames = {
    {KeyCode::Up, "Up"},           {KeyCode::Down, "Down"},     {KeyCode::PageUp, "PgUp"},
    {KeyCode::PageDown, "PgDn"},   {KeyCode::Home, "Home"},     {KeyCode::End, "End"},
    {KeyCode::Insert, "Insert"},   {KeyCode::Delete, "Delete"}, {KeyCode::Tab, "Tab"},
    {KeyCode::Enter, "Enter"},     {KeyCode::Escape, "Esc"},    {KeyCode::Backspace, "Backspace"},
    {KeyCode::ClearLine, "Ctrl-U"}};

std::vector<KeyPress> AllKeys() {
    std::vector<KeyPress> keys;
    for (char letter = ' '; letter <= '~'; ++letter) {
        keys.push_back({.Code = KeyCode::Text, .Text = std::string(1, letter)});
    }
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        keys.push_back({.Code = KeyCode::Control, .Text = std::string(1, letter)});
    }
    for (const auto& [code, name] : kNames) {
        keys.push_back({.Code = code});
    }
    constexpr int kFunctionKeys = 12;
    for (int number = 1; number <= kFunctionKeys; ++number) {
        keys.push_back({.Code = KeyCode::Function, .Number = number});
    }
    return keys;
}

std::string NameOf(const KeyPress& Key) {
    if (Key.Code == KeyCode::Text) {
        return Key.Text == " " ? "Space" : Key.Text;
    }
    if (Key.Code == KeyCode::Control) {
        return "Ctrl-" + std::string(1, static_cast<char>(std::toupper(Key.Text[0])));
    }
    if (Key.Code == KeyCode::Function) {
        return "F" + std::to_string(Key.Number);
    }
    return kNames.at(Key.Code);
}

// Those under Headings, word by word.
std::vector<std::string> KeysInHelp(const std::vector<std::string>& Headings) {
    std::vector<std::string> keys;
    bool bWanted = false;
    for (const HelpLine& line : HelpLines()) {
        std::string text = line.Keys;
        if (*line.Does == '\0') {
            bWanted = std::ranges::find(Headings, text) != Headings.end();
        }
        if (!bWanted) {
            continue;
        }
        std::ranges::replace(text, ',', ' ');
        std::istringstream words(text);
        for (std::string word; words >> word;) {
            keys.push_back(word);
        }
    }
    return keys;
}

} // namespace

TEST_F(Help, ShowsTheKeysFromTheBeginning) {
    EXPECT_EQ(DrawIn({80, 24}),
              R"(  ┌────────────────────────────────── Help ──────────────────────────────────┐
  │ Panes                                                                    │
  │ Up Down, Ctrl-P Ctrl-N  move the cursor                                  │
  │ PgUp PgDn, Home End     move by a page, to the first and the last entry  │
  │ Tab                     go to the other pane                             │
  │ Enter                   go into the directory or disc                    │
  │ Backspace               go to the directory above                        │
  │ g                       go to a place: home, a disk, an audio CD         │
  │ /                       find by typing; Up and Down go on, Esc ends      │
  │ s                       sort by name, extension, size, date in turn      │
  │ S                       turn the order round                             │
  │ .                       show or hide names that begin with a dot         │
  │ =                       show this directory in the other pane too        │
  │ Ctrl-U                  swap the panes                                   │
  │ Ctrl-R                  read again                                       │
  │ Ctrl-L                  draw everything again                            │
  │ Esc                     stop reading or deleting                         │
  │                                                                          │
  │ Marks                                                                    │
  │ Insert, Space, Ctrl-T   mark or unmark, and go down                      │
  │ +                       mark what a pattern matches, such as *.flac      │
  └──────────────────── Lines 1 to 20 of 74   Esc: close ────────────────────┘


)");
}

TEST_F(Help, WrapsInASmallWindow) {
    EXPECT_EQ(DrawIn({61, 16}),
              R"(┌────────────────────────── Help ───────────────────────────┐
│ Panes                                                     │
│ Up Down, Ctrl-P Ctrl-N  move the cursor                   │
│ PgUp PgDn, Home End     move by a page, to the first and  │
│                         the last entry                    │
│ Tab                     go to the other pane              │
│ Enter                   go into the directory or disc     │
│ Backspace               go to the directory above         │
│ g                       go to a place: home, a disk, an   │
│                         audio CD                          │
│ /                       find by typing; Up and Down go    │
│                         on, Esc ends                      │
│ s                       sort by name, extension, size,    │
└──────────── Lines 1 to 12 of 85   Esc: close ─────────────┘


)");
}

TEST_F(Help, ShowsAllAtOnceInALargeWindow) {
    DrawIn({200, 90});
    EXPECT_NE(Screen->Text().find("Lines 1 to 74 of 74"), std::string::npos);
    EXPECT_NE(Screen->Text().find(" Wheel "), std::string::npos);
}

TEST_F(Help, SetsKeysAndHeadingsApart) {
    DrawIn({80, 24});
    EXPECT_EQ(Screen->TextWithRole(CellRole::DialogTitle), " Help |Panes|Marks");
    EXPECT_EQ(Screen->TextWithRole(CellRole::Hotkey).substr(0, 27), "Up Down, Ctrl-P Ctrl-N|PgUp");
}

TEST_F(Help, ScrollsToItsEnds) {
    constexpr TerminalSize kWindow{80, 24};
    constexpr const char* kLast =
        "  │ Wheel                   move the cursor                                  │";
    const std::string beginning = DrawIn(kWindow);
    Press(KeyCode::End);
    const std::string end = DrawIn(kWindow);
    EXPECT_EQ(Screen->Row(20), kLast);
    Press(KeyCode::Down);
    EXPECT_EQ(DrawIn(kWindow), end);
    Press(KeyCode::Up);
    DrawIn(kWindow);
    EXPECT_NE(Screen->Row(20), kLast);
    Press(KeyCode::Home);
    EXPECT_EQ(DrawIn(kWindow), beginning);
}

TEST_F(Help, GoesOnByAPageWithABlank) {
    DrawIn({80, 24});
    const std::string last = Screen->Row(20);
    Shown.TakeKey({.Code = KeyCode::Text, .Text = " "}, {});
    DrawIn({80, 24});
    EXPECT_EQ(Screen->Row(1), last);
}

TEST_F(Help, ClosesWithTheKeysThatPeopleTry) {
    for (const KeyPress& key : {KeyPress{.Code = KeyCode::Escape}, KeyPress{.Code = KeyCode::Enter},
                                KeyPress{.Code = KeyCode::Text, .Text = "q"},
                                KeyPress{.Code = KeyCode::Text, .Text = "?"},
                                KeyPress{.Code = KeyCode::Function, .Number = 1},
                                KeyPress{.Code = KeyCode::Function, .Number = 10}}) {
        HelpDialog help;
        help.TakeKey({.Code = KeyCode::Text, .Text = "x"}, {});
        help.TakeKey({.Code = KeyCode::Function, .Number = 5}, {});
        EXPECT_FALSE(help.IsClosed());
        help.TakeKey(key, {});
        EXPECT_TRUE(help.IsClosed());
    }
}

TEST_F(Help, KnowsEveryKeyOfThePanes) {
    const std::vector<std::string> known = KeysInHelp({"Panes", "Marks"});
    FilePanes panes{PanesRequest()};
    for (const KeyPress& key : AllKeys()) {
        if (panes.TakeKey(key, {})) {
            EXPECT_NE(std::ranges::find(known, NameOf(key)), known.end()) << NameOf(key);
        }
        // Out of the search that a key has begun.
        panes.TakeKey({.Code = KeyCode::Escape}, {});
    }
}

TEST_F(Help, KnowsEveryKeyOfTheCommands) {
    const std::vector<std::string> known = KeysInHelp({"Panes", "Marks", "Work"});
    FilePanes panes{PanesRequest()};
    DialogStack stack;
    KeyGuard guard;
    EntryCommands entries{panes, stack, guard};
    RunList runs;
    RunDialogs runsShown{runs, stack, guard};
    PaneCommands commands{panes, entries, runs, runsShown, stack};
    for (const KeyPress& key : AllKeys()) {
        if (commands.TakeKey(key)) {
            EXPECT_NE(std::ranges::find(known, NameOf(key)), known.end()) << NameOf(key);
        }
    }
}

TEST_F(Help, HasRoomForTheKeysOfEveryLine) {
    constexpr std::size_t kKeyColumns = 24;
    for (const HelpLine& line : HelpLines()) {
        EXPECT_LT(std::string(line.Keys).size(), kKeyColumns) << line.Keys;
    }
}
