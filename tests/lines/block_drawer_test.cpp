// What the drawer's bytes leave on a screen.

#include "block_drawer.h"

#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plain_screen.h"
#include "screen_text.h"

namespace {

using Texts = std::vector<std::string>;

constexpr TerminalSize kUsualSize{80, 24};

std::vector<ScreenLine> Lines(const Texts& Wanted) {
    std::vector<ScreenLine> lines;
    for (const std::string& text : Wanted) {
        lines.push_back({text});
    }
    return lines;
}

class BlockDrawing : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(EnsureUtf8Locale());
        Screen.Write("$ tarvane copy\r\n");
    }

    void Draw(const Texts& Wanted, TerminalSize Size = kUsualSize) {
        Screen.Write(Drawer.Draw(Lines(Wanted), Size));
    }

    Texts Below(const Texts& Wanted) const {
        Texts all = {"$ tarvane copy"};
        all.insert(all.end(), Wanted.begin(), Wanted.end());
        return all;
    }

    BlockDrawer Drawer;
    PlainScreen Screen{80, 24};
};

} // namespace

TEST_F(BlockDrawing, PutsTheBlockBelowWhatIsThere) {
    Draw({"one", "two", "three"});
    EXPECT_EQ(Screen.Text(), Below({"one", "two", "three"}));
}

TEST_F(BlockDrawing, LeavesTheCursorAtTheStartOfTheFirstLine) {
    Draw({"one", "two"});
    EXPECT_EQ(Screen.CursorLine(), 1U);
    EXPECT_EQ(Screen.CursorColumn(), 0U);
}

TEST_F(BlockDrawing, LeavesTheCursorWhereItIsWanted) {
    Screen.Write(Drawer.Draw(Lines({"one", "two", "three"}), kUsualSize, BlockCursor{1, "tw"}));
    EXPECT_EQ(Screen.Text(), Below({"one", "two", "three"}));
    EXPECT_EQ(Screen.CursorLine(), 2U);
    EXPECT_EQ(Screen.CursorColumn(), 2U);
}

TEST_F(BlockDrawing, ReplacesLinesInPlace) {
    Draw({"one", "longer", "three"});
    Draw({"one", "two", "three"});
    EXPECT_EQ(Screen.Text(), Below({"one", "two", "three"}));
    Draw({"ONE", "two", "THREE"});
    EXPECT_EQ(Screen.Text(), Below({"ONE", "two", "THREE"}));
}

TEST_F(BlockDrawing, ReplacesLinesFromAnyCursor) {
    Screen.Write(Drawer.Draw(Lines({"one", "two", "three"}), kUsualSize, BlockCursor{0, "on"}));
    Screen.Write(Drawer.Draw(Lines({"one", "2", "three"}), kUsualSize, BlockCursor{1, "2"}));
    EXPECT_EQ(Screen.Text(), Below({"one", "2", "three"}));
    EXPECT_EQ(Screen.CursorLine(), 2U);
    EXPECT_EQ(Screen.CursorColumn(), 1U);
    Draw({"1", "2", "3"});
    EXPECT_EQ(Screen.Text(), Below({"1", "2", "3"}));
}

TEST_F(BlockDrawing, GrowsAndShrinks) {
    Draw({"one"});
    Draw({"one", "two", "three"});
    EXPECT_EQ(Screen.Text(), Below({"one", "two", "three"}));
    Draw({"one", "two"});
    EXPECT_EQ(Screen.Text(), Below({"one", "two"}));
}

TEST_F(BlockDrawing, SendsNothingWhenNothingChanges) {
    Draw({"one", "two"});
    EXPECT_EQ(Drawer.Draw(Lines({"one", "two"}), kUsualSize), "");
}

TEST_F(BlockDrawing, SendsOnlyTheLinesThatChange) {
    Draw({"one", "two", "three"});
    EXPECT_EQ(Drawer.Draw(Lines({"one", "2", "three"}), kUsualSize),
              "\x1B[?7l\n\r2\x1B[K\x1B[1A\x1B[?7h\r");
}

TEST_F(BlockDrawing, TakesTheBlockAway) {
    Draw({"one", "two"});
    Screen.Write(Drawer.Erase(kUsualSize));
    EXPECT_EQ(Screen.Text(), Below({}));
    Screen.Write("Copied 2 item(s).\r\n");
    EXPECT_EQ(Screen.Text(), Below({"Copied 2 item(s)."}));
}

TEST_F(BlockDrawing, TakesNothingAwayWithoutABlock) {
    EXPECT_EQ(Drawer.Erase(kUsualSize), "");
    EXPECT_EQ(Drawer.Abandon(), "");
}

TEST_F(BlockDrawing, StartsAgainAfterTheBlockWasTakenAway) {
    Draw({"one", "two"});
    Screen.Write(Drawer.Erase(kUsualSize));
    Screen.Write("File exists\r\n");
    Draw({"one", "two"});
    EXPECT_EQ(Screen.Text(), Below({"File exists", "one", "two"}));
}

TEST_F(BlockDrawing, LeavesAnAbandonedBlockAlone) {
    Screen.Write(Drawer.Draw(Lines({"one", "two"}), kUsualSize, BlockCursor{0, ""}));
    Screen.Write(Drawer.Abandon());
    Draw({"three"});
    EXPECT_EQ(Screen.Text(), Below({"one", "two", "three"}));
}

TEST_F(BlockDrawing, LeavesNoRemnantsInANarrowerWindow) {
    Draw({std::string(79, 'a'), std::string(41, 'b'), std::string(79, 'c')});
    Screen.Resize(40, 24);
    Draw({"aaa", "bbb", "ccc"}, {40, 24});
    EXPECT_EQ(Screen.Text(), Below({"aaa", "bbb", "ccc"}));
}

// The terminal has been made narrower already when frames for wider windows still arrive.
TEST_F(BlockDrawing, LeavesNoRemnantsOfFramesThatComeTooLate) {
    Draw({std::string(79, 'a'), std::string(41, 'b'), std::string(79, 'c')});
    Screen.Resize(40, 24);
    Draw({std::string(79, 'A'), std::string(45, 'B'), std::string(79, 'c')});
    Draw({std::string(59, 'a'), std::string(20, 'a'), std::string(59, 'c')}, {60, 24});
    Draw({std::string(59, 'A'), std::string(20, 'A'), std::string(59, 'c')}, {60, 24});
    Draw({"aaa", "bbb", "ccc"}, {40, 24});
    EXPECT_EQ(Screen.Text(), Below({"aaa", "bbb", "ccc"}));
}

TEST_F(BlockDrawing, LeavesNoRemnantsOfLateFramesThatGoToTheRight) {
    Draw({std::string(79, 'a'), std::string(79, 'b')});
    Screen.Resize(40, 24);
    Draw({std::string(78, 'a') + "A", std::string(60, 'b') + "B" + std::string(18, 'b')});
    Draw({"aaa", "bbb"}, {40, 24});
    EXPECT_EQ(Screen.Text(), Below({"aaa", "bbb"}));
}

TEST_F(BlockDrawing, LeavesWhatIsAboveAloneWhereLinesAreCut) {
    Draw({std::string(79, 'a'), std::string(79, 'b')});
    Screen.ResizeAndCut(40, 24);
    Draw({"aaa", "bbb"}, {40, 24});
    EXPECT_EQ(Screen.Text(), Below({"aaa", "bbb"}));
}

TEST_F(BlockDrawing, LeavesNoRemnantsOfATextFieldInANarrowerWindow) {
    const std::string line(70, 'n');
    Screen.Write(Drawer.Draw(Lines({"question", line}), kUsualSize, BlockCursor{1, line}));
    Screen.Resize(30, 24);
    Screen.Write(Drawer.Erase({30, 24}));
    EXPECT_EQ(Screen.Text(), Below({}));
}

TEST_F(BlockDrawing, LeavesNoRemnantsInAWiderWindow) {
    Draw({"aaa", "bbb", "ccc"});
    Screen.Resize(120, 40);
    Draw({"aaa bbb", "ccc"}, {120, 40});
    EXPECT_EQ(Screen.Text(), Below({"aaa bbb", "ccc"}));
}

TEST_F(BlockDrawing, FillsAWindowOfOneRow) {
    PlainScreen row(80, 1);
    row.Write(Drawer.Draw(Lines({"13%"}), {80, 1}));
    row.Write(Drawer.Draw(Lines({"14%"}), {80, 1}));
    EXPECT_EQ(row.Text(), Texts{"14%"});
}

TEST_F(BlockDrawing, CountsTheRowsOfWideCharactersThatDoNotFit) {
    std::string wide;
    for (int i = 0; i < 10; ++i) {
        wide += "日";
    }
    // Two of them to each row of five columns.
    Drawer.Draw(Lines({wide, "x"}), kUsualSize, BlockCursor{1, {}});
    EXPECT_EQ(Drawer.Erase({5, 24}), "\x1B[5A\r \x1B[J\r\x1B[K");
}

TEST_F(BlockDrawing, DrawsStyles) {
    setenv("TERM", "xterm", 1);
    unsetenv("NO_COLOR");
    EXPECT_EQ(Drawer.Draw({{"careful", {{0, 7, TextStyle::Warning}}}}, kUsualSize),
              "\x1B[?7l\r\x1B[1;31mcareful\x1B[m\x1B[J\x1B[?7h\r");
    EXPECT_EQ(Drawer.Draw({{"careful", {{0, 1, TextStyle::Key}}}}, kUsualSize),
              "\x1B[?7l\r\x1B[1mc\x1B[mareful\x1B[?7h\r");
}
