// The I/O priority of the worker: idle for the whole run, and as before on every exit.

#include "engine_source.h"

#include "engine_hooks.h"
#include "fake_io_priority.h"
#include "transfer_fixture.h"

#include <new>
#include <thread>

namespace {

// What the kernel calls best effort, level 5, and idle, level 0.
constexpr int kBestEffort = (2 << 13) | 5;
constexpr int kIdle = 0x6000;

class IoPriority : public TransferTest {
protected:
    IoPriority() { WriteFile(Source, "data"); }

    void Run(const fs::path& From) {
        RunTarvaneTransferJob(SharedJob, PlanOf(kCopy, {{From, Directory / "to"}}));
    }

    const fs::path Source = Directory / "from";
    EngineHooks Hooks;
};

TEST_F(IoPriority, IsLoweredForTheRunAndRestoredAfterwards) {
    FakeIoPriority priority;
    priority.Current = kBestEffort;
    std::vector<long> setMeanwhile;
    Hooks.PathsCompared = [&](const fs::path&) { setMeanwhile = priority.Set; };
    Run(Source);
    EXPECT_EQ(setMeanwhile, (std::vector<long>{kIdle}));
    EXPECT_EQ(priority.Set, (std::vector<long>{kIdle, kBestEffort}));
}

TEST_F(IoPriority, ConcernsTheCallingThreadOnly) {
    FakeIoPriority priority;
    Run(Source);
    const std::vector<long> callingThread{1, 0};
    EXPECT_EQ(priority.Targets,
              (std::vector<std::vector<long>>{callingThread, callingThread, callingThread}));
}

TEST_F(IoPriority, IsLoweredBeforeTheScan) {
    FakeIoPriority priority;
    std::vector<long> setBeforeScan;
    Hooks.PathMet = [&](const std::string&) {
        if (setBeforeScan.empty()) {
            setBeforeScan = priority.Set;
        }
    };
    Run(Source);
    EXPECT_EQ(setBeforeScan, (std::vector<long>{kIdle}));
}

TEST_F(IoPriority, OfNothingSpecialIsRestoredToo) {
    FakeIoPriority priority;
    priority.Current = 0;
    Run(Source);
    EXPECT_EQ(priority.Set, (std::vector<long>{kIdle, 0}));
}

TEST_F(IoPriority, IsRestoredAfterAFailure) {
    FakeIoPriority priority;
    priority.Current = kBestEffort;
    Run(Directory / "missing");
    EXPECT_EQ(priority.Set, (std::vector<long>{kIdle, kBestEffort}));
}

TEST_F(IoPriority, IsRestoredAfterACancel) {
    FakeIoPriority priority;
    priority.Current = kBestEffort;
    Job.RequestCancel();
    Run(Source);
    EXPECT_EQ(priority.Set, (std::vector<long>{kIdle, kBestEffort}));
}

TEST_F(IoPriority, IsRestoredAfterAnException) {
    FakeIoPriority priority;
    priority.Current = kBestEffort;
    Hooks.PathMet = [](const std::string&) { throw std::bad_alloc(); };
    EXPECT_THROW(Run(Source), std::bad_alloc);
    EXPECT_EQ(priority.Set, (std::vector<long>{kIdle, kBestEffort}));
}

TEST_F(IoPriority, IsLeftAloneWhenItCannotBeRead) {
    FakeIoPriority priority;
    priority.Current = -1;
    Run(Source);
    EXPECT_EQ(priority.Set, std::vector<long>{});
    EXPECT_EQ(Job.MakeUiSnapshot().MessageText, "Copied 1 item(s).");
}

TEST_F(IoPriority, IsNotRestoredWhenItCouldNotBeSet) {
    FakeIoPriority priority;
    priority.SetResult = -1;
    Run(Source);
    EXPECT_EQ(priority.Set, (std::vector<long>{kIdle}));
    EXPECT_EQ(Job.MakeUiSnapshot().MessageText, "Copied 1 item(s).");
}

TEST_F(IoPriority, OfTheRealThreadIsIdleMeanwhile) {
    long meanwhile = -1;
    long after = -1;
    Hooks.PathsCompared = [&](const fs::path&) { meanwhile = RealIoPriority(); };
    std::thread([&] {
        SetRealIoPriority(kBestEffort);
        Run(Source);
        after = RealIoPriority();
    }).join();
    EXPECT_EQ(meanwhile, kIdle);
    EXPECT_EQ(after, kBestEffort);
}

} // namespace
