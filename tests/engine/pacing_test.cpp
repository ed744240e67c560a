// The rate at which a file is written to removable media. Needs root for its mounts.

#include "engine_source.h"

#include "fake_sleep.h"
#include "fake_steady_clock.h"
#include "mounts.h"
#include "transfer_fixture.h"

#include <numeric>

namespace {

using Policy = TarvaneTransferConflictPolicy;

constexpr std::int64_t kSecond = 1000000000;
// What one block of 262144 bytes may take: a 24th of a second.
constexpr std::int64_t kBlockTime = kSecond / 24;

class Pacing : public TransferTest {
protected:
    void Copy(std::size_t Size) {
        const std::string bytes = PatternBytes(Size);
        WriteFile(Directory / "source", bytes);
        const fs::path target = Disk.Path() / "target";
        EXPECT_EQ(
            CopyFileWithProgress(Directory / "source", target, Job, Policy::Ask, kCopy, Message),
            TransferCopyResult::Succeeded);
        EXPECT_EQ(ReadFile(target), bytes);
        EXPECT_EQ(DoneBy(Job), (Counted{1, Size}));
    }

    RemovableDisk Disk{Directory.Path(), "1\n"};
};

// The only test here that takes its time.
TEST_F(Pacing, TakesAtLeastTwoSecondsForTwelveMebibytes) {
    const auto started = std::chrono::steady_clock::now();
    Copy(12582912);
    EXPECT_GE(std::chrono::steady_clock::now() - started,
              std::chrono::nanoseconds(2 * kSecond - 1));
}

TEST_F(Pacing, IsLeftOutWhereTheDeviceIsNotRemovable) {
    Disk.SetAttribute("0\n");
    const FakeSleep sleep;
    Copy(12582912);
    EXPECT_EQ(sleep.Waits(), std::vector<std::int64_t>{});
}

TEST_F(Pacing, WaitsAfterEachBlockForWhatIsMissingToTheRate) {
    FakeSteadyClock clock;
    const FakeSleep sleep([&](std::int64_t nanoseconds) {
        clock.Advance(std::chrono::nanoseconds(nanoseconds));
        return FakeSleep::Ending{};
    });
    Copy(12582912);
    ASSERT_EQ(sleep.Waits().size(), 48U);
    for (const std::int64_t wait : sleep.Waits()) {
        EXPECT_NEAR(static_cast<double>(wait), static_cast<double>(kBlockTime), 1.0);
    }
    const std::int64_t total =
        std::accumulate(sleep.Waits().begin(), sleep.Waits().end(), std::int64_t{0});
    EXPECT_NEAR(static_cast<double>(total), 2.0 * kSecond, 1.0);
}

TEST_F(Pacing, TakesTheTimeOfTheWritesOff) {
    FakeSteadyClock clock;
    constexpr std::int64_t tenMilliseconds = 10000000;
    // Each sleep lasts longer than asked for, which the next wait makes up for.
    const FakeSleep sleep([&](std::int64_t nanoseconds) {
        clock.Advance(std::chrono::nanoseconds(nanoseconds + tenMilliseconds));
        return FakeSleep::Ending{};
    });
    Copy(3 * kTransferBufferBytes);
    ASSERT_EQ(sleep.Waits().size(), 3U);
    EXPECT_NEAR(static_cast<double>(sleep.Waits()[0]), kBlockTime, 1.0);
    EXPECT_NEAR(static_cast<double>(sleep.Waits()[1]), kBlockTime - tenMilliseconds, 1.0);
    EXPECT_NEAR(static_cast<double>(sleep.Waits()[2]), kBlockTime - tenMilliseconds, 1.0);
}

TEST_F(Pacing, CountsAShortLastBlockByItsBytes) {
    FakeSteadyClock clock;
    const FakeSleep sleep([&](std::int64_t nanoseconds) {
        clock.Advance(std::chrono::nanoseconds(nanoseconds));
        return FakeSleep::Ending{};
    });
    Copy(kTransferBufferBytes + kTransferBufferBytes / 2);
    ASSERT_EQ(sleep.Waits().size(), 2U);
    EXPECT_NEAR(static_cast<double>(sleep.Waits()[1]), kBlockTime / 2.0, 1.0);
}

TEST_F(Pacing, DoesNotSleepAfterASlowStretchUntilTheAverageIsBack) {
    FakeSteadyClock clock;
    std::int64_t stretch = 3 * kBlockTime + kBlockTime / 2;
    const FakeSleep sleep([&](std::int64_t nanoseconds) {
        clock.Advance(std::chrono::nanoseconds(nanoseconds + stretch));
        stretch = 0;
        return FakeSleep::Ending{};
    });
    Copy(6 * kTransferBufferBytes);
    // Blocks 2 to 4 are late and go on at once; block 5 has half of its time left.
    ASSERT_EQ(sleep.Waits().size(), 3U);
    EXPECT_NEAR(static_cast<double>(sleep.Waits()[1]), kBlockTime / 2.0, 4.0);
    EXPECT_NEAR(static_cast<double>(sleep.Waits()[2]), kBlockTime, 4.0);
}

TEST_F(Pacing, SleepsTheRestAfterASignal) {
    FakeSteadyClock clock;
    int calls = 0;
    const FakeSleep sleep([&](std::int64_t nanoseconds) {
        clock.Advance(std::chrono::nanoseconds(nanoseconds / 2));
        ++calls;
        return calls < 3 ? FakeSleep::Ending{EINTR, nanoseconds / 2} : FakeSleep::Ending{};
    });
    Copy(kTransferBufferBytes);
    ASSERT_EQ(sleep.Waits().size(), 3U);
    EXPECT_EQ(sleep.Waits()[1], sleep.Waits()[0] / 2);
    EXPECT_EQ(sleep.Waits()[2], sleep.Waits()[1] / 2);
}

TEST_F(Pacing, GoesOnAfterASleepThatFails) {
    const FakeSteadyClock clock;
    const FakeSleep sleep([](std::int64_t nanoseconds) {
        return FakeSleep::Ending{EINVAL, nanoseconds};
    });
    Copy(3 * kTransferBufferBytes);
    EXPECT_EQ(sleep.Waits().size(), 3U);
}

// Time stands still here, so each wait is the whole time since the start of the file.
TEST_F(Pacing, HasNoUpperBoundOnOneSleep) {
    const FakeSteadyClock clock;
    const FakeSleep sleep;
    Copy(72 * kTransferBufferBytes);
    ASSERT_EQ(sleep.Waits().size(), 72U);
    EXPECT_EQ(sleep.Waits()[23], kSecond);
    EXPECT_NEAR(static_cast<double>(sleep.Waits()[46]), 47.0 * kSecond / 24, 1.0);
    EXPECT_EQ(sleep.Waits()[71], 3 * kSecond);
}

TEST_F(Pacing, StartsAnewWithEachFile) {
    FakeSteadyClock clock;
    const FakeSleep sleep;
    Copy(kTransferBufferBytes);
    fs::remove(Disk.Path() / "target");
    clock.Advance(std::chrono::hours(1));
    WriteFile(Directory / "second", PatternBytes(kTransferBufferBytes));
    EXPECT_EQ(CopyFileWithProgress(Directory / "second", Disk.Path() / "target", Job, Policy::Ask,
                                   kCopy, Message),
              TransferCopyResult::Succeeded);
    ASSERT_EQ(sleep.Waits().size(), 2U);
    EXPECT_EQ(sleep.Waits()[1], sleep.Waits()[0]);
}

} // namespace
