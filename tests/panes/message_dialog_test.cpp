// A text with buttons: how it looks, how it scrolls, and which button is pressed.

#include "message_dialog.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "shown_dialog.h"

namespace {

class MessageOnScreen : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    static std::optional<std::size_t> Press(MessageDialog& Dialog, const KeyPress& Pressed) {
        Dialog.TakeKey(Pressed, {});
        EXPECT_EQ(Dialog.IsClosed(), Dialog.Pressed().has_value());
        return Dialog.Pressed();
    }

    static Message ManyLines() {
        std::vector<std::string> lines;
        for (int i = 1; i <= 40; ++i) {
            lines.push_back("line " + std::to_string(i));
        }
        return Notice("Result", lines);
    }

    // The first and the last line of text that is shown.
    static std::string ShownPart(MessageDialog& Dialog, TerminalSize Size = {61, 16}) {
        const std::string box = Box(Dialog, Size);
        const std::size_t from = box.find("lines ");
        return from == std::string::npos ? "" : box.substr(from, box.find(" │", from) - from);
    }
};

constexpr TerminalSize kSmall{61, 16};
constexpr TerminalSize kLarge{200, 60};
constexpr std::size_t kNoButton = 1;

const char* const kLongSentence =
    "The directory '/media/usb0/Backup' has vanished while it was being read, so what is shown "
    "here is the nearest one that is left.";

constexpr const char* kNotice = R"(
┌───────────────────────────────── Not there ─────────────────────────────────┐
│ The directory '/media/usb0/Backup' has vanished while it was being read, so │
│ what is shown here is the nearest one that is left.                         │
│                                                                             │
│                                  [ Close ]                                  │
└─────────────────────────────────────────────────────────────────────────────┘
)";

constexpr const char* kNoticeInASmallWindow = R"(
┌─────────────────────── Not there ────────────────────────┐
│ The directory '/media/usb0/Backup' has vanished while it │
│ was being read, so what is shown here is the nearest one │
│ that is left.                                            │
│                                                          │
│                        [ Close ]                         │
└──────────────────────────────────────────────────────────┘
)";

constexpr const char* kQuestion = R"(
┌──────────── Delete ────────────┐
│ Delete 'cover.jpg'?            │
│                                │
│         [ Yes ] [ No ]         │
└────────────────────────────────┘
)";

constexpr const char* kPageOfMany = R"(
┌──────────── Result ────────────┐
│ line 1                         │
│ line 2                         │
│ line 3                         │
│ line 4                         │
│ line 5                         │
│ line 6                         │
│ line 7                         │
│ line 8                         │
│ line 9                         │
│ line 10                        │
│ line 11                        │
│ line 12                        │
│            lines 1 to 12 of 40 │
│           [ Close ]            │
└────────────────────────────────┘
)";

constexpr const char* kOddText = R"(
┌────────────── a? ──────────────┐
│ bad�?日本の音楽                │
│                                │
│                                │
│           [ Close ]            │
└────────────────────────────────┘
)";

} // namespace

TEST_F(MessageOnScreen, WrapsItsTextAtWords) {
    MessageDialog dialog(Notice("Not there", {kLongSentence}));
    EXPECT_EQ(Box(dialog), kNotice);
    EXPECT_EQ(Box(dialog, kLarge), kNotice);
    EXPECT_EQ(Box(dialog, kSmall), kNoticeInASmallWindow);
}

TEST_F(MessageOnScreen, IsAsSmallAsItsText) {
    MessageDialog dialog(YesNoQuestion("Delete", {"Delete 'cover.jpg'?"}));
    EXPECT_EQ(Box(dialog), kQuestion);
    EXPECT_EQ(Box(dialog, kLarge), kQuestion);
    EXPECT_EQ(Box(dialog, kSmall), kQuestion);
}

TEST_F(MessageOnScreen, CleansItsText) {
    MessageDialog dialog(Notice("a\x1B", {"bad\xFF\n" + std::string("日本の音楽"), ""}));
    EXPECT_EQ(Box(dialog), kOddText);
}

TEST_F(MessageOnScreen, ClosesByItsButton) {
    for (const KeyPress& key : {Key(KeyCode::Enter), Key(KeyCode::Escape),
                                KeyPress{.Code = KeyCode::Text, .Text = "c"}}) {
        MessageDialog dialog(Notice("Result", {"Done."}));
        EXPECT_EQ(Press(dialog, Key(KeyCode::Insert)), std::nullopt);
        EXPECT_EQ(Press(dialog, key), 0U);
    }
}

TEST_F(MessageOnScreen, SaysNoByItself) {
    MessageDialog dialog(YesNoQuestion("Quit", {"Two transfers run. Cancel them?"}));
    EXPECT_EQ(Drawn(dialog).TextWithRole(CellRole::ButtonFocus), "[ No ]");
    EXPECT_EQ(Press(dialog, Key(KeyCode::Enter)), kNoButton);
    MessageDialog left(YesNoQuestion("Quit", {"Two transfers run. Cancel them?"}));
    Press(left, Key(KeyCode::Tab));
    EXPECT_EQ(Press(left, Key(KeyCode::Escape)), kNoButton);
}

TEST_F(MessageOnScreen, SaysYesWhenAsked) {
    MessageDialog dialog(YesNoQuestion("Quit", {"Two transfers run. Cancel them?"}));
    EXPECT_EQ(Press(dialog, {.Code = KeyCode::Text, .Text = "y"}), kYesButton);
    EXPECT_EQ(Press(dialog, {.Code = KeyCode::Text, .Text = "n"}), kYesButton);
    MessageDialog clicked(YesNoQuestion("Quit", {"Quit?"}));
    const Drawn screen(clicked);
    ASSERT_EQ(screen.RoleAt(33, 11), CellRole::Button) << screen.Text();
    EXPECT_EQ(Press(clicked, Click(33, 11)), kYesButton);
}

TEST_F(MessageOnScreen, ScrollsWhereItsTextIsLonger) {
    MessageDialog dialog(ManyLines());
    EXPECT_EQ(Box(dialog, kSmall), kPageOfMany);
    const std::pair<KeyCode, const char*> steps[] = {
        {KeyCode::Up, "lines 1 to 12 of 40"},        {KeyCode::Down, "lines 2 to 13 of 40"},
        {KeyCode::PageDown, "lines 14 to 25 of 40"}, {KeyCode::End, "lines 29 to 40 of 40"},
        {KeyCode::Down, "lines 29 to 40 of 40"},     {KeyCode::PageUp, "lines 17 to 28 of 40"},
        {KeyCode::Home, "lines 1 to 12 of 40"},
    };
    for (const auto& [code, shown] : steps) {
        EXPECT_EQ(Press(dialog, Key(code)), std::nullopt);
        EXPECT_EQ(ShownPart(dialog), shown);
    }
}

TEST_F(MessageOnScreen, ScrollsByTheWheel) {
    MessageDialog dialog(ManyLines());
    const Drawn first(dialog, kSmall);
    dialog.TakeKey({.Code = KeyCode::Mouse, .Mouse = {MousePress::Button::WheelDown}}, {});
    EXPECT_EQ(ShownPart(dialog), "lines 4 to 15 of 40");
    dialog.TakeKey({.Code = KeyCode::Mouse, .Mouse = {MousePress::Button::WheelUp}}, {});
    EXPECT_EQ(ShownPart(dialog), "lines 1 to 12 of 40");
}

TEST_F(MessageOnScreen, ShowsAllWhenTheWindowGrows) {
    MessageDialog dialog(ManyLines());
    const Drawn first(dialog, kSmall);
    Press(dialog, Key(KeyCode::End));
    EXPECT_EQ(ShownPart(dialog, {80, 24}), "lines 21 to 40 of 40");
    EXPECT_EQ(ShownPart(dialog, kLarge), "");
    EXPECT_NE(Box(dialog, kLarge).find("│ line 1 "), std::string::npos);
}

TEST_F(MessageOnScreen, MovesTheFocusByArrowsWhereNothingScrolls) {
    Message message = Notice("Failed", {"No space left."});
    message.Buttons = {{"Run again"}, {std::string(70, 'x')}};
    MessageDialog dialog(message);
    const Drawn first(dialog, kSmall);
    Press(dialog, Key(KeyCode::Down));
    EXPECT_EQ(Press(dialog, Key(KeyCode::Enter)), 1U);
}

TEST_F(MessageOnScreen, KeepsKeysDeadAtFirstWhenNobodyAskedForIt) {
    KeyGuard guard;
    MessageDialog::TimePoint now{std::chrono::hours(1)};
    MessageDialog dialog(YesNoQuestion("Copy", {"Go on?"}));
    dialog.AppearUnasked(guard, now);
    const KeyPress yes{.Code = KeyCode::Text, .Text = "y"};
    dialog.TakeKey(yes, now);
    EXPECT_FALSE(dialog.IsClosed());
    now += KeyGuard::kDeadTime;
    dialog.TakeKey(yes, now);
    EXPECT_EQ(dialog.Pressed(), kYesButton);
    MessageDialog next(YesNoQuestion("Copy", {"Go on?"}));
    next.AppearUnasked(guard, now);
    next.TakeKey(yes, now + KeyGuard::kDeadTimeAfterAnswer);
    EXPECT_EQ(next.Pressed(), kYesButton);
}
