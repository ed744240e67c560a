// How many bytes the frames of a busy job take.

#include "live_block.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "block_drawer.h"
#include "screen_text.h"

namespace {

constexpr int kFramesPerSecond = 10;
constexpr int kFrames = 200;

class LiveBlockBytes : public testing::TestWithParam<TerminalSize> {
protected:
    void SetUp() override {
        ASSERT_TRUE(EnsureUtf8Locale());
        setenv("TERM", "xterm", 1);
        unsetenv("NO_COLOR");
    }

    // Draws a job of which PathOfFrame tells the current file.
    template <typename PathFunction>
    std::size_t BytesPerSecond(PathFunction PathOfFrame) {
        std::size_t bytes = 0;
        for (int frame = 0; frame <= kFrames; ++frame) {
            const std::size_t frameBytes = DrawFrame(frame, PathOfFrame(frame));
            EXPECT_GT(frameBytes, 40U);
            bytes += frame == 0 ? 0 : frameBytes;
        }
        return bytes * kFramesPerSecond / kFrames;
    }

private:
    std::size_t DrawFrame(int Frame, const std::string& Path) {
        TarvaneTransferUiSnapshot snapshot;
        snapshot.StageText = "Stage: Copying | Copying items";
        snapshot.PathText = "Current: " + Path;
        snapshot.OverallText = "Overall 1000." + std::to_string(Frame % 10) +
                               " MB / 1023.9 GB | Items " + std::to_string(100000 + Frame * 37) +
                               " / 250000";
        snapshot.IoText =
            "Rate 106." + std::to_string(Frame % 10) + " MB/s | Spent 04:16 | Remaining 1:29:52";
        snapshot.HintText =
            "Press Esc to cancel. Partial destination files may remain after a cancel.";
        snapshot.OverallProgress01 = 0.4 + Frame / 2000.0;
        // Of another file each time.
        snapshot.FileProgress01 = static_cast<double>(Frame * 37 % 100) / 100.0;
        snapshot.CurrentFileTotalBytes = 1000;
        ProgressClaims claims;
        claims.Percent = 40 + Frame / 20;
        return Drawer.Draw(Block.Lines(snapshot, claims, GetParam()), GetParam()).size();
    }

    LiveBlock Block{BarCells::Blocks};
    BlockDrawer Drawer;
};

INSTANTIATE_TEST_SUITE_P(Windows, LiveBlockBytes,
                         testing::Values(TerminalSize{80, 24}, TerminalSize{40, 10},
                                         TerminalSize{200, 50}));

} // namespace

TEST_P(LiveBlockBytes, AreLessThan3000ASecondForFilesBesideEachOther) {
    const std::size_t bytes = BytesPerSecond([](int Frame) {
        return "/home/u/Music/Live/2024-02-11 Stadthalle (...song number " +
               std::to_string(100 + Frame) + " of the whole evening.flac";
    });
    EXPECT_LT(bytes, 3000U);
    RecordProperty("BytesPerSecond", static_cast<int>(bytes));
}

// As long as the engine makes them, or short, and with nothing in common.
TEST_P(LiveBlockBytes, AreLessThan3000ASecondForFilesAllOverTheDisk) {
    const std::size_t bytes = BytesPerSecond([](int Frame) {
        const std::size_t length = Frame % 2 == 0 ? 87 : 20;
        return "/" + std::string(length, static_cast<char>('a' + Frame % 26));
    });
    EXPECT_LT(bytes, 3000U);
    RecordProperty("BytesPerSecond", static_cast<int>(bytes));
}
