// Which button a key or a click presses, and how the buttons look.

#include "button_row.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "memory_screen.h"

namespace {

constexpr bool kHasKeys = true;

class Buttons : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    std::optional<std::size_t> Press(KeyCode Code) { return Row.Handle({.Code = Code}); }
    std::optional<std::size_t> Type(const std::string& Text) {
        return Row.Handle({.Code = KeyCode::Text, .Text = Text});
    }
    std::optional<std::size_t> Click(int Column, int RowNumber,
                                     MousePress::Button With = MousePress::Button::Left) {
        return Row.Handle({.Code = KeyCode::Mouse, .Mouse = {With, Column, RowNumber}});
    }
    void Draw(int Columns) { Row.Draw(Screen, 2, 1, Columns, kHasKeys); }

    MemoryScreen Screen{{40, 6}};
    ButtonRow Row{{{"Copy", "c"}, {"In background", "b"}, {"Cancel"}}};
};

} // namespace

TEST_F(Buttons, StandBesideEachOther) {
    Draw(38);
    EXPECT_EQ(Screen.Row(1), "  [ Copy ] [ In background ] [ Cancel ]");
    EXPECT_EQ(Row.RowsIn(38), 1);
}

TEST_F(Buttons, TakeAsManyLinesAsTheyNeed) {
    Draw(25);
    EXPECT_EQ(Screen.Row(1), "  [ Copy ]");
    EXPECT_EQ(Screen.Row(2), "  [ In background ]");
    EXPECT_EQ(Screen.Row(3), "  [ Cancel ]");
    EXPECT_EQ(Row.RowsIn(25), 3);
    EXPECT_EQ(Row.RowsIn(26), 2);
    EXPECT_EQ(ButtonRow({}).RowsIn(26), 0);
}

TEST_F(Buttons, AreCutWhereTheLineIsShorter) {
    Draw(10);
    EXPECT_EQ(Screen.Row(2), "  [ In back~");
}

TEST_F(Buttons, ShowTheFocusAndTheHotkeysOfTheOthers) {
    Draw(38);
    EXPECT_EQ(Screen.TextWithRole(CellRole::ButtonFocus), "[ Copy ]");
    EXPECT_EQ(Screen.TextWithRole(CellRole::Hotkey), "b");
    EXPECT_EQ(Screen.RoleAt(16, 1), CellRole::Hotkey);
    Press(KeyCode::Right);
    Screen.Erase();
    Draw(38);
    EXPECT_EQ(Screen.TextWithRole(CellRole::ButtonFocus), "[ In background ]");
    EXPECT_EQ(Screen.TextWithRole(CellRole::Hotkey), "C");
}

TEST_F(Buttons, ShowNoFocusWithoutTheKeys) {
    Row.Draw(Screen, 0, 0, 38, !kHasKeys);
    EXPECT_EQ(Screen.TextWithRole(CellRole::ButtonFocus), "");
    EXPECT_EQ(Screen.TextWithRole(CellRole::Hotkey), "C|b");
}

TEST_F(Buttons, ShowAHotkeyInFrontOfALabelWithoutIt) {
    ButtonRow row({{"overwrite all older", "u"}, {"skip", "s"}, {"Skip all", "S"}}, 1);
    row.Draw(Screen, 0, 0, 40, kHasKeys);
    EXPECT_EQ(Screen.Row(0), "[ u overwrite all older ] [ skip ]");
    EXPECT_EQ(Screen.Row(1), "[ Skip all ]");
    EXPECT_EQ(Screen.TextWithRole(CellRole::Hotkey), "u|S");
    EXPECT_EQ(Screen.RoleAt(2, 0), CellRole::Hotkey);
}

TEST_F(Buttons, ArePressedByEnterAndBlank) {
    EXPECT_EQ(Press(KeyCode::Enter), 0U);
    Row.SetFocus(2);
    EXPECT_EQ(Type(" "), 2U);
    EXPECT_EQ(Press(KeyCode::Escape), std::nullopt);
}

TEST_F(Buttons, ArePressedByTheirHotkeys) {
    EXPECT_EQ(Type("b"), 1U);
    EXPECT_EQ(Row.Focus(), 1U);
    EXPECT_EQ(Type("x"), std::nullopt);
    EXPECT_EQ(Row.Handle({.Code = KeyCode::Control, .Text = "c"}), std::nullopt);
    EXPECT_EQ(Row.Handle({.Code = KeyCode::Text}), std::nullopt);
}

TEST_F(Buttons, ArePressedByTheMouse) {
    EXPECT_EQ(Click(2, 1), std::nullopt);
    Draw(38);
    EXPECT_EQ(Click(2, 1), 0U);
    EXPECT_EQ(Click(9, 1), 0U);
    EXPECT_EQ(Click(10, 1), std::nullopt);
    EXPECT_EQ(Click(11, 1), 1U);
    EXPECT_EQ(Click(11, 2), std::nullopt);
    EXPECT_EQ(Click(11, 1, MousePress::Button::Right), std::nullopt);
}

TEST_F(Buttons, GiveTheFocusToTheNextAndThePrevious) {
    for (const KeyCode forward : {KeyCode::Tab, KeyCode::Right}) {
        Row.SetFocus(1);
        EXPECT_EQ(Press(forward), std::nullopt);
        EXPECT_EQ(Row.Focus(), 2U);
        Press(forward);
        EXPECT_EQ(Row.Focus(), 0U);
    }
    for (const KeyCode back : {KeyCode::BackTab, KeyCode::Left}) {
        Row.SetFocus(1);
        EXPECT_EQ(Press(back), std::nullopt);
        EXPECT_EQ(Row.Focus(), 0U);
        Press(back);
        EXPECT_EQ(Row.Focus(), 2U);
    }
}

TEST_F(Buttons, GiveTheFocusToTheLineBelowAndAbove) {
    Press(KeyCode::Down);
    EXPECT_EQ(Row.Focus(), 0U);
    Draw(26);
    EXPECT_EQ(Screen.Row(1), "  [ Copy ] [ In background ]");
    EXPECT_EQ(Screen.Row(2), "  [ Cancel ]");
    Press(KeyCode::Down);
    EXPECT_EQ(Row.Focus(), 2U);
    Press(KeyCode::Down);
    EXPECT_EQ(Row.Focus(), 2U);
    Press(KeyCode::Up);
    EXPECT_EQ(Row.Focus(), 0U);
    Press(KeyCode::Right);
    Press(KeyCode::Down);
    Press(KeyCode::Up);
    EXPECT_EQ(Row.Focus(), 0U);
}

TEST_F(Buttons, GiveTheFocusToTheNearestOfAnotherLine) {
    Row = ButtonRow({{"one"}, {"two"}, {"six"}, {"ten"}}, 1);
    Draw(15);
    EXPECT_EQ(Screen.Row(2), "  [ six ] [ ten ]");
    Press(KeyCode::Down);
    EXPECT_EQ(Row.Focus(), 3U);
    Press(KeyCode::Up);
    EXPECT_EQ(Row.Focus(), 1U);
}
