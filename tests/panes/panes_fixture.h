// What the tests of the panes as a whole share: a directory "from" with the files "a" and "b",
// shown to the left, an empty directory "to", shown to the right, and keys that go where the front
// end sends them.

#pragma once

#include "becomes_true.h"
#include "entry_commands.h"
#include "file_panes.h"
#include "file_tree.h"
#include "memory_screen.h"
#include "pane_commands.h"
#include "run_dialogs.h"
#include "shown_dialog.h"
#include "temporary_directory.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

// The words on a screen without frames, a blank between two, whatever line they stand on.
inline std::string WordsOn(const MemoryScreen& Screen) {
    std::string words;
    for (const char character : Screen.Text()) {
        const bool bBlank = std::string_view(" \n|+").find(character) != std::string_view::npos;
        if (!bBlank) {
            words += character;
        } else if (!words.empty() && words.back() != ' ') {
            words += ' ';
        }
    }
    for (std::size_t at = 0; (at = words.find("--", at)) != std::string::npos;) {
        const std::size_t end = std::min(words.find_first_not_of('-', at), words.size());
        words.erase(at, words[end] == ' ' ? end + 1 - at : end - at);
    }
    return words.substr(0, words.find_last_not_of(' ') + 1);
}

// "/.." for the row that leads up, "<" behind the row of the cursor, "*" before what is marked.
inline std::vector<std::string> RowsOf(const Browser& Shown) {
    const BrowseList& list = Shown.List();
    std::vector<std::string> rows;
    for (std::size_t row = 0; row < list.RowCount(); ++row) {
        const ListedEntry* const entry = list.EntryAt(row);
        rows.push_back((list.IsMarked(row) ? "*" : "") + (entry ? entry->Name : "/..") +
                       (row == list.Cursor() ? "<" : ""));
    }
    return rows;
}

inline KeyPress Letter(char Character) {
    return {.Code = KeyCode::Text, .Text = std::string(1, Character)};
}
inline KeyPress FunctionKey(int Number) {
    return {.Code = KeyCode::Function, .Number = Number};
}

class PanesFixture : public testing::Test {
protected:
    using Rows = std::vector<std::string>;
    using Strings = std::vector<std::string>;
    using TimePoint = std::chrono::steady_clock::time_point;

    PanesFixture() {
        // Nobody wants to hear the tests: the bell stands in for the sound then.
        setenv("SSH_CONNECTION", "somewhere", 1);
        EXPECT_TRUE(BothAreRead());
        MoveTo("a");
    }

    // A round of the loop.
    void Attend() {
        Panes.Attend(Now);
        RunsShown.Attend(Now);
        Commands.Attend();
        Entries.Attend(Now);
        Stack.Attend();
        if (RunsShown.TakeEnd()) {
            ++Ends;
            Panes.ReadAgain();
        }
        Bells += RunsShown.TakeBell() ? 1 : 0;
    }
    template <typename Predicate>
    testing::AssertionResult Becomes(const std::string& What, Predicate Holds) {
        return BecomesTrue(What,
                           [&] {
                               Attend();
                               return Holds();
                           })
               << "; the dialogs: " << Dialogs();
    }
    testing::AssertionResult BothAreRead() {
        return Becomes("both panes are read", [&] { return !Panes.IsReading(); });
    }
    testing::AssertionResult Shows(Browser& Pane, const Rows& Wanted) {
        return Becomes("the pane shows " + testing::PrintToString(Wanted),
                       [&] { return RowsOf(Pane) == Wanted; })
               << " but " << testing::PrintToString(RowsOf(Pane));
    }
    testing::AssertionResult Says(const std::string& Words) {
        return Becomes("a dialog says \"" + Words + "\"",
                       [&] { return Dialogs().find(Words) != std::string::npos; });
    }

    // After a second, so that no key is dead. False where nobody knew it.
    bool Press(const KeyPress& Key) {
        Now += std::chrono::seconds(1);
        if (!Stack.IsGuarded()) {
            Guard.KeyIsDead(Now);
        }
        if (!Stack.IsEmpty()) {
            Stack.TakeKey(Key, Now);
            return true;
        }
        return Panes.TakeKey(Key, Now) || Commands.TakeKey(Key);
    }
    bool Press(KeyCode Code) { return Press(KeyPress{.Code = Code}); }
    bool Press(char Character) { return Press(Letter(Character)); }
    void Type(const std::string& Text) {
        Press(KeyCode::ClearLine);
        for (const char character : Text) {
            Press(character);
        }
    }
    void MoveTo(const std::string& Name) {
        EXPECT_TRUE(Panes.Active().List().MoveCursorTo(Name)) << Name;
    }

    // The words of all dialogs, with ROOT for the directory of the test.
    std::string Dialogs() {
        MemoryScreen screen({140, 40}, kAscii);
        Stack.Draw(screen, Now);
        return Short(WordsOn(screen));
    }
    std::string Short(std::string Text) const {
        const std::string& root = Root.Path().native();
        for (std::size_t at = 0; (at = Text.find(root, at)) != std::string::npos;) {
            Text.replace(at, root.size(), "ROOT");
        }
        return Text;
    }

    static PanesRequest MakeDirectories(const std::filesystem::path& Root) {
        WriteFile(Root / "from/a", "new a");
        WriteFile(Root / "from/b", "new b");
        std::filesystem::create_directory(Root / "to");
        return {.Left = Root / "from", .Right = Root / "to"};
    }

    static constexpr bool kAscii = false;

    const TemporaryDirectory Root;
    TimePoint Now{std::chrono::hours(1)};
    KeyGuard Guard;
    DialogStack Stack;
    FilePanes Panes{MakeDirectories(Root.Path())};
    EntryCommands Entries{Panes, Stack, Guard};
    RunList Runs;
    RunDialogs RunsShown{Runs, Stack, Guard};
    PaneCommands Commands{Panes, Entries, Runs, RunsShown, Stack};
    int Ends = 0;
    int Bells = 0;
};
