// What a bar looks like at every width.

#include "progress_bar.h"

#include <string>

#include <gtest/gtest.h>

#include "screen_text.h"

namespace {

class BarLook : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    static std::string Text(const ProgressBar& Bar, BarCells Cells, int Width) {
        return BarLine(Bar, Cells, Width).Text;
    }
    static std::string Blocks(double Fraction) {
        const int percent = static_cast<int>(Fraction * 100.0);
        return Text({"All  ", percent, Fraction}, BarCells::Blocks, 22);
    }
};

} // namespace

TEST_F(BarLook, IsAsciiWhereNothingElseShows) {
    EXPECT_EQ(Text({"All  ", 40, 0.4}, BarCells::Ascii, 22), "All  [####......] 40%");
    EXPECT_EQ(Text({"All  ", 49, 0.499}, BarCells::Ascii, 22), "All  [####......] 49%");
    EXPECT_EQ(Text({"All  ", 100, 1.0}, BarCells::Ascii, 22), "All  [##########] 100%");
}

TEST_F(BarLook, FillsItsCellsByEighths) {
    EXPECT_EQ(Blocks(0.0), "All  [          ] 0%");
    EXPECT_EQ(Blocks(0.0125), "All  [▏         ] 1%");
    EXPECT_EQ(Blocks(0.025), "All  [▎         ] 2%");
    EXPECT_EQ(Blocks(0.0375), "All  [▍         ] 3%");
    EXPECT_EQ(Blocks(0.05), "All  [▌         ] 5%");
    EXPECT_EQ(Blocks(0.0625), "All  [▋         ] 6%");
    EXPECT_EQ(Blocks(0.075), "All  [▊         ] 7%");
    EXPECT_EQ(Blocks(0.0875), "All  [▉         ] 8%");
    EXPECT_EQ(Blocks(0.1), "All  [█         ] 10%");
    EXPECT_EQ(Blocks(0.999), "All  [█████████▉] 99%");
    EXPECT_EQ(Blocks(1.0), "All  [██████████] 100%");
}

TEST_F(BarLook, AgreesWithItsPercentage) {
    EXPECT_EQ(Text({"All  ", 50, 0.2}, BarCells::Ascii, 22), "All  [#####.....] 50%");
    EXPECT_EQ(Text({"All  ", 99, 1.0}, BarCells::Ascii, 22), "All  [#########.] 99%");
    EXPECT_EQ(Text({"All  ", 100, 0.0}, BarCells::Ascii, 22), "All  [##########] 100%");
    EXPECT_EQ(Text({"All  ", 0, 7.0}, BarCells::Ascii, 22), "All  [..........] 0%");
    for (int percent = 0; percent <= 100; ++percent) {
        const ProgressBar bar{"All  ", percent, percent / 100.0};
        const std::string cells(static_cast<std::size_t>(percent), '#');
        EXPECT_EQ(Text(bar, BarCells::Ascii, 200).find(cells + (percent < 100 ? "." : "]")), 6U);
    }
}

TEST_F(BarLook, HasItsDonePartInAStyle) {
    const ScreenLine blocks = BarLine({"All  ", 15, 0.15}, BarCells::Blocks, 22);
    const std::string done = "█▌";
    EXPECT_EQ(blocks.Styles, (std::vector<StyledRange>{{6, 6 + done.size(), TextStyle::Bar}}));
    const ScreenLine ascii = BarLine({"All  ", 15, 0.15}, BarCells::Ascii, 22);
    EXPECT_EQ(ascii.Styles, (std::vector<StyledRange>{{6, 7, TextStyle::Bar}}));
}

TEST_F(BarLook, GrowsToAHundredCells) {
    EXPECT_EQ(Text({"All  ", 0, 0.0}, BarCells::Ascii, 112),
              "All  [" + std::string(100, '.') + "] 0%");
    EXPECT_EQ(Text({"All  ", 0, 0.0}, BarCells::Ascii, 111),
              "All  [" + std::string(99, '.') + "] 0%");
    EXPECT_EQ(Text({"All  ", 0, 0.0}, BarCells::Ascii, 500),
              "All  [" + std::string(100, '.') + "] 0%");
}

TEST_F(BarLook, LosesItsLabelThenItself) {
    EXPECT_EQ(Text({"All  ", 40, 0.4}, BarCells::Ascii, 21), "[#####.........] 40%");
    EXPECT_EQ(Text({"All  ", 40, 0.4}, BarCells::Ascii, 8), "[.] 40%");
    EXPECT_EQ(Text({"All  ", 40, 0.4}, BarCells::Ascii, 7), "40%");
}

TEST_F(BarLook, TakesTheColumnsThatItMay) {
    for (int width = 8; width < 150; ++width) {
        for (const BarCells cells : {BarCells::Ascii, BarCells::Blocks}) {
            EXPECT_LE(DisplayWidth(Text({"All  ", 100, 1.0}, cells, width)), width);
        }
    }
}
