// Frames, bars and text that fits, as they come out on a screen.

#include "surface.h"

#include <string>

#include <gtest/gtest.h>

#include "memory_screen.h"

namespace {

constexpr bool kUtf8 = true;
constexpr bool kAscii = false;

class Surface : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    static std::string Frame(const Area& Where, std::string_view Title, bool bUtf8 = kUtf8) {
        MemoryScreen screen({Where.Columns, Where.Rows}, bUtf8);
        DrawFrame(screen, Where, Title, CellRole::Frame, CellRole::Title);
        return screen.Text();
    }

    static std::string Bar(int Columns, int Percent, bool bUtf8 = kUtf8) {
        MemoryScreen screen({Columns, 1}, bUtf8);
        DrawBar(screen, 0, 0, Columns, Percent);
        return screen.Row(0);
    }
};

void ExpectArea(const Area& Is, const Area& Wanted) {
    EXPECT_EQ(Is.Column, Wanted.Column);
    EXPECT_EQ(Is.Row, Wanted.Row);
    EXPECT_EQ(Is.Columns, Wanted.Columns);
    EXPECT_EQ(Is.Rows, Wanted.Rows);
}

} // namespace

TEST_F(Surface, PutsDialogsInTheMiddleAboveTheLastTwoLines) {
    ExpectArea(CenteredArea(MemoryScreen({80, 24}), 80, 12), {0, 5, 80, 12});
    ExpectArea(CenteredArea(MemoryScreen({200, 60}), 80, 16), {60, 21, 80, 16});
    ExpectArea(CenteredArea(MemoryScreen({61, 16}), 40, 15), {10, 0, 40, 15});
}

TEST_F(Surface, MakesDialogsAsSmallAsTheWindow) {
    ExpectArea(CenteredArea(MemoryScreen({61, 16}), 80, 30), {0, 0, 61, 16});
}

TEST_F(Surface, FillsAnArea) {
    MemoryScreen screen({6, 3});
    Fill(screen, {0, 0, 6, 3}, CellRole::Frame);
    screen.Put(0, 1, "abcdef", CellRole::Plain);
    Fill(screen, {2, 0, 3, 2}, CellRole::Dialog);
    EXPECT_EQ(screen.Row(1), "ab   f");
    EXPECT_EQ(screen.TextWithRole(CellRole::Dialog), "   |   ");
}

TEST_F(Surface, FramesWithATitleInTheMiddle) {
    EXPECT_EQ(Frame({0, 0, 40, 3}, "/home/u/Music"), "┌─────────── /home/u/Music ────────────┐\n"
                                                     "│                                      │\n"
                                                     "└──────────────────────────────────────┘\n");
    EXPECT_EQ(Frame({0, 0, 10, 2}, ""), "┌────────┐\n"
                                        "└────────┘\n");
}

TEST_F(Surface, FramesInAsciiWhereThereIsNothingElse) {
    EXPECT_EQ(Frame({0, 0, 12, 3}, "Jobs", kAscii), "+-- Jobs --+\n"
                                                    "|          |\n"
                                                    "+----------+\n");
}

TEST_F(Surface, ShortensATitleThatIsLongerThanTheFrame) {
    EXPECT_EQ(Frame({0, 0, 18, 2}, "/media/usb0/Backup"), "┌─ /med...ackup ─┐\n"
                                                          "└────────────────┘\n");
    EXPECT_EQ(Frame({0, 0, 6, 2}, "Jobs"), "┌────┐\n"
                                           "└────┘\n");
}

TEST_F(Surface, LeavesTheInsideOfAFrameAlone) {
    MemoryScreen screen({6, 3});
    screen.Put(0, 1, "abcdef", CellRole::Plain);
    DrawFrame(screen, {0, 0, 6, 3}, "", CellRole::Frame, CellRole::Title);
    EXPECT_EQ(screen.Row(1), "│bcde│");
    EXPECT_EQ(screen.TextWithRole(CellRole::Plain), "bcde");
}

TEST_F(Surface, GivesTheTitleItsRole) {
    MemoryScreen screen({20, 3});
    DrawFrame(screen, {0, 0, 20, 3}, "日本", CellRole::Frame, CellRole::Title);
    EXPECT_EQ(screen.TextWithRole(CellRole::Title), " 日本 ");
    EXPECT_EQ(screen.Row(0), "┌────── 日本 ──────┐");
}

TEST_F(Surface, DividesAFrame) {
    for (const bool bUtf8 : {kUtf8, kAscii}) {
        MemoryScreen screen({6, 3}, bUtf8);
        DrawFrame(screen, {0, 0, 6, 3}, "", CellRole::Frame, CellRole::Title);
        DrawDivider(screen, {0, 0, 6, 3}, 1, CellRole::Frame);
        EXPECT_EQ(screen.Row(1), bUtf8 ? "├────┤" : "+----+");
    }
}

TEST_F(Surface, FillsTextUpToItsColumns) {
    EXPECT_EQ(FitToColumns("abc", 5), "abc  ");
    EXPECT_EQ(FitToColumns("abc", 3), "abc");
    EXPECT_EQ(FitToTheRight("abc", 5), "  abc");
    EXPECT_EQ(FitToColumns("日本", 5), "日本 ");
}

TEST_F(Surface, LeavesOutTheEndOfLongText) {
    EXPECT_EQ(FitToColumns("long name", 5), "long~");
    EXPECT_EQ(FitToTheRight("long name", 5), "long~");
    EXPECT_EQ(FitToColumns("日本の音楽", 6), "日本~ ");
    EXPECT_EQ(FitToColumns("日本", 2), "~ ");
    EXPECT_EQ(FitToColumns("ab", 1), "~");
    EXPECT_EQ(FitToColumns("ab", 0), "");
}

TEST_F(Surface, ShowsHowFullABarIs) {
    EXPECT_EQ(Bar(13, 62), "████░░░░  62%");
    EXPECT_EQ(Bar(13, 0), "░░░░░░░░   0%");
    EXPECT_EQ(Bar(13, 100), "████████ 100%");
    EXPECT_EQ(Bar(13, 50, kAscii), "####....  50%");
}

TEST_F(Surface, NeverMakesABarLongerThanItsRoom) {
    EXPECT_EQ(Bar(13, 250), "████████ 100%");
    EXPECT_EQ(Bar(13, -1), "░░░░░░░░   0%");
}

TEST_F(Surface, GivesTheBarItsRoles) {
    MemoryScreen screen({13, 1});
    DrawBar(screen, 0, 0, 13, 62);
    EXPECT_EQ(screen.TextWithRole(CellRole::BarDone), "████");
    EXPECT_EQ(screen.TextWithRole(CellRole::BarLeft), "░░░░");
    EXPECT_EQ(screen.TextWithRole(CellRole::Dialog), "  62%");
}
