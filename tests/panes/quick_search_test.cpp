// Finding an entry by typing.

#include "quick_search.h"

#include <gtest/gtest.h>

#include "sample_places.h"

namespace {

class QuickSearches : public testing::Test {
protected:
    QuickSearches() {
        Listing place{.Place = "/srv"};
        for (const char* name : {"alpha", "beta", "Band", "bank", "zebra"}) {
            place.Entries.push_back(File(name, 1));
        }
        List.Take(place);
    }

    bool Press(KeyCode Code) { return Search.TakeKey({.Code = Code}, List); }
    bool Type(const std::string& Text) {
        return Search.TakeKey({.Code = KeyCode::Text, .Text = Text}, List);
    }
    std::string Current() const {
        return List.CurrentEntry() == nullptr ? "" : List.CurrentEntry()->Name;
    }

    BrowseList List;
    QuickSearch Search;
};

} // namespace

TEST_F(QuickSearches, OpenWithASlash) {
    EXPECT_FALSE(Type("b"));
    EXPECT_EQ(Search.Text(), std::nullopt);
    EXPECT_TRUE(Type("/"));
    EXPECT_EQ(Search.Text(), "");
    EXPECT_EQ(List.Cursor(), 0U);
}

TEST_F(QuickSearches, MoveToTheNextEntryThatBeginsSo) {
    Type("/");
    EXPECT_TRUE(Type("b"));
    EXPECT_EQ(Current(), "Band");
    Type("e");
    EXPECT_EQ(Current(), "beta");
    EXPECT_EQ(Search.Text(), "be");
}

TEST_F(QuickSearches, TakeNoLetterThatNothingGoesOnWith) {
    Type("/");
    Type("b");
    EXPECT_TRUE(Type("x"));
    EXPECT_EQ(Search.Text(), "b");
    EXPECT_EQ(Current(), "Band");
}

TEST_F(QuickSearches, TakeLettersBack) {
    Type("/");
    Type("b");
    Type("e");
    EXPECT_TRUE(Press(KeyCode::Backspace));
    EXPECT_EQ(Search.Text(), "b");
    EXPECT_EQ(Current(), "beta");
    EXPECT_TRUE(Press(KeyCode::Backspace));
    EXPECT_TRUE(Press(KeyCode::Backspace));
    EXPECT_EQ(Search.Text(), "");
}

TEST_F(QuickSearches, GoRoundInBothDirections) {
    Type("/");
    Type("b");
    std::vector<std::string> seen;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(Press(KeyCode::Down));
        seen.push_back(Current());
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"bank", "beta", "Band"}));
    seen.clear();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(Press(KeyCode::Up));
        seen.push_back(Current());
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"beta", "bank", "Band"}));
}

TEST_F(QuickSearches, StayOnTheOnlyMatch) {
    Type("/");
    Type("z");
    Press(KeyCode::Up);
    EXPECT_EQ(Current(), "zebra");
    Press(KeyCode::Down);
    EXPECT_EQ(Current(), "zebra");
}

TEST_F(QuickSearches, FindTheOneBeforeAlsoWhereTheCursorIsOnNone) {
    Type("/");
    Type("b");
    List.MoveCursorTo("zebra");
    Press(KeyCode::Up);
    EXPECT_EQ(Current(), "beta");
}

TEST_F(QuickSearches, StandStillWhereNoMatchIsLeft) {
    Type("/");
    Type("b");
    List.Take({.Place = "/srv", .Entries = {File("alpha", 1), File("zebra", 1)}});
    List.MoveCursorTo("alpha");
    EXPECT_TRUE(Press(KeyCode::Up));
    EXPECT_TRUE(Press(KeyCode::Down));
    EXPECT_EQ(Current(), "alpha");
}

TEST_F(QuickSearches, EndWithEnterAndEscape) {
    for (const KeyCode code : {KeyCode::Enter, KeyCode::Escape}) {
        Type("/");
        EXPECT_TRUE(Press(code));
        EXPECT_EQ(Search.Text(), std::nullopt);
        EXPECT_FALSE(Press(code));
    }
}

TEST_F(QuickSearches, EndWithAnyOtherKeyAndLeaveItToThePane) {
    Type("/");
    EXPECT_FALSE(Press(KeyCode::Tab));
    EXPECT_EQ(Search.Text(), std::nullopt);
    Type("/");
    EXPECT_FALSE(Press(KeyCode::Down));
    EXPECT_EQ(Search.Text(), std::nullopt);
}
