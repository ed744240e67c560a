#include "live_block.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "progress_texts.h"
#include "screen_text.h"

namespace {

using Texts = std::vector<std::string>;

constexpr TerminalSize kUsualSize{80, 24};

class LiveBlockLayout : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(EnsureUtf8Locale());
        Snapshot.StageText = "Stage: Copying | Copying items";
        Snapshot.PathText = "Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore "
                            "with the whole orchestra.flac";
        Snapshot.OverallText = "Overall 1.5 GB / 12.0 GB | Items 3 / 12";
        Snapshot.IoText = "Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52";
        Snapshot.HintText =
            "Press Esc to cancel. Partial destination files may remain after a cancel.";
        Snapshot.FileProgress01 = 0.62;
        Snapshot.CurrentFileTotalBytes = 41037004;
        Snapshot.CurrentFileDoneBytes = 25480396;
        Snapshot.OverallProgress01 = 0.134;
        Claims.Percent = 13;
    }

    static Texts TextsOf(const std::vector<ScreenLine>& Lines) {
        Texts texts;
        for (const ScreenLine& line : Lines) {
            texts.push_back(line.Text);
        }
        return texts;
    }

    Texts Shown(TerminalSize Size = kUsualSize, BarCells Cells = BarCells::Ascii) const {
        return TextsOf(LiveBlock(Cells).Lines(Snapshot, Claims, Size));
    }

    TarvaneTransferUiSnapshot Snapshot;
    ProgressClaims Claims;
};

} // namespace

TEST_F(LiveBlockLayout, ShowsAllTextsWholeAt80Columns) {
    EXPECT_EQ(Shown(), (Texts{
                           "Stage: Copying | Copying items",
                           ("Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore "
                            "with the who"),
                           "le orchestra.flac",
                           "Overall 1.5 GB / 12.0 GB | Items 3 / 12",
                           ("All  [########............................................."
                            "..............] 13%"),
                           ("File [#########################################............"
                            "..............] 62%"),
                           "Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52",
                           ("Press Esc to cancel. Partial destination files may remain after a "
                            "cancel."),
                       }));
}

TEST_F(LiveBlockLayout, ShowsAllInAWideWindowWithBarsOfAHundredCells) {
    std::string all = "█████████████▍";
    all.resize(all.size() + 86, ' ');
    std::string file = "██████████████████████████████████████████████████████████████";
    file.resize(file.size() + 38, ' ');
    EXPECT_EQ(Shown({200, 50}, BarCells::Blocks),
              (Texts{
                  "Stage: Copying | Copying items",
                  Snapshot.PathText,
                  "Overall 1.5 GB / 12.0 GB | Items 3 / 12",
                  "All  [" + all + "] 13%",
                  "File [" + file + "] 62%",
                  "Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52",
                  "Press Esc to cancel. Partial destination files may remain after a cancel.",
              }));
}

TEST_F(LiveBlockLayout, StaysAsHighAsTheWidestPath) {
    LiveBlock block(BarCells::Ascii);
    Snapshot.PathText = "Current: /short";
    EXPECT_EQ(block.Lines(Snapshot, Claims, kUsualSize).size(), 7U);
    Snapshot.PathText = "Current: " + std::string(88, 'p');
    const std::size_t height = block.Lines(Snapshot, Claims, kUsualSize).size();
    EXPECT_EQ(height, 8U);
    Snapshot.PathText = "Current: /short";
    const Texts shown = TextsOf(block.Lines(Snapshot, Claims, kUsualSize));
    EXPECT_EQ(shown.size(), height);
    EXPECT_EQ(shown[1], "Current: /short");
    EXPECT_EQ(shown[2], "");
    EXPECT_EQ(block.Lines(Snapshot, Claims, {100, 24}).size(), 7U);
}

TEST_F(LiveBlockLayout, ShowsTheLongestPathOnOneLineOf98) {
    Snapshot.PathText = "Current: " + std::string(88, 'p');
    EXPECT_EQ(Shown({98, 24})[1], Snapshot.PathText);
}

TEST_F(LiveBlockLayout, WrapsTextsAtWordsInANarrowWindow) {
    const Texts shown = Shown({60, 24});
    EXPECT_EQ(shown[shown.size() - 2], "Press Esc to cancel. Partial destination files may remain");
    EXPECT_EQ(shown.back(), "after a cancel.");
}

TEST_F(LiveBlockLayout, DropsTheFileBarAndTheHintFirst) {
    EXPECT_EQ(Shown({40, 10}), (Texts{
                                   "Stage: Copying | Copying items",
                                   "Current: /home/u/Music/Live/2024-02-11 ",
                                   "Stadthalle (.../07 - Encore with the wh",
                                   "ole orchestra.flac",
                                   "Overall 1.5 GB / 12.0 GB | Items 3 / 12",
                                   "All  [###........................] 13%",
                                   "Rate 6.0 MB/s | Spent 04:16 | Remaining",
                                   "29:52",
                               }));
}

TEST_F(LiveBlockLayout, KeepsTheBarInOneRow) {
    EXPECT_EQ(Shown({40, 1}), Texts{"All  [###........................] 13%"});
    EXPECT_EQ(Shown({12, 1}), Texts{"[....] 13%"});
    EXPECT_EQ(Shown({4, 1}), Texts{"13%"});
    EXPECT_EQ(Shown({1, 1}), Texts{"13%"});
}

TEST_F(LiveBlockLayout, NeverExceedsTheWindow) {
    Claims.StalledSeconds = 12;
    Claims.bMoreThanCounted = true;
    for (int columns = 8; columns < 120; ++columns) {
        for (int rows = 1; rows < 30; ++rows) {
            const Texts shown = Shown({columns, rows}, BarCells::Blocks);
            EXPECT_LE(shown.size(), static_cast<std::size_t>(rows));
            for (const std::string& text : shown) {
                EXPECT_LT(DisplayWidth(text), columns);
            }
        }
    }
}

TEST_F(LiveBlockLayout, LetsAStalledJobStandOut) {
    Claims.StalledSeconds = 12;
    const ScreenLine line = LiveBlock(BarCells::Ascii).Lines(Snapshot, Claims, kUsualSize)[7];
    const std::string text = StalledText(Claims);
    EXPECT_EQ(line, (ScreenLine{text, {{0, text.size(), TextStyle::Warning}}}));
}

TEST_F(LiveBlockLayout, SaysThatMoreWasCopiedThanCounted) {
    Claims.bMoreThanCounted = true;
    EXPECT_EQ(Shown()[7], WrongTotalsText(Claims));
}

TEST_F(LiveBlockLayout, CleansTextsAfterTheyHaveBeenCut) {
    // Cut by the engine inside a character on both sides of its dots.
    Snapshot.PathText = "Current: /x/\xE6\x97...\xA5\x1B[2Jy";
    EXPECT_EQ(Shown()[1], "Current: /x/\uFFFD\uFFFD...\uFFFD?[2Jy");
}

TEST_F(LiveBlockLayout, GivesTheHintOnlyWhileTheJobRuns) {
    Snapshot.bFinished = true;
    EXPECT_EQ(Shown().back(), Snapshot.IoText);
}

TEST_F(LiveBlockLayout, KeepsTheFileBelow100WhileTheJobRuns) {
    Snapshot.FileProgress01 = 1.0;
    const auto fileBar = [this] { return Shown({31, 24}, BarCells::Blocks)[8]; };
    EXPECT_EQ(fileBar(), "File [█████████████████▉] 99%");
    Snapshot.bFinished = true;
    Snapshot.bSucceeded = true;
    EXPECT_EQ(fileBar(), "File [██████████████████] 100%");
}

TEST_F(LiveBlockLayout, ShowsNoMoreOfAnEmptyFileThanOfTheWhole) {
    Snapshot.CurrentFileTotalBytes = 0;
    Snapshot.FileProgress01 = 1.0;
    EXPECT_EQ(Shown({31, 24})[8], "File [##................] 13%");
}

TEST(BlockParts, GoInTheOrderOfTheirImportance) {
    const std::vector<BlockPart> parts = {{2, {{"a"}, {"b"}}}, {1, {{"c"}}}, {3, {{"d"}}}};
    const auto textsIn = [&parts](int Rows) {
        Texts texts;
        for (const ScreenLine& line : FitToRows(parts, Rows)) {
            texts.push_back(line.Text);
        }
        return texts;
    };
    EXPECT_EQ(textsIn(4), (Texts{"a", "b", "c", "d"}));
    EXPECT_EQ(textsIn(3), (Texts{"a", "b", "d"}));
    EXPECT_EQ(textsIn(2), Texts{"d"});
    EXPECT_EQ(textsIn(0), Texts{"d"});
}

TEST(BlockParts, AreCutWhenTheLastOneIsTooLong) {
    EXPECT_EQ(FitToRows({{1, {{"a"}, {"b"}, {"c"}}}}, 2), (std::vector<ScreenLine>{{"a"}, {"b"}}));
}
