// Memory that runs out and locks that fail in the middle of a copy: the exception goes on, and no
// partial file and no open descriptor stays behind.

#include "engine_source.h"

#include "engine_hooks.h"
#include "failing_allocation.h"
#include "failing_lock.h"
#include "failing_stream.h"
#include "job_access.h"
#include "mounts.h"
#include "open_descriptors.h"
#include "transfer_fixture.h"

#include <cstdarg>
#include <optional>

int WrappedIoctl(int Descriptor, unsigned long Code, ...) asm("__wrap_ioctl");
int RealAtThreadEnd(void (*Destroy)(void*), void* Object,
                    void* Program) asm("__real___cxa_thread_atexit");
int WrappedAtThreadEnd(void (*Destroy)(void*), void* Object,
                       void* Program) asm("__wrap___cxa_thread_atexit");
int RealClose(int Descriptor) asm("__real_close");
int WrappedClose(int Descriptor) asm("__wrap_close");

namespace {

using Policy = TarvaneTransferConflictPolicy;

// What is registered to be destroyed with its thread.
std::atomic<int> gObjectsOfThreads{0};

// Lets every allocation of Step fail once, until none does. Check looks at what each failure left.
// Returns how many there were.
//
// Requires: Step allocates alike each time, so the job has shown its path before.
std::size_t FailEachAllocationOf(const std::function<void()>& Step,
                                 const std::function<void()>& Check) {
    bool bFailed = true;
    std::size_t allowed = 0;
    for (; bFailed && allowed < 1000; ++allowed) {
        try {
            const FailingAllocation failing(allowed);
            Step();
            bFailed = failing.Failed();
        } catch (const std::bad_alloc&) {
            Check();
        }
    }
    EXPECT_FALSE(bFailed);
    return allowed - 1;
}

class Exception : public TransferTest {
protected:
    const std::set<std::string> OpenBefore = OpenDescriptors();
};

class FileException : public Exception {
protected:
    FileException() {
        WriteFile(Source, Contents);
        Job.SetCurrentPath(Source.string(), 0);
    }

    void Copy() {
        CopyFileWithProgress(Source, Destination, Job, Policy::Overwrite, kMove, Message);
    }

    const std::string Contents = PatternBytes(3 * kTransferBufferBytes);
    const fs::path Source = Directory / "source";
    const fs::path Destination = Directory / "destination";
};

TEST_F(FileException, LeavesNoPartialFileWhereverMemoryRunsOut) {
    std::size_t removed = 0;
    WriteFile(Destination, "old");
    FailEachAllocationOf([this] { Copy(); },
                         [&] {
                             EXPECT_EQ(OpenDescriptors(), OpenBefore);
                             EXPECT_TRUE(fs::exists(Source));
                             if (fs::exists(Destination)) {
                                 EXPECT_EQ(ReadFile(Destination), "old");
                             } else {
                                 ++removed;
                                 WriteFile(Destination, "old");
                             }
                         });
    EXPECT_GT(removed, 1U);
    EXPECT_EQ(fs::file_size(Destination), Contents.size());
    EXPECT_FALSE(fs::exists(Source));
}

TEST_F(FileException, LeavesNoPartialFileInANewFolderWhereverMemoryRunsOut) {
    std::size_t failed = 0;
    FailEachAllocationOf([this] { CopyNewFile(Source, Destination, Job, kMove, Message); },
                         [&] {
                             ++failed;
                             EXPECT_EQ(OpenDescriptors(), OpenBefore);
                             EXPECT_TRUE(fs::exists(Source));
                             EXPECT_FALSE(fs::exists(Destination));
                         });
    EXPECT_GT(failed, 1U);
    EXPECT_EQ(fs::file_size(Destination), Contents.size());
    EXPECT_FALSE(fs::exists(Source));
}

TEST_F(FileException, KeepsADestinationThatCannotBeOpened) {
    WriteFile(Destination, "old");
    fs::permissions(Destination, static_cast<fs::perms>(0444));
    fs::permissions(Directory.Path(), fs::perms::all);
    const ActingAsNobody nobody;
    FailEachAllocationOf([this] { Copy(); }, [this] { EXPECT_EQ(ReadFile(Destination), "old"); });
    EXPECT_EQ(Message, "Failed to open destination file.");
}

// The engine probes the destination's device after it has opened the destination.
TEST_F(FileException, OfALockLeavesNoPartialFile) {
    EngineHooks hooks;
    std::optional<FailingLock> failing;
    hooks.DeviceProbed = [&] { failing.emplace(PrivateOf<JobMember::Mutex>(Job)); };
    EXPECT_THROW(Copy(), std::system_error);
    failing.reset();
    EXPECT_FALSE(fs::exists(Destination));
    EXPECT_TRUE(fs::exists(Source));
    EXPECT_EQ(OpenDescriptors(), OpenBefore);
}

// The process would end where the library's exception met a function that promises none.
TEST_F(Exception, OfALinkLeavesTheEngineAsOne) {
    const fs::path link = Directory / "a link with a long name";
    const fs::path copy = Directory / "its copy with a long name";
    fs::create_symlink("/dev/../dev/../dev/../dev/null", link);
    Job.SetCurrentPath(link.string(), 0);
    EXPECT_GT(FailEachAllocationOf(
                  [&] { CopySpecialEntry(link, copy, Job, Policy::Overwrite, kCopy, Message); },
                  [&] { EXPECT_FALSE(fs::is_symlink(copy)); }),
              0U);
    EXPECT_EQ(fs::read_symlink(copy), fs::read_symlink(link));
}

// Where memory runs out while the C library takes note of what a thread has to destroy at its end,
// the process ends.
TEST_F(FileException, CannotComeFromTheEndOfTheThread) {
    const int before = gObjectsOfThreads;
    std::thread([this] {
        RunTarvaneTransferJob(SharedJob, PlanOf(kCopy, {{Source, Destination}}));
    }).join();
    EXPECT_EQ(ReadFile(Destination), Contents);
    EXPECT_EQ(gObjectsOfThreads, before);
}

// A drive that allocates nothing: /dev/null, which opens like one, with the answers of WrappedIoctl
// below. Its disc has one track, of 20 frames.
struct Drive {
    // The request that fails; 0 for none.
    unsigned long FailingRequest = 0;
    // Done before each read.
    std::function<void()> BeforeRead;
    // Closes of a descriptor that was not open.
    int SurplusCloses = 0;
};

constexpr int kFrames = 20;
constexpr int kWavBytes = 44 + kFrames * kCddaBytesPerFrame;
const char* const kTrack = "cdda:/dev/null/1";

Drive* gDrive = nullptr;

class TrackException : public Exception {
protected:
    TrackException() {
        gDrive = &InDrive;
        Job.SetCurrentPath(kTrack, 0);
    }
    ~TrackException() override { gDrive = nullptr; }

    bool Extract() { return ExtractCddaTrackToWav(kTrack, Wav, Job, Message); }

    void ExpectNothingOpen() {
        EXPECT_EQ(OpenDescriptors(), OpenBefore);
        EXPECT_EQ(InDrive.SurplusCloses, 0);
    }

    Drive InDrive;
    const fs::path Wav = Directory / "Track 01.wav";
};

// Closing a number twice would close what another thread has opened meanwhile.
TEST_F(TrackException, OfTheNameOfAnAttributeClosesTheOneBeforeOnce) {
    const RemovableDisk disk(Directory.Path(), "1\n");
    struct stat onDisk {};
    ASSERT_EQ(::stat(disk.Path().c_str(), &onDisk), 0);
    // A number that has to be allocated for.
    const dev_t longNumber = makedev(4000, 1000000);
    EXPECT_GT(FailEachAllocationOf(
                  [&] {
                      RemovableAttribute attribute;
                      EXPECT_TRUE(attribute.SaysRemovable(onDisk.st_dev));
                      EXPECT_FALSE(attribute.SaysRemovable(longNumber));
                  },
                  [this] { ExpectNothingOpen(); }),
              0U);
}

TEST_F(TrackException, LeavesNoPartialWavWhereverMemoryRunsOut) {
    std::size_t removed = 0;
    WriteFile(Wav, "old");
    FailEachAllocationOf([this] { Extract(); },
                         [&] {
                             ExpectNothingOpen();
                             if (fs::exists(Wav)) {
                                 EXPECT_EQ(ReadFile(Wav), "old");
                             } else {
                                 ++removed;
                                 WriteFile(Wav, "old");
                             }
                         });
    EXPECT_GT(removed, 0U);
    EXPECT_EQ(fs::file_size(Wav), kWavBytes);
    ExpectNothingOpen();
}

TEST_F(TrackException, OfALockLeavesNoPartialWav) {
    std::optional<FailingLock> failing;
    InDrive.BeforeRead = [&] { failing.emplace(PrivateOf<JobMember::Mutex>(Job)); };
    EXPECT_THROW(Extract(), std::system_error);
    failing.reset();
    EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
    ExpectNothingOpen();
}

TEST_F(TrackException, OfTheTextOfAnErrorLeavesNoDriveOpen) {
    for (const int request : {CDROMREADTOCHDR, CDROMREADTOCENTRY, CDROMREADAUDIO}) {
        InDrive.FailingRequest = static_cast<unsigned long>(request);
        EXPECT_GT(FailEachAllocationOf([this] { EXPECT_FALSE(Extract()); },
                                       [this] {
                                           ExpectNothingOpen();
                                           EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
                                       }),
                  0U);
        ExpectNothingOpen();
    }
}

// The directory takes the place that the WAV is to have.
TEST_F(TrackException, OfTheTextForAWavThatCannotBeOpenedLeavesNoDriveOpen) {
    fs::create_directory(Wav);
    FailEachAllocationOf([this] { EXPECT_FALSE(Extract()); }, [this] { ExpectNothingOpen(); });
    EXPECT_EQ(Message, "Failed to open destination WAV file.");
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"Track 01.wav", "dir"}}));
}

TEST_F(TrackException, OfTheTextForAHeaderThatCannotBeWrittenLeavesNothing) {
    FailEachAllocationOf(
        [this] {
            const FailingStream failure(FailingStream::Call::Write, 1);
            EXPECT_FALSE(Extract());
        },
        [this] {
            ExpectNothingOpen();
            EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
        });
    EXPECT_EQ(Message, "Failed to write WAV header.");
}

} // namespace

int WrappedIoctl(int, unsigned long Code, ...) {
    va_list arguments;
    va_start(arguments, Code);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (Code == gDrive->FailingRequest) {
        errno = EIO;
        return -1;
    }
    if (Code == CDROMREADTOCHDR) {
        auto& header = *static_cast<cdrom_tochdr*>(argument);
        header.cdth_trk0 = 1;
        header.cdth_trk1 = 1;
    } else if (Code == CDROMREADTOCENTRY) {
        auto& entry = *static_cast<cdrom_tocentry*>(argument);
        const bool bLeadOut = entry.cdte_track == CDROM_LEADOUT;
        entry.cdte_addr.msf = {0, 2, static_cast<__u8>(bLeadOut ? kFrames : 0)};
    } else if (gDrive->BeforeRead) {
        gDrive->BeforeRead();
    }
    return 0;
}

int WrappedClose(int Descriptor) {
    const int result = RealClose(Descriptor);
    if (result != 0 && gDrive != nullptr) {
        ++gDrive->SurplusCloses;
    }
    return result;
}

int WrappedAtThreadEnd(void (*Destroy)(void*), void* Object, void* Program) {
    ++gObjectsOfThreads;
    return RealAtThreadEnd(Destroy, Object, Program);
}
