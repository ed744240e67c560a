// What a reader may see while a call on another thread still waits for the job's lock: counters and
// flags change before it, texts and samples under it.

#include "tarvanetransfer.h"

#include "becomes_true.h"
#include "counting_sound.h"
#include "fake_steady_clock.h"
#include "job_access.h"

#include <functional>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class JobOrder : public testing::Test {
protected:
    ~JobOrder() override { Release(); }

    // Takes the job's lock and lets another thread make a call that needs it.
    void CallWhileLocked(std::function<void()> Call) {
        HeldLock = std::unique_lock(PrivateOf<JobMember::Mutex>(Job));
        Caller = std::thread(std::move(Call));
    }

    void Release() {
        if (HeldLock.owns_lock()) {
            HeldLock.unlock();
        }
        if (Caller.joinable()) {
            Caller.join();
        }
    }

    // For while the lock is held.
    std::string Status() { return PrivateOf<JobMember::StatusText>(Job); }
    TarvaneTransferStage Stage() { return PrivateOf<JobMember::Stage>(Job); }

    testing::AssertionResult ClockIsRead() {
        return BecomesTrue("the clock is read", [this] { return Clock.Reads() > ReadsBefore; });
    }

    FakeSteadyClock Clock;
    CountingSound Sound;
    TarvaneTransferJob Job{false, 1, ""};
    const std::size_t ReadsBefore = Clock.Reads();
    std::unique_lock<std::mutex> HeldLock;
    std::thread Caller;
};

TEST_F(JobOrder, SetStageStoresTheStageBeforeTheLockAndTheStatusUnderIt) {
    CallWhileLocked([this] { Job.SetStage(TarvaneTransferStage::Copying, ""); });
    EXPECT_TRUE(BecomesTrue("the stage changes",
                            [this] { return Stage() == TarvaneTransferStage::Copying; }));
    EXPECT_EQ(Status(), "Preparing");
    Release();
    EXPECT_EQ(Status(), "Copying");
}

TEST_F(JobOrder, SetCurrentPathStoresTheCountersBeforeTheLock) {
    Job.SetCurrentFileProgress(7, 9);
    CallWhileLocked([this] { Job.SetCurrentPath("/a", 500); });
    EXPECT_TRUE(BecomesTrue("the counters change", [this] {
        return PrivateOf<JobMember::CurrentFileTotalBytes>(Job) == 500u &&
               PrivateOf<JobMember::CurrentFileDoneBytes>(Job) == 0u;
    }));
    EXPECT_EQ(PrivateOf<JobMember::CurrentPath>(Job), "");
    Release();
    EXPECT_EQ(PrivateOf<JobMember::CurrentPath>(Job), "/a");
}

TEST_F(JobOrder, AddBytesDoneTakesTheTimeOfItsSampleBeforeTheLock) {
    const auto before = Clock.Now();
    CallWhileLocked([this] { Job.AddBytesDone(5); });
    EXPECT_TRUE(ClockIsRead());
    EXPECT_EQ(PrivateOf<JobMember::BytesDone>(Job), 5u);
    Clock.Advance(1s);
    Release();
    ASSERT_EQ(PrivateOf<JobMember::ByteSamples>(Job).size(), 1u);
    EXPECT_EQ(PrivateOf<JobMember::ByteSamples>(Job).front().first, before);
}

TEST_F(JobOrder, RequestCancelSetsTheFlagBeforeTheLockAndTheStatusUnderIt) {
    CallWhileLocked([this] { Job.RequestCancel(); });
    EXPECT_TRUE(BecomesTrue("a cancel is requested", [this] { return Job.IsCancelRequested(); }));
    EXPECT_EQ(Status(), "Preparing");
    Release();
    EXPECT_EQ(Status(), "Cancel requested");
}

TEST_F(JobOrder, FinishSuccessSetsTheFlagsAndTakesTheTimeBeforeTheLock) {
    const auto before = Clock.Now();
    CallWhileLocked([this] { Job.FinishSuccess("done"); });
    EXPECT_TRUE(ClockIsRead());
    EXPECT_TRUE(Job.IsFinished() && PrivateOf<JobMember::Succeeded>(Job));
    EXPECT_EQ(Stage(), TarvaneTransferStage::Completed);
    EXPECT_EQ(Status(), "Preparing");
    EXPECT_EQ(Sound.Played(), 0);
    Clock.Advance(1s);
    Release();
    EXPECT_EQ(Status(), "done");
    ASSERT_EQ(PrivateOf<JobMember::ByteSamples>(Job).size(), 1u);
    EXPECT_EQ(PrivateOf<JobMember::ByteSamples>(Job).front().first, before);
}

TEST_F(JobOrder, FinishFailureSetsTheFlagsAndTakesTheTimeBeforeTheLock) {
    const auto before = Clock.Now();
    CallWhileLocked([this] { Job.FinishFailure("failed"); });
    EXPECT_TRUE(ClockIsRead());
    EXPECT_TRUE(Job.IsFinished());
    EXPECT_EQ(Stage(), TarvaneTransferStage::Failed);
    EXPECT_EQ(Status(), "Preparing");
    Clock.Advance(1s);
    Release();
    EXPECT_EQ(Status(), "failed");
    ASSERT_EQ(PrivateOf<JobMember::ByteSamples>(Job).size(), 1u);
    EXPECT_EQ(PrivateOf<JobMember::ByteSamples>(Job).front().first, before);
}

TEST_F(JobOrder, FinishCanceledSetsTheFlagsAndTakesTheTimeBeforeTheLock) {
    const auto before = Clock.Now();
    CallWhileLocked([this] { Job.FinishCanceled("canceled"); });
    EXPECT_TRUE(ClockIsRead());
    EXPECT_TRUE(Job.IsFinished() && PrivateOf<JobMember::Canceled>(Job));
    EXPECT_EQ(Stage(), TarvaneTransferStage::Canceled);
    EXPECT_EQ(Status(), "Preparing");
    Clock.Advance(1s);
    Release();
    EXPECT_EQ(Status(), "canceled");
    ASSERT_EQ(PrivateOf<JobMember::ByteSamples>(Job).size(), 1u);
    EXPECT_EQ(PrivateOf<JobMember::ByteSamples>(Job).front().first, before);
}

TEST_F(JobOrder, MakeUiSnapshotReadsTheCountersBeforeTheLock) {
    TarvaneTransferUiSnapshot ui;
    CallWhileLocked([&] { ui = Job.MakeUiSnapshot(); });
    EXPECT_TRUE(ClockIsRead());
    Clock.Advance(1s);
    Job.SetTotals(7, 8);
    Job.MarkItemsDone(7);
    Release();
    EXPECT_EQ(ui.TotalItems | ui.DoneItems | ui.TotalBytes, 0u);
    EXPECT_EQ(ui.ElapsedSeconds, 0.0);
}

TEST_F(JobOrder, MakeUiSnapshotReadsTheFlagsAfterTheLock) {
    TarvaneTransferUiSnapshot ui;
    CallWhileLocked([&] { ui = Job.MakeUiSnapshot(); });
    EXPECT_TRUE(ClockIsRead());
    PrivateOf<JobMember::CancelRequested>(Job) = true;
    Release();
    EXPECT_TRUE(ui.bCancelRequested);
    EXPECT_EQ(ui.HintText,
              "Canceling transfer. Waiting for the current filesystem step to finish.");
}

TEST_F(JobOrder, MakeJobSnapshotReadsTheStageAgainAfterTheDialogsSnapshot) {
    TarvaneTransferJobSnapshot row;
    CallWhileLocked([&] { row = Job.MakeJobSnapshot(); });
    EXPECT_TRUE(ClockIsRead());
    PrivateOf<JobMember::Stage>(Job) = TarvaneTransferStage::Copying;
    Release();
    EXPECT_EQ(row.State, "Copying");
}

} // namespace
