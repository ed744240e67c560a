#include "rate_graph.h"

#include "memory_screen.h"
#include "screen_text.h"

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <string>

namespace {

using std::chrono::milliseconds;
using Rates = std::deque<std::uint64_t>;

class RateGraph : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    void Add(std::uint64_t Rate, milliseconds AfterBegin) { History.Add(Rate, Begin + AfterBegin); }

    // One sample in each of so many seconds, and one more that ends the last.
    void AddSeconds(const Rates& EachSecond) {
        milliseconds at{0};
        for (const std::uint64_t rate : EachSecond) {
            Add(rate, at);
            at += milliseconds(1000);
        }
        Add(0, at);
    }

    std::string Drawn(const Area& Where, bool bUtf8 = true) const {
        MemoryScreen screen({Where.Columns, Where.Rows}, bUtf8);
        DrawRateGraph(screen, Where, History);
        return screen.Text();
    }

    const RateHistory::TimePoint Begin{};
    RateHistory History;
};

} // namespace

TEST_F(RateGraph, TakesTheMeanOfEachWholeSecond) {
    Add(100, milliseconds(0));
    Add(300, milliseconds(900));
    EXPECT_EQ(History.Seconds(), Rates{});
    Add(50, milliseconds(1000));
    EXPECT_EQ(History.Seconds(), Rates{200});
    Add(0, milliseconds(2500));
    EXPECT_EQ(History.Seconds(), (Rates{200, 50}));
}

TEST_F(RateGraph, GoesOnThroughASecondThatNoFrameCameIn) {
    Add(100, milliseconds(999));
    Add(40, milliseconds(2999));
    Add(40, milliseconds(3999));
    EXPECT_EQ(History.Seconds(), (Rates{100, 100, 40}));
}

TEST_F(RateGraph, FallsToNothingWhileTheProgramIsStopped) {
    Add(100, milliseconds(0));
    Add(40, milliseconds(4000));
    EXPECT_EQ(History.Seconds(), (Rates{100, 0, 0, 0}));
}

TEST_F(RateGraph, RemembersAMinute) {
    Add(100, milliseconds(0));
    Add(40, std::chrono::hours(1));
    Add(40, std::chrono::hours(1) + milliseconds(1000));
    Rates minute(RateHistory::kSeconds - 1, 0);
    minute.push_back(40);
    EXPECT_EQ(History.Seconds(), minute);
}

TEST_F(RateGraph, DrawsEighthsOfARow) {
    AddSeconds({0, 1024, 2048, 3072, 4096, 5120, 6144, 7168, 8192});
    EXPECT_EQ(Drawn({0, 0, 30, 1}), "          ▁▂▃▄▅▆▇█ 8.0 KB/s\n");
}

TEST_F(RateGraph, DrawsThreeRows) {
    AddSeconds({1, 1024, 2048, 3072, 2560});
    EXPECT_EQ(Drawn({0, 0, 20, 3}), "      █▄ 3.0 KB/s\n"
                                    "     ███\n"
                                    "   ▁████\n");
}

TEST_F(RateGraph, DrawsInAsciiElsewhere) {
    const bool bUtf8 = false;
    AddSeconds({1, 1024, 2048, 3072, 2560});
    EXPECT_EQ(Drawn({0, 0, 20, 2}, bUtf8), "     .#: 3.0 KB/s\n"
                                           "   .:###\n");
}

TEST_F(RateGraph, DrawsTheLatestSecondsWhereThereIsLittleRoom) {
    AddSeconds({9000, 100, 50, 100});
    EXPECT_EQ(Drawn({0, 0, 15, 1}), "█▄█ 100 B/s\n");
}

TEST_F(RateGraph, DrawsNoMoreThanAMinute) {
    AddSeconds(Rates(100, 1));
    std::string minute;
    for (std::size_t i = 0; i < RateHistory::kSeconds; ++i) {
        minute += "█";
    }
    EXPECT_EQ(Drawn({0, 0, 200, 1}), minute + " 1 B/s\n");
}

TEST_F(RateGraph, DrawsNothingWithoutARate) {
    AddSeconds({0, 0});
    EXPECT_EQ(Drawn({0, 0, 40, 2}), "\n\n");
}

TEST_F(RateGraph, StaysOutOfWhatIsTooNarrow) {
    AddSeconds({100});
    EXPECT_EQ(Drawn({0, 0, 12, 1}), "\n");
}
