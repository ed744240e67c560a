// The list of places to go to.

#include "places_dialog.h"

#include <gtest/gtest.h>

#include "memory_screen.h"

namespace {

class Places : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    void Draw() {
        Screen.Erase();
        Shown.Draw(Screen, {});
    }
    void Press(KeyCode Code) { Shown.TakeKey({.Code = Code}, {}); }
    void Type(const std::string& Text) { Shown.TakeKey({.Code = KeyCode::Text, .Text = Text}, {}); }
    void Click(int Column, int Row) {
        Shown.TakeKey({.Code = KeyCode::Mouse, .Mouse = {.Column = Column, .Row = Row}}, {});
    }
    // The line under the cursor.
    std::string Current() {
        Draw();
        return Screen.TextWithRole(CellRole::ButtonFocus).substr(0, 12);
    }

    MemoryScreen Screen{{80, 24}};
    PlacesDialog Shown{{{"Home", "/home/u"},
                        {"Everything", "/"},
                        {"BACKUP", "/media/u/BACKUP"},
                        {"Audio CD in /dev/sr0", "cdda:/dev/sr0"}}};
};

std::vector<NamedPlace> Many() {
    std::vector<NamedPlace> places;
    for (int i = 1; i <= 40; ++i) {
        places.push_back({"Disk " + std::to_string(i), "/media/" + std::to_string(i)});
    }
    return places;
}

} // namespace

TEST_F(Places, AreListedWithTheirNumbersAndPaths) {
    Draw();
    EXPECT_EQ(Screen.Row(8),
              "     ┌────────────────────────────── Go to ───────────────────────────────┐");
    EXPECT_EQ(Screen.Row(9),
              "     │ 1  Home                  /home/u                                   │");
    EXPECT_EQ(Screen.Row(11),
              "     │ 3  BACKUP                /media/u/BACKUP                           │");
    EXPECT_EQ(Screen.Row(12),
              "     │ 4  Audio CD in /dev/sr0  cdda:/dev/sr0                             │");
    EXPECT_EQ(Screen.Row(13),
              "     └────────────────────── Enter: go   Esc: close ──────────────────────┘");
    EXPECT_EQ(Screen.TextWithRole(CellRole::Hotkey), "2|3|4");
}

TEST_F(Places, AreChosenByTheCursor) {
    Press(KeyCode::Down);
    EXPECT_EQ(Current(), " 2  Everythi");
    EXPECT_FALSE(Shown.IsClosed());
    Press(KeyCode::Enter);
    EXPECT_TRUE(Shown.IsClosed());
    EXPECT_EQ(Shown.Chosen(), "/");
}

TEST_F(Places, AreChosenByTheirNumbers) {
    Type("4");
    EXPECT_TRUE(Shown.IsClosed());
    EXPECT_EQ(Shown.Chosen(), "cdda:/dev/sr0");
}

TEST_F(Places, TakeNoNumberThatNoneHas) {
    Type("5");
    Type("0");
    EXPECT_FALSE(Shown.IsClosed());
}

TEST_F(Places, AreFoundByTheirFirstLetters) {
    Type("b");
    EXPECT_EQ(Current(), " 3  BACKUP  ");
    Type("h");
    EXPECT_EQ(Current(), " 1  Home    ");
    Type("x");
    EXPECT_EQ(Current(), " 1  Home    ");
}

TEST_F(Places, ComeOneAfterTheOtherWhereTheyBeginWithTheSameLetter) {
    PlacesDialog many(Many());
    many.TakeKey({.Code = KeyCode::Text, .Text = "d"}, {});
    many.TakeKey({.Code = KeyCode::Text, .Text = "d"}, {});
    many.TakeKey({.Code = KeyCode::Enter}, {});
    EXPECT_EQ(many.Chosen(), "/media/3");
}

TEST_F(Places, AreChosenByAClick) {
    Draw();
    Click(10, 8);
    Shown.TakeKey({.Code = KeyCode::Mouse,
                   .Mouse = {.Pressed = MousePress::Button::Right, .Column = 10, .Row = 10}},
                  {});
    EXPECT_FALSE(Shown.IsClosed());
    Click(10, 11);
    EXPECT_EQ(Shown.Chosen(), "/media/u/BACKUP");
}

TEST_F(Places, AreLeftWithoutAChoice) {
    Press(KeyCode::Escape);
    EXPECT_TRUE(Shown.IsClosed());
    EXPECT_EQ(Shown.Chosen(), std::nullopt);
}

TEST_F(Places, ScrollWhereTheyHaveNoRoom) {
    MemoryScreen small({61, 16});
    PlacesDialog many(Many());
    many.Draw(small, {});
    many.TakeKey({.Code = KeyCode::End}, {});
    small.Erase();
    many.Draw(small, {});
    EXPECT_EQ(small.Row(0), "┌────────────────────────── Go to ──────────────────────────┐");
    EXPECT_EQ(small.Row(1), "│    Disk 27  /media/27                                     │");
    EXPECT_EQ(small.Row(14), "│    Disk 40  /media/40                                     │");
    EXPECT_EQ(small.RoleAt(1, 14), CellRole::ButtonFocus);
    many.TakeKey({.Code = KeyCode::Mouse, .Mouse = {.Column = 1, .Row = 1}}, {});
    EXPECT_EQ(many.Chosen(), "/media/27");
}

TEST_F(Places, AreShownClean) {
    PlacesDialog odd(std::vector{NamedPlace{"new\nline", "/media/esc\x1b[2J"}});
    odd.Draw(Screen, {});
    EXPECT_EQ(Screen.Row(10),
              "     │ 1  new?line  /media/esc?[2J                                        │");
}

TEST_F(Places, CanBeNone) {
    PlacesDialog none{std::vector<NamedPlace>()};
    none.Draw(Screen, {});
    none.TakeKey({.Code = KeyCode::Enter}, {});
    none.TakeKey({.Code = KeyCode::End}, {});
    none.TakeKey({.Code = KeyCode::Text, .Text = "a"}, {});
    EXPECT_FALSE(none.IsClosed());
}
