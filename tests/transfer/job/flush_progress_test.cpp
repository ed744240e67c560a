// What a flush says about how far it is. The kernel's figures are those of the test. Needs root for
// the mounts.

#include "flusher.h"

#include "fake_steady_clock.h"
#include "fake_syncfs.h"
#include "file_tree.h"
#include "own_mount_namespace.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kKilobyte = 1024;

class FlushProgressTest : public testing::Test {
protected:
    FlushProgressTest() { Fake.Syncfs = FakeSyncfs::NeverEnd; }

    void SetPending(std::uint64_t DirtyKilobytes, std::uint64_t WritebackKilobytes) {
        WriteFile(Room / "meminfo",
                  "MemTotal:       24684092 kB\nHugePages_Total:       0\nDirty:  " +
                      std::to_string(DirtyKilobytes) + " kB\nWriteback:  " +
                      std::to_string(WritebackKilobytes) + " kB\nWritebackTmp: 77 kB\n");
    }
    void SetWritten(const fs::path& Device, std::uint64_t Kilobytes) {
        WriteFile(Device / "stat", "1 2 3 4 5 6 " + std::to_string(2 * Kilobytes) + " 8 9\n");
    }
    ScopedMount Bound(const fs::path& Where) {
        SetPending(0, 0);
        return BindFile(Room / "meminfo", Where);
    }
    fs::path DescribeDeviceOf(const ScopedMount& Disk) {
        struct stat status {};
        ::stat(Disk.Path().c_str(), &status);
        const fs::path device = Room / ("device" + std::to_string(status.st_dev));
        fs::create_directory(device);
        LetShareDevice(Disk, device);
        SetWritten(device, 50);
        return device;
    }
    void LetShareDevice(const ScopedMount& Disk, const fs::path& Device) {
        struct stat status {};
        ::stat(Disk.Path().c_str(), &status);
        fs::create_directory_symlink(Device,
                                     Devices.Path() / (std::to_string(major(status.st_dev)) + ":" +
                                                       std::to_string(minor(status.st_dev))));
    }

    const OwnMountNamespace Namespace;
    TemporaryDirectory Room;
    FakeSyncfs Fake;
    FakeSteadyClock Clock;
    const ScopedMount Network{MountTmpfs(Room / "network", "size=1m")};
    const ScopedMount Stick{MountTmpfs(Room / "stick", "size=1m")};
    const ScopedMount Devices{MountTmpfs("/sys/dev/block", "size=1m")};
    const ScopedMount Meminfo{Bound("/proc/meminfo")};
};

TEST_F(FlushProgressTest, CountsDownWhatThePageCacheHoldsWhereThereIsNoDevice) {
    Flusher watch({Network.Path()});
    SetPending(900, 100);
    watch.Start(1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().RemainingBytes, 1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().BytesPerSecond, 0U);
    Clock.Advance(std::chrono::seconds(1));
    SetPending(100, 300);
    const FlushProgress progress = watch.Poll();
    EXPECT_FALSE(progress.bFinished);
    EXPECT_EQ(progress.RemainingBytes, 400 * kKilobyte);
    EXPECT_EQ(progress.BytesPerSecond, 600 * kKilobyte);
}

TEST_F(FlushProgressTest, CountsWhatTheDeviceHasWritten) {
    const fs::path device = DescribeDeviceOf(Stick);
    Flusher watch({Stick.Path()});
    SetPending(228000, 0);
    watch.Start(1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().RemainingBytes, 1000 * kKilobyte);
    Clock.Advance(std::chrono::seconds(2));
    SetWritten(device, 50 + 800);
    const FlushProgress progress = watch.Poll();
    EXPECT_EQ(progress.RemainingBytes, 200 * kKilobyte);
    EXPECT_EQ(progress.BytesPerSecond, 400 * kKilobyte);
}

TEST_F(FlushProgressTest, CountsWhatTheDeviceHasWrittenDuringTheJob) {
    const fs::path device = DescribeDeviceOf(Stick);
    Flusher watch({Stick.Path()});
    SetPending(228000, 0);
    SetWritten(device, 50 + 700);
    watch.Start(1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().RemainingBytes, 300 * kKilobyte);
}

TEST_F(FlushProgressTest, SaysNoNumberOnceTheDeviceHasWrittenThatMuch) {
    const fs::path device = DescribeDeviceOf(Stick);
    Flusher watch({Stick.Path()});
    SetPending(228000, 0);
    watch.Start(1000 * kKilobyte);
    SetWritten(device, 50 + 3000);
    const FlushProgress progress = watch.Poll();
    EXPECT_FALSE(progress.bFinished);
    EXPECT_EQ(progress.RemainingBytes, std::nullopt);
}

TEST_F(FlushProgressTest, CountsADeviceOfTwoFileSystemsOnce) {
    const fs::path device = DescribeDeviceOf(Stick);
    LetShareDevice(Network, device);
    Flusher watch({Stick.Path(), Network.Path()});
    SetPending(228000, 0);
    watch.Start(1000 * kKilobyte);
    SetWritten(device, 50 + 400);
    EXPECT_EQ(watch.Poll().RemainingBytes, 600 * kKilobyte);
}

TEST_F(FlushProgressTest, NeverSaysMoreThanWasCopied) {
    Flusher watch({Network.Path()});
    SetPending(228000, 0);
    watch.Start(1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().RemainingBytes, 1000 * kKilobyte);
}

TEST_F(FlushProgressTest, NeverSaysMoreThanThePageCacheHolds) {
    DescribeDeviceOf(Stick);
    Flusher watch({Stick.Path()});
    SetPending(300, 0);
    watch.Start(1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().RemainingBytes, 300 * kKilobyte);
}

TEST_F(FlushProgressTest, NeverRises) {
    DescribeDeviceOf(Stick);
    Flusher watch({Stick.Path()});
    SetPending(300, 0);
    watch.Start(1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().RemainingBytes, 300 * kKilobyte);
    SetPending(5000, 0);
    EXPECT_EQ(watch.Poll().RemainingBytes, 300 * kKilobyte);
}

TEST_F(FlushProgressTest, TellsTheRateOfTheLastSeconds) {
    const fs::path device = DescribeDeviceOf(Stick);
    Flusher watch({Stick.Path()});
    SetPending(100000, 0);
    watch.Start(100000 * kKilobyte);
    watch.Poll();
    Clock.Advance(std::chrono::seconds(10));
    SetWritten(device, 50 + 10000);
    watch.Poll();
    Clock.Advance(std::chrono::seconds(2));
    SetWritten(device, 50 + 10200);
    EXPECT_EQ(watch.Poll().BytesPerSecond, 100 * kKilobyte);
}

TEST_F(FlushProgressTest, KnowsOnlyWhatWasCopiedWhereTheKernelTellsNothing) {
    WriteFile(Room / "meminfo", "");
    Flusher watch({Network.Path()});
    watch.Start(1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().RemainingBytes, 1000 * kKilobyte);
    EXPECT_EQ(watch.Poll().BytesPerSecond, 0U);
}

} // namespace
