// Pushing the page cache to the disk: how it ends. It runs in a process of its own. Needs root for
// the mounts.

#include "flusher.h"

#include "becomes_true.h"
#include "block_device.h"
#include "child_processes.h"
#include "fake_syncfs.h"
#include "file_tree.h"
#include "mounts.h"
#include "no_processes_left.h"
#include "owned_descriptor.h"
#include "signals_blocked.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <linux/fs.h>
#include <map>
#include <string>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMegabyte = 1048576;
constexpr std::uint64_t kCopied = 2 * kMegabyte;
constexpr const char* kNotThere = "it is no longer on the file system that the transfer began on";

// What is written to it waits until the end of the scope.
class FrozenFileSystem {
public:
    explicit FrozenFileSystem(const fs::path& Directory)
        : Opened(::open(Directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        EXPECT_EQ(::ioctl(Opened.Get(), FIFREEZE, nullptr), 0);
    }
    ~FrozenFileSystem() { ::ioctl(Opened.Get(), FITHAW, nullptr); }
    FrozenFileSystem(const FrozenFileSystem&) = delete;
    FrozenFileSystem& operator=(const FrozenFileSystem&) = delete;

private:
    const OwnedDescriptor Opened;
};

class FlusherTest : public testing::Test {
protected:
    static FlushProgress Finished(Flusher& Watch) {
        FlushProgress progress;
        EXPECT_TRUE(BecomesTrue("the flush is over", [&] {
            progress = Watch.Poll();
            return progress.bFinished;
        }));
        return progress;
    }

    // How far the kernel gets before it gives up decides which of the two it reports.
    static void ExpectWriteError(const std::string& Text, const fs::path& Disk) {
        const std::string beginning = "cannot write everything to '" + Disk.string() + "': ";
        EXPECT_TRUE(Text == beginning + "No space left on device" ||
                    Text == beginning + "Input/output error")
            << Text;
    }

    std::string FailureBecause(const std::string& Reason) const {
        return "cannot write everything to '" + (Room / "disk").string() + "': " + Reason;
    }

    // Adds a letter to a file for each call.
    std::function<int(int)> LogCall(const std::string& Letter) const {
        return [log = Room / "log", Letter](int) {
            const int descriptor = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
            return ::write(descriptor, Letter.data(), 1) == 1 ? 0 : -1;
        };
    }

    // How often a device was told to empty its cache.
    static std::uint64_t FlushRequests(const fs::path& Directory) {
        constexpr int kFieldsBefore = 15;
        std::ifstream counters(BlockDeviceDirectoryOf(Directory) / "stat");
        std::uint64_t value = 0;
        for (int field = 0; field <= kFieldsBefore; ++field) {
            counters >> value;
        }
        return value;
    }

    // For each signal what it does, and whether this thread blocks it.
    using SignalTable = std::map<int, std::pair<sighandler_t, bool>>;
    static SignalTable Signals() {
        SignalTable signals;
        sigset_t blocked;
        ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        for (int signal = 1; signal < NSIG; ++signal) {
            struct sigaction action {};
            ::sigaction(signal, nullptr, &action);
            signals[signal] = {action.sa_handler, ::sigismember(&blocked, signal) == 1};
        }
        return signals;
    }

    static std::uint64_t SignalBit(int Signal) { return std::uint64_t{1} << (Signal - 1); }

    // 'D' for a process that not even SIGKILL ends now.
    static char StateOf(pid_t Process) {
        std::ifstream status("/proc/" + std::to_string(Process) + "/stat");
        std::string word;
        while (status >> word && !word.ends_with(')')) {}
        status >> word;
        return word.front();
    }

    // Those that were sent to a process and wait there because it blocks them.
    static std::uint64_t PendingSignals(pid_t Process) {
        const std::string name = "ShdPnd:";
        std::ifstream status("/proc/" + std::to_string(Process) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with(name)) {
                return std::stoull(line.substr(name.size()), nullptr, 16);
            }
        }
        return 0;
    }

    TemporaryDirectory Room;
    FakeSyncfs Fake;
};

TEST_F(FlusherTest, HasNothingToDoWithoutDirectories) {
    Flusher watch({});
    EXPECT_FALSE(watch.HasAnythingToFlush());
    watch.Start(kCopied);
    EXPECT_TRUE(watch.Poll().bFinished);
    EXPECT_EQ(watch.Poll().ErrorText, "");
}

TEST_F(FlusherTest, BringsDataToTheDisk) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    Flusher watch({disk.Path()});
    EXPECT_TRUE(watch.HasAnythingToFlush());
    const std::string bytes = PatternBytes(1024);
    WriteFile(disk.Path() / "file", bytes);
    EXPECT_EQ(ReadFile(Room / "disk.image").find(bytes), std::string::npos);
    watch.Start(kCopied);
    const FlushProgress end = Finished(watch);
    EXPECT_EQ(end.ErrorText, "");
    EXPECT_NE(ReadFile(Room / "disk.image").find(bytes), std::string::npos);
    EXPECT_TRUE(NoChildIsLeft());
}

TEST_F(FlusherTest, CountsNoDataOfOtherDisks) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    const ScopedMount other = MountLoopDisk(Room / "other", 32);
    Fake.Syncfs = FakeSyncfs::NeverEnd;
    Flusher watch({disk.Path()});
    WriteFile(disk.Path() / "file", PatternBytes(kCopied));
    WriteFile(other.Path() / "file", PatternBytes(16 * kMegabyte));
    watch.Start(kCopied);
    const std::uint64_t left = watch.Poll().RemainingBytes.value_or(0);
    EXPECT_GT(left, 0U);
    EXPECT_LE(left, kCopied);
    Fake.Syncfs = nullptr;
    const int descriptor = ::open(disk.Path().c_str(), O_RDONLY);
    EXPECT_EQ(::syncfs(descriptor), 0);
    ::close(descriptor);
    EXPECT_EQ(watch.Poll().RemainingBytes, std::nullopt);
}

// The disk believes that it has room, but what holds it has none.
TEST_F(FlusherTest, FindsThatTheDiskIsFullOnlyNow) {
    EnterPrivateMountNamespace();
    const ScopedMount small = MountTmpfs(Room / "small", "size=3m");
    const ScopedMount disk = MountLoopDisk(small.Path() / "disk", 16);
    Flusher watch({disk.Path() / "new"});
    WriteFile(disk.Path() / "file", PatternBytes(8 * kMegabyte));
    watch.Start(kCopied);
    ExpectWriteError(Finished(watch).ErrorText, disk.Path());
}

// The kernel has tried and failed while the job was still running.
TEST_F(FlusherTest, FindsWhatHasFailedSinceItOpenedTheFileSystem) {
    EnterPrivateMountNamespace();
    const ScopedMount small = MountTmpfs(Room / "small", "size=3m");
    const ScopedMount disk = MountLoopDisk(small.Path() / "disk", 16);
    Flusher watch({disk.Path()});
    WriteFile(disk.Path() / "file", PatternBytes(8 * kMegabyte));
    const int descriptor = ::open(disk.Path().c_str(), O_RDONLY);
    EXPECT_NE(::syncfs(descriptor), 0);
    ::close(descriptor);
    watch.Start(kCopied);
    ExpectWriteError(Finished(watch).ErrorText, disk.Path());
}

TEST_F(FlusherTest, GivesTheReasonOfAFailure) {
    Fake.Syncfs = FakeSyncfs::FailWith(ENOSPC);
    Flusher watch({Room.Path()});
    watch.Start(kCopied);
    const std::string text =
        "cannot write everything to '" + Room.Path().string() + "': No space left on device";
    EXPECT_EQ(Finished(watch).ErrorText, text);
    EXPECT_EQ(watch.Poll().ErrorText, text);
}

TEST_F(FlusherTest, SaysThatItWasInterrupted) {
    Fake.Syncfs = [](int) { return ::raise(SIGKILL); };
    Flusher watch({Room.Path()});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, "cannot write everything to '" + Room.Path().string() +
                                             "': the flush was interrupted");
}

TEST_F(FlusherTest, NeedsNoChildSignal) {
    const ChildSignalIgnored ignored;
    Fake.Syncfs = FakeSyncfs::FailWith(ENOSPC);
    Flusher watch({Room.Path()});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText,
              "cannot write everything to '" + Room.Path().string() + "': No space left on device");
}

TEST_F(FlusherTest, SaysWhyItCannotBeStarted) {
    Flusher watch({Room.Path()});
    {
        const NoProcessesLeft limit;
        watch.Start(kCopied);
    }
    EXPECT_EQ(Finished(watch).ErrorText, "cannot write everything to '" + Room.Path().string() +
                                             "': Resource temporarily unavailable");
}

TEST_F(FlusherTest, FlushesEachFileSystemOnce) {
    EnterPrivateMountNamespace();
    const ScopedMount other = MountTmpfs(Room / "other", "size=1m");
    Fake.Syncfs = LogCall("x");
    Flusher watch({Room / "a", Room / "b", other.Path(), Room / "c/d"});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, "");
    EXPECT_EQ(ReadFile(Room / "log"), "xx");
}

TEST_F(FlusherTest, FlushesEverythingWhenTheDirectoryMustNotBeOpened) {
    const fs::path log = Room / "log";
    Fake.Sync = [log] { ::close(::open(log.c_str(), O_WRONLY | O_CREAT, 0600)); };
    fs::create_directory(Room / "locked");
    fs::permissions(Room / "locked", fs::perms::owner_write);
    fs::permissions(Room.Path(), fs::perms::all);
    const ActingAsNobody nobody;
    Flusher watch({Room / "locked"});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, "");
    EXPECT_TRUE(fs::exists(log));
    EXPECT_EQ(watch.Poll().Reach, FlushReach::System);
}

// As syncfs does on vfat, it leaves the device alone.
TEST_F(FlusherTest, FlushesTheDeviceWhereTheFileSystemDoesNot) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    Fake.Syncfs = [](int) { return 0; };
    Flusher watch({disk.Path()});
    WriteFile(disk.Path() / "file", PatternBytes(1024));
    const std::uint64_t before = FlushRequests(disk.Path());
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, "");
    EXPECT_GT(FlushRequests(disk.Path()), before);
}

TEST_F(FlusherTest, FlushesTheDeviceAfterTheFileSystem) {
    Fake.Syncfs = LogCall("s");
    Fake.Fsync = LogCall("f");
    Flusher watch({Room.Path()});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, "");
    EXPECT_EQ(ReadFile(Room / "log"), "sf");
}

TEST_F(FlusherTest, FailsWhenTheDeviceCannotBeFlushed) {
    Fake.Fsync = FakeSyncfs::FailWith(EIO);
    Flusher watch({Room.Path()});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText,
              "cannot write everything to '" + Room.Path().string() + "': Input/output error");
}

TEST_F(FlusherTest, ReachesTheDevice) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    Flusher watch({disk.Path()});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).Reach, FlushReach::Device);
}

TEST_F(FlusherTest, ReachesTheServerOfANetworkFileSystem) {
    EnterPrivateMountNamespace();
    const ScopedMount share = MountTmpfs(Room / "share", "size=1m");
    const std::optional<MountIdentity> mount = MountIdentityOf(share.Path());
    ASSERT_TRUE(mount.has_value());
    WriteFile(Room / "mountinfo",
              std::to_string(mount->MountId) + " 1 0:99 / /share rw - 9p server rw\n");
    const ScopedMount table = BindFile(Room / "mountinfo", "/proc/self/mountinfo");
    Flusher watch({share.Path()});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).Reach, FlushReach::Server);
}

TEST_F(FlusherTest, ReachesTheSystemWhereAFileSystemCannotFlushItsDevice) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    Fake.Fsync = FakeSyncfs::FailWith(EINVAL);
    Flusher watch({disk.Path()});
    watch.Start(kCopied);
    const FlushProgress end = Finished(watch);
    EXPECT_EQ(end.ErrorText, "");
    EXPECT_EQ(end.Reach, FlushReach::System);
}

TEST_F(FlusherTest, ReachesWhatIsWorstOfSeveral) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    const ScopedMount memory = MountTmpfs(Room / "memory", "size=1m");
    Flusher watch({memory.Path(), disk.Path()});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).Reach, FlushReach::System);
}

TEST_F(FlusherTest, FailsWhenTheFileSystemWasUnmounted) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    Flusher watch({disk.Path()});
    WriteFile(disk.Path() / "file", PatternBytes(1024));
    ASSERT_EQ(::umount2(disk.Path().c_str(), MNT_DETACH), 0);
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, FailureBecause(kNotThere));
}

TEST_F(FlusherTest, FailsWhenTheFileSystemIsUnmountedMeanwhile) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountTmpfs(Room / "disk", "size=1m");
    Fake.Syncfs = [path = disk.Path().string()](int) {
        return ::umount2(path.c_str(), MNT_DETACH);
    };
    Flusher watch({disk.Path()});
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, FailureBecause(kNotThere));
}

TEST_F(FlusherTest, FailsWhenAnotherFileSystemHasTakenThePlace) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountTmpfs(Room / "disk", "size=1m");
    Flusher watch({disk.Path()});
    const ScopedMount above = MountTmpfs(disk.Path(), "size=1m");
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, FailureBecause(kNotThere));
}

// The same file system, but perhaps another part of it.
TEST_F(FlusherTest, FailsWhenAnotherMountHasTakenThePlace) {
    EnterPrivateMountNamespace();
    fs::create_directory(Room / "other");
    fs::create_directory(Room / "disk");
    Flusher watch({Room / "disk"});
    const ScopedMount above = BindReadOnly(Room / "other", Room / "disk");
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, FailureBecause(kNotThere));
}

TEST_F(FlusherTest, FailsWhenAnotherFileSystemHasTakenThePlaceOfOneOfSeveralDirectories) {
    EnterPrivateMountNamespace();
    fs::create_directory(Room / "another");
    fs::create_directory(Room / "disk");
    Flusher watch({Room / "another", Room / "disk"});
    const ScopedMount above = MountTmpfs(Room / "disk", "size=1m");
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, FailureBecause(kNotThere));
}

TEST_F(FlusherTest, FailsWhenAnotherFileSystemCameWhereADirectoryWasToBeMade) {
    EnterPrivateMountNamespace();
    Flusher watch({Room / "disk"});
    const ScopedMount above = MountTmpfs(Room / "disk", "size=1m");
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, FailureBecause(kNotThere));
}

TEST_F(FlusherTest, FailsWhenTheDirectoryIsGone) {
    fs::create_directory(Room / "disk");
    Flusher watch({Room / "disk"});
    fs::remove(Room / "disk");
    watch.Start(kCopied);
    EXPECT_EQ(Finished(watch).ErrorText, FailureBecause(kNotThere));
}

TEST_F(FlusherTest, CanBeLeftWhileTheDiskKeepsItWaiting) {
    ASSERT_TRUE(NoChildIsLeft());
    Fake.Syncfs = FakeSyncfs::NeverEnd;
    {
        Flusher watch({Room.Path()});
        watch.Start(kCopied);
        EXPECT_EQ(ChildProcesses().size(), 1U);
        EXPECT_FALSE(watch.Poll().bFinished);
        EXPECT_EQ(watch.Poll().ErrorText, "");
    }
    EXPECT_TRUE(NoChildIsLeft());
}

// What is said of it promises that.
TEST_F(FlusherTest, KeepsADiskBusyThatItWasLeftFor) {
    EnterPrivateMountNamespace();
    const ScopedMount host = MountLoopDisk(Room / "host", 48);
    const ScopedMount disk = MountLoopDisk(host.Path() / "disk", 16);
    const auto unmounts = [&disk] { return ::umount2(disk.Path().c_str(), 0) == 0; };
    ASSERT_TRUE(NoChildIsLeft());
    WriteFile(disk.Path() / "file", PatternBytes(4 * kMegabyte));
    {
        const FrozenFileSystem held(host.Path());
        {
            Flusher watch({disk.Path()});
            watch.Start(kCopied);
            EXPECT_TRUE(BecomesTrue("the disk holds the flush",
                                    [] { return StateOf(ChildProcesses().front()) == 'D'; }));
        }
        EXPECT_FALSE(unmounts());
        EXPECT_EQ(errno, EBUSY);
    }
    EXPECT_TRUE(BecomesTrue("the disk can be unmounted", unmounts));
}

TEST_F(FlusherTest, TakesNoSignalsFromTheTerminal) {
    ASSERT_TRUE(NoChildIsLeft());
    Fake.Syncfs = FakeSyncfs::NeverEnd;
    Flusher watch({Room.Path()});
    watch.Start(kCopied);
    ASSERT_EQ(ChildProcesses().size(), 1U);
    const pid_t child = ChildProcesses().front();
    for (const int signal : {SIGINT, SIGTSTP, SIGHUP, SIGTERM, SIGUSR1}) {
        ::kill(child, signal);
    }
    EXPECT_EQ(PendingSignals(child), SignalBit(SIGINT) | SignalBit(SIGTSTP) | SignalBit(SIGHUP) |
                                         SignalBit(SIGTERM) | SignalBit(SIGUSR1));
    EXPECT_FALSE(watch.Poll().bFinished);
}

TEST_F(FlusherTest, LeavesTheSignalsOfTheProgramAsTheyWere) {
    const ChildSignalIgnored ignored;
    const SignalsBlocked blocked(SIGTTOU);
    const SignalTable before = Signals();
    {
        Flusher watch({Room.Path()});
        watch.Start(kCopied);
        EXPECT_EQ(Signals(), before);
        EXPECT_EQ(Finished(watch).ErrorText, "");
    }
    EXPECT_EQ(Signals(), before);
}

// Opened before or after the file system.
TEST_F(FlusherTest, KeepsNoOutputOfTheProgramOpen) {
    Fake.Syncfs = FakeSyncfs::NeverEnd;
    std::array<std::array<int, 2>, 2> pipes{};
    ASSERT_EQ(::pipe2(pipes[0].data(), O_NONBLOCK), 0);
    Flusher watch({Room.Path()});
    ASSERT_EQ(::pipe2(pipes[1].data(), O_NONBLOCK), 0);
    watch.Start(kCopied);
    for (const auto& [reading, writing] : pipes) {
        ::close(writing);
        EXPECT_TRUE(BecomesTrue("the pipe ends", [fd = reading] {
            char byte = 0;
            return ::read(fd, &byte, 1) == 0;
        }));
        ::close(reading);
    }
}

} // namespace
