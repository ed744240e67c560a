// What the finisher asks of the system: calls are counted at the link, and fail there as file
// systems do that no test can mount everywhere.

#include "finisher_fixture.h"
#include "needs.h"
#include "own_mount_namespace.h"

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <future>
#include <sys/resource.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr long kModeCall = 452;
constexpr int kNoFollow = AT_SYMLINK_NOFOLLOW;

struct Calls {
    int Looks = 0;
    int Opened = 0;
    int Modes = 0;
    int LibraryModes = 0;
    int Times = 0;
    int Owners = 0;

    bool operator==(const Calls&) const = default;
};

// The test does nothing beside the finisher's thread.
struct System {
    Calls Counted;
    // An errno; 0 for success.
    int ModeError = 0;
    int TimesError = 0;
    int OwnerError = 0;
    bool bModeCallMissing = false;
    // Accepts what it does not keep.
    bool bKeepsNoModes = false;
    mode_t BitsNotKept = 0;
    bool bKeepsNoTimes = false;
    // In whole seconds; 0 for all that the real one keeps.
    int Precision = 0;
    std::function<void()> BeforeLook;
};
System gSystem;

int Failing(int Error) {
    errno = Error;
    return -1;
}

} // namespace

extern "C" {
int __real_fstatat(int, const char*, struct stat*, int);
int __wrap_fstatat(int, const char*, struct stat*, int);
int __real_fstat(int, struct stat*);
int __wrap_fstat(int, struct stat*);
int __real_openat(int, const char*, int, ...);
int __wrap_openat(int, const char*, int, ...);
int __real_fchmod(int, mode_t);
int __wrap_fchmod(int, mode_t);
int __real_fchmodat(int, const char*, mode_t, int);
int __wrap_fchmodat(int, const char*, mode_t, int);
int __real_futimens(int, const timespec*);
int __wrap_futimens(int, const timespec*);
int __real_utimensat(int, const char*, const timespec*, int);
int __wrap_utimensat(int, const char*, const timespec*, int);
int __real_fchown(int, uid_t, gid_t);
int __wrap_fchown(int, uid_t, gid_t);
int __real_fchownat(int, const char*, uid_t, gid_t, int);
int __wrap_fchownat(int, const char*, uid_t, gid_t, int);
long __real_syscall(long, ...);
long __wrap_syscall(long, ...);
}

int __wrap_fstatat(int Folder, const char* Name, struct stat* Out, int Flags) {
    ++gSystem.Counted.Looks;
    if (gSystem.BeforeLook) {
        gSystem.BeforeLook();
    }
    return __real_fstatat(Folder, Name, Out, Flags);
}

int __wrap_fstat(int Descriptor, struct stat* Out) {
    ++gSystem.Counted.Looks;
    return __real_fstat(Descriptor, Out);
}

int __wrap_openat(int Folder, const char* Name, int Flags, ...) {
    ++gSystem.Counted.Opened;
    return __real_openat(Folder, Name, Flags);
}

int __wrap_fchmod(int Descriptor, mode_t Mode) {
    ++gSystem.Counted.Modes;
    if (gSystem.ModeError != 0) {
        return Failing(gSystem.ModeError);
    }
    return gSystem.bKeepsNoModes ? 0 : __real_fchmod(Descriptor, Mode);
}

int __wrap_fchmodat(int Folder, const char* Name, mode_t Mode, int Flags) {
    ++gSystem.Counted.LibraryModes;
    EXPECT_EQ(Flags, kNoFollow);
    return __real_fchmodat(Folder, Name, Mode, Flags);
}

int __wrap_futimens(int Descriptor, const timespec* Times) {
    ++gSystem.Counted.Times;
    return gSystem.TimesError != 0 ? Failing(gSystem.TimesError)
                                   : __real_futimens(Descriptor, Times);
}

int __wrap_utimensat(int Folder, const char* Name, const timespec* Times, int Flags) {
    // The test's own.
    if (Folder == AT_FDCWD) {
        return __real_utimensat(Folder, Name, Times, Flags);
    }
    ++gSystem.Counted.Times;
    if (gSystem.TimesError != 0) {
        return Failing(gSystem.TimesError);
    }
    if (gSystem.bKeepsNoTimes) {
        return 0;
    }
    timespec kept[] = {Times[0], Times[1]};
    if (gSystem.Precision > 0) {
        kept[1] = {kept[1].tv_sec / gSystem.Precision * gSystem.Precision, 0};
    }
    return __real_utimensat(Folder, Name, kept, Flags);
}

int __wrap_fchown(int Descriptor, uid_t User, gid_t Group) {
    ++gSystem.Counted.Owners;
    return gSystem.OwnerError != 0 ? Failing(gSystem.OwnerError)
                                   : __real_fchown(Descriptor, User, Group);
}

int __wrap_fchownat(int Folder, const char* Name, uid_t User, gid_t Group, int Flags) {
    ++gSystem.Counted.Owners;
    return gSystem.OwnerError != 0 ? Failing(gSystem.OwnerError)
                                   : __real_fchownat(Folder, Name, User, Group, Flags);
}

// The finisher makes one kind of call only.
long __wrap_syscall(long Number, ...) {
    va_list arguments;
    va_start(arguments, Number);
    const int folder = va_arg(arguments, int);
    const char* const name = va_arg(arguments, const char*);
    const mode_t mode = va_arg(arguments, mode_t);
    const int flags = va_arg(arguments, int);
    va_end(arguments);
    EXPECT_EQ(Number, kModeCall);
    if (gSystem.bModeCallMissing) {
        return Failing(EPERM);
    }
    if (folder < 0) {
        return __real_syscall(Number, folder, name, mode, flags);
    }
    ++gSystem.Counted.Modes;
    EXPECT_EQ(flags, kNoFollow);
    if (gSystem.ModeError != 0) {
        return Failing(gSystem.ModeError);
    }
    return gSystem.bKeepsNoModes
               ? 0
               : __real_syscall(Number, folder, name, mode & ~gSystem.BitsNotKept, flags);
}

namespace {

class FinisherCalls : public FinisherTest {
protected:
    FinisherCalls() {
        gSystem = {};
        for (int number = 0; number < 50; ++number) {
            MakeSource("tree/" + std::to_string(number), 0640);
        }
        for (int number = 0; number < 10; ++number) {
            MakeSource("tree/folder-" + std::to_string(number) + "/file", 0640);
            Dress(From / ("tree/folder-" + std::to_string(number)), 0750);
        }
        Dress(From / "tree", 0750);
        Record("tree");
        Copy("tree");
    }
    ~FinisherCalls() override { gSystem = {}; }

    FinishResult FinishCounted(const FinishTask& ToDo) {
        gSystem.Counted = {};
        return Finish(ToDo);
    }
    FinishResult FinishCounted() { return FinishCounted(Task()); }

    static constexpr int kFiles = 60;
    static constexpr int kDirectories = 11;
    static constexpr int kEntries = kFiles + kDirectories;
};

// Beside one look at the folder of the item, and one after the first change of each kind.
TEST_F(FinisherCalls, NeedsOneOfEachKindForAnEntry) {
    ExpectAllFinished(FinishCounted());
    const Calls& calls = gSystem.Counted;
    EXPECT_EQ(calls.Modes, kEntries);
    EXPECT_EQ(calls.Times, kEntries);
    EXPECT_EQ(calls.Owners, 0);
    EXPECT_EQ(calls.Opened, kDirectories + 1);
    EXPECT_GE(calls.Looks, kEntries + 1);
    EXPECT_LE(calls.Looks, kEntries + 5);
    EXPECT_EQ(StatusesOf(To / "tree"), Wanted);
}

// Where no modes are carried over, nothing was made private that might have come late.
TEST_F(FinisherCalls, LooksOnceAtEachDirectoryForTimesAlone) {
    FinishTask task = Task();
    task.Preserve.bMode = false;
    task.CopiedEntries = kEntries + 1;
    ExpectAllFinished(FinishCounted(task));
    EXPECT_EQ(gSystem.Counted.Modes, 0);
    EXPECT_EQ(gSystem.Counted.Times, kEntries);
    EXPECT_EQ(gSystem.Counted.Opened, kDirectories + 1);
}

TEST_F(FinisherCalls, ChangesOnlyWhatDiffers) {
    Finish();
    FinishTask task = Task();
    task.Preserve.bOwner = true;
    ExpectAllFinished(FinishCounted(task));
    EXPECT_EQ(gSystem.Counted.Modes, 0);
    EXPECT_EQ(gSystem.Counted.Times, 0);
    EXPECT_EQ(gSystem.Counted.Owners, 0);
}

TEST_F(FinisherCalls, DoesWithoutTheCallForModes) {
    gSystem.bModeCallMissing = true;
    ExpectAllFinished(FinishCounted());
    EXPECT_EQ(gSystem.Counted.LibraryModes, kFiles);
    EXPECT_EQ(StatusesOf(To / "tree"), Wanted);
}

TEST_F(FinisherCalls, TriesModesOnceWhereTheyAreRefused) {
    for (const int error : {EPERM, EOPNOTSUPP, EINVAL, ENOSYS}) {
        gSystem.ModeError = error;
        const FinishResult result = FinishCounted();
        EXPECT_TRUE(result.bModesLost);
        EXPECT_FALSE(result.bTimesLost || result.bOwnersLost);
        EXPECT_EQ(result.Failures, 0U);
        EXPECT_EQ(result.Finished, std::uint64_t{kEntries});
        EXPECT_EQ(gSystem.Counted.Modes, 1);
    }
}

TEST_F(FinisherCalls, TriesModesOnceWhereTheyAreNotKept) {
    gSystem.bKeepsNoModes = true;
    const FinishResult result = FinishCounted();
    EXPECT_TRUE(result.bModesLost);
    EXPECT_FALSE(result.bTimesLost || result.bOwnersLost);
    EXPECT_EQ(result.Finished, std::uint64_t{kEntries});
    EXPECT_EQ(gSystem.Counted.Modes, 1);
}

// The first one may be one that the file system can hold.
TEST_F(FinisherCalls, TellsWhenALaterModeIsNotKept) {
    gSystem.BitsNotKept = 07;
    MakeSource("file", 0641);
    Record("file");
    Copy("file");
    EXPECT_TRUE(FinishCounted().bModesLost);
    EXPECT_EQ(ModeOf(To / "tree"), 0750U);
}

TEST_F(FinisherCalls, TriesTimesOnceWhereTheyAreRefused) {
    for (const int error : {EPERM, EOPNOTSUPP, EINVAL, ENOSYS}) {
        gSystem.TimesError = error;
        const FinishResult result = FinishCounted();
        EXPECT_TRUE(result.bTimesLost);
        EXPECT_FALSE(result.bModesLost || result.bOwnersLost);
        EXPECT_EQ(result.Failures, 0U);
        EXPECT_EQ(result.Finished, std::uint64_t{kEntries});
        EXPECT_EQ(gSystem.Counted.Times, 1);
    }
}

TEST_F(FinisherCalls, TellsWhenTimesAreNotKept) {
    gSystem.bKeepsNoTimes = true;
    const FinishResult result = FinishCounted();
    EXPECT_TRUE(result.bTimesLost);
    EXPECT_EQ(result.Finished, std::uint64_t{kEntries});
}

// A time that is off by less is as good as such a file system can have it.
TEST_F(FinisherCalls, TellsWhenOddSecondsAreNotKept) {
    gSystem.Precision = 2;
    const FinishResult result = FinishCounted();
    EXPECT_TRUE(result.bTimesLost);
    EXPECT_EQ(gSystem.Counted.Times, kEntries);
}

TEST_F(FinisherCalls, TellsNothingOfPartsOfASecond) {
    gSystem.Precision = 1;
    ExpectAllFinished(FinishCounted());
}

TEST_F(FinisherCalls, TriesOwnersOnceWhereRootCannotSetThem) {
    NeedRoot();
    FinishTask task = Task();
    task.Preserve.bOwner = true;
    for (const auto& entry : fs::recursive_directory_iterator(To)) {
        ASSERT_EQ(::lchown(entry.path().c_str(), 12345, 23456), 0);
    }
    gSystem.OwnerError = EPERM;
    const FinishResult result = FinishCounted(task);
    EXPECT_TRUE(result.bOwnersLost);
    EXPECT_EQ(result.Failures, 0U);
    EXPECT_EQ(gSystem.Counted.Owners, 1);
    EXPECT_EQ(StatusesOf(To / "tree"), Wanted);
}

TEST_F(FinisherCalls, CountsAnEntryThatFailsOnce) {
    gSystem.ModeError = EIO;
    gSystem.TimesError = ENOSPC;
    const FinishResult result = FinishCounted();
    EXPECT_EQ(result.Failures, std::uint64_t{kEntries});
    EXPECT_EQ(result.Finished, 0U);
    EXPECT_FALSE(result.bModesLost || result.bTimesLost);
    EXPECT_NE(result.FirstFailure.find("cannot set the mode of '"), std::string::npos);
    EXPECT_NE(result.FirstFailure.find("': Input/output error"), std::string::npos);
    EXPECT_EQ(gSystem.Counted.Modes, kEntries);
    EXPECT_EQ(gSystem.Counted.Times, kEntries);
}

TEST_F(FinisherCalls, EndsBeforeTheNextEntryWhenCanceled) {
    const FinishTask task = Task();
    std::unique_ptr<Finisher> finisher;
    std::promise<void> made;
    int looks = 0;
    gSystem.BeforeLook = [&, isMade = made.get_future().share()] {
        isMade.wait();
        if (++looks == 3) {
            finisher->Cancel();
        }
    };
    finisher = std::make_unique<Finisher>(task);
    made.set_value();
    ASSERT_TRUE(BecomesTrue("it is over", [&] { return finisher->IsOver(); }));
    const FinishResult& result = finisher->Result();
    EXPECT_TRUE(result.bCanceled);
    EXPECT_EQ(result.Broken, "");
    EXPECT_GT(result.Finished, 0U);
    EXPECT_EQ(result.Finished, finisher->EntriesDone());
    EXPECT_EQ(result.Unreached, kEntries - result.Finished);
    EXPECT_EQ(ModeOf(To / "tree"), 0700U);
}

// As deep as paths go, with the descriptors that a process may have: up and down in the time that
// each level takes.
class FinisherDeep : public FinisherTest {
protected:
    static constexpr int kLevels = 2000;

    FinisherDeep() {
        gSystem = {};
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &Before), 0);
        const rlimit few{1024, Before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    }
    ~FinisherDeep() override { ::setrlimit(RLIMIT_NOFILE, &Before); }

    // Folders named "0", one in the other, and after each a file named "z" beside it.
    void MakeChain(bool bMerged, int LinkLevel = -1) {
        int folder = ::open(To.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        for (int level = 0; level < kLevels; ++level) {
            if (level == LinkLevel) {
                fs::create_directory(To / "outside");
                ASSERT_EQ(::symlinkat((To / "outside").c_str(), folder, "0"), 0);
            } else {
                ASSERT_EQ(::mkdirat(folder, "0", 0700), 0);
            }
            const int next = ::openat(folder, "0", O_PATH | O_DIRECTORY | O_CLOEXEC);
            ::close(folder);
            folder = next;
            struct stat status {};
            ASSERT_EQ(::fstat(folder, &status), 0);
            std::optional<RecordedTarget> there;
            if (bMerged) {
                there = RecordedTarget{.Identity = IdentityOf(status),
                                       .Mode = status.st_mode,
                                       .bLink = level == LinkLevel};
            }
            Writer.Add({.What = RecordedEntry::Kind::Directory,
                        .Name = level == 0 ? (To / "0").native() : "0",
                        .Source = Status(S_IFDIR | 0755),
                        .There = there});
            ::close(::openat(folder, "z", O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
        }
        ::close(folder);
        for (int level = 0; level < kLevels; ++level) {
            Writer.Add(
                {.What = RecordedEntry::Kind::File, .Name = "z", .Source = Status(S_IFREG | 0644)});
            Writer.Add({.What = RecordedEntry::Kind::End});
        }
    }

    static RecordedStatus Status(mode_t Mode) {
        return {.Mode = Mode,
                .Owner = ::geteuid(),
                .Group = ::getegid(),
                .Accessed = {5, 6},
                .Modified = {7, 8}};
    }

private:
    rlimit Before{};
    OwnMountNamespace Namespace;
    ScopedMount Mounted = MountTmpfs(To, "size=64m");
};

TEST_F(FinisherDeep, FinishesEachLevel) {
    MakeChain(false);
    const FinishTask task = Task();
    gSystem.Counted = {};
    const FinishResult result = Finish(task);
    ExpectAllFinished(result);
    EXPECT_EQ(result.Finished, 2U * kLevels);
    EXPECT_LE(gSystem.Counted.Opened, 2 * kLevels + 1);
    EXPECT_LE(gSystem.Counted.Looks, 3 * kLevels + 5);
    std::string path = To;
    for (int level = 0; level < 100; ++level) {
        path += "/0";
        EXPECT_EQ(ModeOf(path), 0755U);
        EXPECT_EQ(ModeOf(path + "/z"), 0644U);
    }
}

TEST_F(FinisherDeep, PassesThroughEachLevel) {
    MakeChain(true);
    const FinishTask task = Task();
    gSystem.Counted = {};
    const FinishResult result = Finish(task);
    ExpectAllFinished(result);
    EXPECT_EQ(result.Finished, std::uint64_t{kLevels});
    EXPECT_LE(gSystem.Counted.Opened, 2 * kLevels + 1);
    EXPECT_EQ(ModeOf(To / "0/z"), 0644U);
    EXPECT_EQ(ModeOf(To / "0"), 0700U);
}

// From where a link has led to, ".." does not lead back.
TEST_F(FinisherDeep, ComesBackThroughALink) {
    static constexpr int kLevel = 5;
    MakeChain(true, kLevel);
    const FinishResult result = Finish();
    ExpectAllFinished(result);
    EXPECT_EQ(result.Finished, std::uint64_t{kLevels});
    EXPECT_EQ(ModeOf(To / "0/z"), 0644U);
    EXPECT_EQ(ModeOf(To / "outside/z"), 0644U);
}

// Its folder is then in another one, to which ".." leads.
TEST_F(FinisherDeep, DoesNotGoBackToAnotherFolder) {
    MakeChain(false);
    const FinishTask task = Task();
    fs::path moved = To;
    for (int level = 0; level < 10; ++level) {
        moved /= "0";
    }
    int looks = 0;
    gSystem.BeforeLook = [&] {
        if (++looks == 100) {
            fs::create_directory(To / "other");
            fs::rename(moved, To / "other/0");
        }
    };
    const FinishResult result = Finish(task);
    EXPECT_EQ(result.Failures, 0U);
    // Nine folders above it and what is in them.
    EXPECT_EQ(result.LeftAlone, 18U);
    EXPECT_EQ(result.Finished, 2U * kLevels - 18U);
    EXPECT_EQ(ModeOf(To / "other/0"), 0755U);
    EXPECT_EQ(ModeOf(To / "0/0"), 0700U);
    EXPECT_FALSE(fs::exists(To / "other/z"));
}

} // namespace
