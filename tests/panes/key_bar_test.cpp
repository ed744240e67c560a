// The lines at the end of the window, and where they can be clicked.

#include "key_bar.h"

#include <gtest/gtest.h>

#include "memory_screen.h"

namespace {

constexpr bool kNeedsAttention = true;

class KeyBar : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }
};

std::string BarIn(TerminalSize Size) {
    MemoryScreen screen(Size);
    DrawKeyBar(screen, Size.Rows - 1);
    return screen.Row(Size.Rows - 1);
}

using StatusLine = KeyBar;

} // namespace

TEST_F(KeyBar, IsSpreadOverTheWidth) {
    EXPECT_EQ(BarIn({80, 24}),
              "1Help   2Rename 3View   4Edit   5Copy   6Move   7Mkdir  8Delete 9Jobs   10Quit");
    EXPECT_EQ(BarIn({200, 60}), "1Help               2Rename             3View               "
                                "4Edit               5Copy               6Move               "
                                "7Mkdir              8Delete             9Jobs               "
                                "10Quit");
}

TEST_F(KeyBar, HasShortLabelsInANarrowWindow) {
    EXPECT_EQ(BarIn({61, 16}), "1Help 2Ren  3View 4Edit 5Copy 6Move 7Dir  8Del  9Jobs 10Quit");
    EXPECT_EQ(BarIn({60, 16}), "1Help 2Ren  3View 4Edit 5Copy 6Move 7Dir  8Del  9Jobs 10Quit");
}

TEST_F(KeyBar, SetsTheNumbersApartFromTheLabels) {
    MemoryScreen screen({80, 24});
    DrawKeyBar(screen, 23);
    EXPECT_EQ(screen.TextWithRole(CellRole::KeyNumber), "1|2|3|4|5|6|7|8|9|10");
    EXPECT_EQ(screen.RoleAt(79, 23), CellRole::KeyLabel);
}

TEST_F(KeyBar, TellsWhichKeyIsClicked) {
    EXPECT_EQ(FunctionKeyAt(0, 80), 1);
    EXPECT_EQ(FunctionKeyAt(7, 80), 1);
    EXPECT_EQ(FunctionKeyAt(8, 80), 2);
    EXPECT_EQ(FunctionKeyAt(79, 80), 10);
    EXPECT_EQ(FunctionKeyAt(60, 61), 10);
    EXPECT_EQ(FunctionKeyAt(80, 80), std::nullopt);
}

TEST_F(StatusLine, FillsItsRow) {
    MemoryScreen screen({80, 24});
    DrawStatusLine(screen, 22, "Copied 2 item(s).", !kNeedsAttention);
    EXPECT_EQ(screen.Row(22), " Copied 2 item(s).");
    EXPECT_EQ(screen.RoleAt(79, 22), CellRole::Status);
}

TEST_F(StatusLine, StandsOutWhereItNeedsAttention) {
    MemoryScreen screen({80, 24});
    DrawStatusLine(screen, 22, "A job waits for an answer: F9", kNeedsAttention);
    EXPECT_EQ(screen.RoleAt(1, 22), CellRole::Warning);
}

TEST_F(StatusLine, IsCleanAndShorterInTheMiddleWhereItHasNoRoom) {
    MemoryScreen screen({60, 16});
    DrawStatusLine(screen, 14,
                   "Failed to create destination directory: "
                   "/media/usb0/new\nline: Permission denied",
                   kNeedsAttention);
    EXPECT_EQ(screen.Row(14), " Failed to create destinatio.../new?line: Permission denied");
}
