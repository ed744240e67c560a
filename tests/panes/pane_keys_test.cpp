// What keys do in the list of a pane.

#include "pane_keys.h"

#include <gtest/gtest.h>

#include "sample_places.h"

namespace {

constexpr int kVisibleRows = 5;

class PaneKeys : public testing::Test {
protected:
    bool Press(KeyCode Code) { return HandlePaneKey({.Code = Code}, List, kVisibleRows); }
    bool Type(const std::string& Text) {
        return HandlePaneKey({.Code = KeyCode::Text, .Text = Text}, List, kVisibleRows);
    }
    bool Control(const std::string& Letter) {
        return HandlePaneKey({.Code = KeyCode::Control, .Text = Letter}, List, kVisibleRows);
    }
    std::string Current() const {
        return List.CurrentEntry() == nullptr ? "" : List.CurrentEntry()->Name;
    }

    BrowseList List = Music();
};

} // namespace

TEST_F(PaneKeys, MoveTheCursor) {
    EXPECT_TRUE(Press(KeyCode::Down));
    EXPECT_TRUE(Control("n"));
    EXPECT_EQ(List.Cursor(), 2U);
    EXPECT_TRUE(Press(KeyCode::PageDown));
    EXPECT_EQ(List.Cursor(), 6U);
    EXPECT_TRUE(Press(KeyCode::End));
    EXPECT_EQ(List.Cursor(), List.RowCount() - 1);
    EXPECT_TRUE(Press(KeyCode::Home));
    EXPECT_EQ(List.Cursor(), 0U);
}

TEST_F(PaneKeys, MarkAndGoDown) {
    List.MoveCursorTo("Live");
    EXPECT_TRUE(Press(KeyCode::Insert));
    EXPECT_TRUE(Type(" "));
    EXPECT_TRUE(Control("t"));
    EXPECT_EQ(List.Marked().Entries, 3U);
    EXPECT_EQ(Current(), "cover.jpg");
    Press(KeyCode::Up);
    EXPECT_TRUE(Type(" "));
    EXPECT_EQ(List.Marked().Entries, 2U);
}

TEST_F(PaneKeys, PassTheRowThatLeadsUpWhenMarking) {
    EXPECT_TRUE(Press(KeyCode::Insert));
    EXPECT_EQ(List.Marked().Entries, 0U);
    EXPECT_EQ(List.Cursor(), 1U);
}

TEST_F(PaneKeys, InvertMarks) {
    List.ToggleMark(1);
    EXPECT_TRUE(Type("*"));
    EXPECT_FALSE(List.IsMarked(1));
    EXPECT_TRUE(List.IsMarked(2));
}

TEST_F(PaneKeys, ShowAndHideHiddenEntries) {
    EXPECT_TRUE(Type("."));
    EXPECT_TRUE(List.ShowsHidden());
    EXPECT_TRUE(Type("."));
    EXPECT_FALSE(List.ShowsHidden());
}

TEST_F(PaneKeys, SortByOneThingAfterTheOther) {
    for (const OrderKey key :
         {OrderKey::Extension, OrderKey::Size, OrderKey::Date, OrderKey::Name}) {
        EXPECT_TRUE(Type("s"));
        EXPECT_EQ(List.Order(), (EntryOrder{.Key = key}));
    }
}

TEST_F(PaneKeys, ReverseTheOrder) {
    List.SetOrder({.Key = OrderKey::Size});
    EXPECT_TRUE(Type("S"));
    EXPECT_EQ(List.Order(), (EntryOrder{.Key = OrderKey::Size, .bReversed = true}));
    EXPECT_TRUE(Type("S"));
    EXPECT_EQ(List.Order(), EntryOrder{.Key = OrderKey::Size});
}

TEST_F(PaneKeys, LeaveOtherKeysAlone) {
    for (const KeyCode code : {KeyCode::Enter, KeyCode::Tab, KeyCode::Backspace, KeyCode::Escape}) {
        EXPECT_FALSE(Press(code));
    }
    EXPECT_FALSE(Type("c"));
    EXPECT_FALSE(Control("r"));
    EXPECT_EQ(List.Cursor(), 0U);
}
