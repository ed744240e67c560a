// How windows of all sizes are divided.

#include "panes_layout.h"

#include <gtest/gtest.h>

#include "memory_screen.h"

namespace {

// Row, column, columns and rows of both panes, then the two lines below them.
std::vector<int> Divided(TerminalSize Window) {
    const std::optional<PanesLayout> layout = LayOutPanes(Window);
    if (!layout) {
        return {};
    }
    std::vector<int> numbers;
    for (const Area& area : {layout->Left, layout->Right}) {
        numbers.insert(numbers.end(), {area.Row, area.Column, area.Columns, area.Rows});
    }
    numbers.insert(numbers.end(), {layout->StatusRow, layout->KeyRow});
    return numbers;
}

using Numbers = std::vector<int>;

} // namespace

TEST(PanesLayout, GivesEachPaneHalfOfTheWindow) {
    EXPECT_EQ(Divided({80, 24}), (Numbers{0, 0, 40, 22, 0, 40, 40, 22, 22, 23}));
    EXPECT_EQ(Divided({200, 60}), (Numbers{0, 0, 100, 58, 0, 100, 100, 58, 58, 59}));
}

TEST(PanesLayout, GivesTheOddColumnToTheRightPane) {
    EXPECT_EQ(Divided({61, 16}), (Numbers{0, 0, 30, 14, 0, 30, 31, 14, 14, 15}));
}

TEST(PanesLayout, RefusesWindowsThatAreTooSmall) {
    EXPECT_NE(Divided({60, 16}), Numbers{});
    EXPECT_EQ(Divided({59, 16}), Numbers{});
    EXPECT_EQ(Divided({60, 15}), Numbers{});
}

TEST(PanesLayout, SaysWhichSizeIsNeeded) {
    MemoryScreen screen({59, 15});
    DrawTooSmall(screen);
    EXPECT_EQ(screen.Row(0), "Terminal too small (60x16 needed)");
}

TEST(PanesLayout, SaysSoAsFarAsThereIsRoom) {
    MemoryScreen screen({17, 1});
    DrawTooSmall(screen);
    EXPECT_EQ(screen.Row(0), "Terminal too smal");
}
