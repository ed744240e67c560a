// A line to type in: how it looks, what it takes and refuses.

#include "text_dialog.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "shown_dialog.h"

namespace {

class TextOnScreen : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    static void Type(TextDialog& Dialog, std::string_view Text) {
        while (!Text.empty()) {
            const std::size_t bytes = std::max<std::size_t>(Utf8SequenceLength(Text), 1);
            Dialog.TakeKey({.Code = KeyCode::Text, .Text = std::string(Text.substr(0, bytes))}, {});
            Text.remove_prefix(bytes);
        }
    }
    static void Press(TextDialog& Dialog, KeyCode Code) { Dialog.TakeKey(Key(Code), {}); }

    static TextQuestion NewDirectory() {
        return {.Title = "Make directory", .Label = "Name of the new directory:"};
    }
    static TextQuestion Rename(std::string Name) {
        return {.Title = "Rename",
                .Label = "New name:",
                .InitialText = std::move(Name),
                .Refusal = [](const std::string& Text) -> std::string {
                    return Text == "b" ? "" : "That name exists already.";
                }};
    }
};

constexpr TerminalSize kSmall{61, 16};
constexpr TerminalSize kLarge{200, 60};

constexpr const char* kEmpty = R"(
┌─────────────────────────────── Make directory ───────────────────────────────┐
│ Name of the new directory:                                                   │
│                                                                              │
│                                                                              │
│ Enter: use it   Esc: leave                                                   │
└──────────────────────────────────────────────────────────────────────────────┘
)";

constexpr const char* kEmptyInASmallWindow = R"(
┌───────────────────── Make directory ──────────────────────┐
│ Name of the new directory:                                │
│                                                           │
│                                                           │
│ Enter: use it   Esc: leave                                │
└───────────────────────────────────────────────────────────┘
)";

constexpr const char* kRefused = R"(
┌─────────────────────────────────── Rename ───────────────────────────────────┐
│ New name:                                                                    │
│ a                                                                            │
│ That name exists already.                                                    │
│ Enter: use it   Esc: leave                                                   │
└──────────────────────────────────────────────────────────────────────────────┘
)";

} // namespace

TEST_F(TextOnScreen, ShowsALineToTypeIn) {
    TextDialog dialog(NewDirectory());
    EXPECT_EQ(Box(dialog), kEmpty);
    EXPECT_EQ(Box(dialog, kLarge), kEmpty);
    EXPECT_EQ(Box(dialog, kSmall), kEmptyInASmallWindow);
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::Input), std::string(76, ' '));
}

TEST_F(TextOnScreen, ShowsTheCursorWhereOneTypes) {
    TextDialog dialog(NewDirectory());
    Type(dialog, "日本e\u0301");
    const Drawn screen(dialog);
    EXPECT_TRUE(screen.Row(10).starts_with("│ 日本e\u0301 ")) << screen.Text();
    EXPECT_TRUE(screen.bCursor);
    EXPECT_EQ(screen.CursorColumn, 2 + 5);
    EXPECT_EQ(screen.CursorRow, 10);
    Press(dialog, KeyCode::Home);
    EXPECT_EQ(Drawn(dialog).CursorColumn, 2);
}

TEST_F(TextOnScreen, ScrollsLongerText) {
    TextDialog dialog(Rename(std::string(300, 'x') + "END"));
    const Drawn screen(dialog, kSmall);
    EXPECT_NE(screen.TextWithRole(CellRole::Input).find("xEND "), std::string::npos);
    EXPECT_LT(screen.CursorColumn, 61 - 2);
    Press(dialog, KeyCode::Home);
    EXPECT_EQ(Drawn(dialog, kSmall).TextWithRole(CellRole::Input), std::string(57, 'x'));
}

TEST_F(TextOnScreen, TakesItsTextOnEnter) {
    TextDialog dialog(NewDirectory());
    Type(dialog, "Live 2024");
    EXPECT_FALSE(dialog.IsClosed());
    EXPECT_EQ(dialog.Entered(), std::nullopt);
    Press(dialog, KeyCode::Enter);
    EXPECT_TRUE(dialog.IsClosed());
    EXPECT_EQ(dialog.Entered(), "Live 2024");
    Type(dialog, "x");
    Press(dialog, KeyCode::Enter);
    EXPECT_EQ(dialog.Entered(), "Live 2024");
}

TEST_F(TextOnScreen, KeepsTheBytesOfTheText) {
    TextDialog dialog({.Title = "Go to", .Label = "Directory:", .InitialText = "/a\xFF\n"});
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::Input).substr(0, 6), "/a\uFFFD?");
    Press(dialog, KeyCode::Enter);
    EXPECT_EQ(dialog.Entered(), "/a\xFF\n");
}

TEST_F(TextOnScreen, LeavesWithoutATextOnEscape) {
    TextDialog dialog(Rename("a"));
    Press(dialog, KeyCode::Escape);
    EXPECT_TRUE(dialog.IsClosed());
    EXPECT_EQ(dialog.Entered(), std::nullopt);
}

TEST_F(TextOnScreen, StaysOpenWhenItsTextIsRefused) {
    TextDialog dialog(Rename("a"));
    Press(dialog, KeyCode::Enter);
    EXPECT_FALSE(dialog.IsClosed());
    EXPECT_EQ(Box(dialog), kRefused);
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::Warning), "That name exists already.");
    Press(dialog, KeyCode::Backspace);
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::Warning), "");
    Type(dialog, "b");
    Press(dialog, KeyCode::Enter);
    EXPECT_TRUE(dialog.IsClosed());
    EXPECT_EQ(dialog.Entered(), "b");
}

TEST_F(TextOnScreen, WrapsALongRefusal) {
    TextQuestion question = NewDirectory();
    question.Refusal = [](const std::string&) {
        return "cannot make '" + std::string(100, 'd') + "\n': Permission denied";
    };
    TextDialog dialog(question);
    Press(dialog, KeyCode::Enter);
    const Drawn screen(dialog, kSmall);
    EXPECT_NE(screen.Text().find("denied"), std::string::npos);
    EXPECT_NE(screen.Text().find("Enter: use it"), std::string::npos);
}
