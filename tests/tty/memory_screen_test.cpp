// What tests of drawing rely on.

#include "memory_screen.h"

#include <gtest/gtest.h>

#include "screen_text.h"

namespace {

class MemoryScreenTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    MemoryScreen Shown{{6, 2}};
};

} // namespace

TEST_F(MemoryScreenTest, CutsWhatDoesNotFitIntoTheRow) {
    Shown.Put(2, 0, "abcdefg", CellRole::Title);
    Shown.Put(3, 1, "日本", CellRole::Plain);
    EXPECT_EQ(Shown.Text(), "  abcd\n   日\n");
    EXPECT_EQ(Shown.TextWithRole(CellRole::Title), "abcd");
}

TEST_F(MemoryScreenTest, PutsMarksOnTheLetterBefore) {
    Shown.Put(0, 0, "e\u0301x", CellRole::Plain);
    Shown.Put(2, 0, "y", CellRole::Cursor);
    EXPECT_EQ(Shown.Row(0), "e\u0301xy");
    EXPECT_EQ(Shown.RoleAt(1, 0), CellRole::Plain);
    EXPECT_EQ(Shown.RoleAt(2, 0), CellRole::Cursor);
}

TEST_F(MemoryScreenTest, TakesAWideCharacterAwayWithItsHalf) {
    Shown.Put(0, 0, "日本語", CellRole::Plain);
    Shown.Put(1, 0, "x", CellRole::Plain);
    Shown.Put(4, 0, "y", CellRole::Plain);
    EXPECT_EQ(Shown.Row(0), " x本y");
    Shown.Put(1, 0, "音", CellRole::Plain);
    EXPECT_EQ(Shown.Row(0), " 音 y");
}

TEST_F(MemoryScreenTest, BeginsEachFrameWithNothing) {
    Shown.Put(0, 0, "x", CellRole::Title);
    Shown.ShowCursor(1, 1);
    Shown.Resize({3, 3});
    Shown.Erase();
    EXPECT_EQ(Shown.Text(), "\n\n\n");
    EXPECT_EQ(Shown.TextWithRole(CellRole::Title), "");
    EXPECT_FALSE(Shown.bCursor);
}
