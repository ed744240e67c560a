// The wait for the disk after a job, and what it makes of the job's outcome.

#include "flush_phase.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "at_prompt.h"
#include "becomes_true.h"
#include "child_processes.h"
#include "fake_syncfs.h"
#include "flush_texts.h"

namespace {

using std::chrono::milliseconds;

class FlushPhase : public PhaseAtPrompt {
protected:
    void Run() { RunFlushPhase(Flush, Context(), Outcome); }

    // The disk takes its time until the latch is open.
    void Hold() {
        Disk.Syncfs = [this](int) {
            Latch.Wait();
            return 0;
        };
    }
    std::function<void()> Release() {
        return [this] { Latch.Open(); };
    }

    FlushReach Reach() {
        Flush.Attend();
        return Flush.Progress().Reach;
    }

    // What is said depends on what holds the test's files.
    void ExpectOutcome(RunResult Result, const std::string& Text, bool bFlushed,
                       std::optional<int> EndSignal = std::nullopt) {
        EXPECT_EQ(Outcome.Result, Result);
        EXPECT_EQ(Outcome.Text, Text);
        EXPECT_EQ(Outcome.bFlushed, bFlushed);
        EXPECT_EQ(Outcome.EndSignal, EndSignal);
        EXPECT_TRUE(Screen.IsThrough());
    }
    void ExpectFlushed() {
        ExpectOutcome(RunResult::Succeeded, kCopied, true);
        EXPECT_EQ(Outcome.FlushText, WrittenText(Reach(), Plan, Outcome));
        EXPECT_EQ(Report.Log.back(), "flush over ");
    }
    void ExpectEndedBy(int Signal) {
        ExpectOutcome(RunResult::Succeeded, kCopied, false, Signal);
        EXPECT_EQ(Outcome.FlushText, LeftFlushText(Reach()));
        EXPECT_EQ(Report.Count("flush over "), 0);
    }

    // One that was let go of may take a moment to end.
    static void ExpectNoProcess() {
        EXPECT_TRUE(BecomesTrue("no process is left", [] { return ChildProcesses().empty(); }));
    }

    static constexpr const char* kCopied = "Copied 1 item(s).";

    SharedLatch Latch;
    FakeSyncfs Disk;
    const TarvaneTransferPlan Plan{};
    FlushStep Flush{Plan, {Root.Path()}};
    RunOutcome Outcome{.Result = RunResult::Succeeded, .Text = kCopied};
};

} // namespace

TEST_F(FlushPhase, IsReportedUntilEverythingIsWritten) {
    Hold();
    Screen.Script({Reports("flush", 3), {}, Release()});
    Run();
    ExpectFlushed();
}

TEST_F(FlushPhase, TakesItsBlockAway) {
    Hold();
    Screen.Script({Reports("flush"), {}, [this] {
                       Shown.Show({{"block"}}, Screen.Size());
                       Latch.Open();
                   }});
    Run();
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(FlushPhase, MakesAFailureOfWhatCannotBeWritten) {
    Disk.Syncfs = FakeSyncfs::FailWith(EIO);
    Run();
    const std::string sentence =
        "cannot write everything to '" + Root.Path().string() + "': Input/output error";
    ExpectOutcome(RunResult::Failed, sentence, false);
    EXPECT_EQ(Report.Log.back(), "flush over " + sentence);
}

TEST_F(FlushPhase, EndsWithEsc) {
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Screen.PressWhen(Reports("flush"), {kEscapeKey});
    Run();
    ExpectEndedBy(SIGINT);
}

TEST_F(FlushPhase, EndsWithNoOtherKey) {
    Hold();
    Screen.PressWhen(Reports("flush"), {PressedKey('q'), kEnterKey});
    Screen.Script({Screen.Later(milliseconds(300)), {}, Release()});
    Run();
    ExpectFlushed();
}

TEST_F(FlushPhase, EndsWithASignal) {
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Screen.RaiseWhen(Reports("flush"), SIGTERM);
    Run();
    ExpectEndedBy(SIGTERM);
}

TEST_F(FlushPhase, EndsWhenNobodyReadsItsRecords) {
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Screen.Script({Reports("flush"), {}, [this] { Report.bBroken = true; }});
    Run();
    ExpectEndedBy(SIGPIPE);
}

TEST_F(FlushPhase, KeepsTheSignalWhenItsRecordsBreakToo) {
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Screen.Script({Reports("flush"), {{SIGTERM}, {}}, [this] { Report.bBroken = true; }});
    Run();
    ExpectEndedBy(SIGTERM);
}

TEST_F(FlushPhase, AnswersAStatusRequest) {
    Hold();
    Screen.RaiseWhen(Reports("flush"), SIGUSR1);
    Screen.Script({Screen.Shows("Writing to the disk: "), {}, Release()});
    Run();
    ExpectFlushed();
}

TEST_F(FlushPhase, IsLookedAtOftenerThanItIsDrawn) {
    Hold();
    Terminal::TimePoint drawn;
    Screen.Script({Reports("flush"), {}, [&] { drawn = Screen.Now(); }});
    Screen.Script({Screen.Later(milliseconds(30)), {}, [&] {
                       EXPECT_LE(Screen.Now() - drawn, milliseconds(50));
                       Latch.Open();
                   }});
    Run();
    ExpectFlushed();
}

TEST_F(FlushPhase, ComesAfterAJobThatEscHasCanceled) {
    Loop.Requests().Interrupt();
    Outcome = {.Result = RunResult::Canceled, .Text = kCopied};
    Run();
    ExpectOutcome(RunResult::Canceled, kCopied, true);
}

TEST_F(FlushPhase, EndsWithEscAfterAJobThatEscHasCanceled) {
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Loop.Requests().Interrupt();
    Outcome = {.Result = RunResult::Canceled, .Text = kCopied};
    Screen.PressWhen(Reports("flush"), {kEscapeKey});
    Run();
    ExpectOutcome(RunResult::Canceled, kCopied, false, SIGINT);
    EXPECT_EQ(Outcome.FlushText, LeftFlushText(Reach()));
}

TEST_F(FlushPhase, MakesAFailureOfACanceledJobWhenItFails) {
    Disk.Syncfs = FakeSyncfs::FailWith(EIO);
    Outcome = {.Result = RunResult::Canceled, .Text = kCopied};
    Run();
    ExpectOutcome(RunResult::Failed, kCopied, false);
    EXPECT_EQ(Outcome.FlushError,
              "cannot write everything to '" + Root.Path().string() + "': Input/output error");
}

TEST_F(FlushPhase, IsNotStartedWhenTheProgramIsToEnd) {
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Loop.Requests().Terminate(SIGTERM, Screen.Now());
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied, false);
    EXPECT_EQ(Outcome.FlushText, StillWritingText(Reach()));
    ExpectNoProcess();
    EXPECT_EQ(Report.Log, std::vector<std::string>());
}

TEST_F(FlushPhase, IsNotStartedWhenNobodyReadsItsRecords) {
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Report.bBroken = true;
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied, false);
    EXPECT_EQ(Outcome.FlushText, StillWritingText(Reach()));
    ExpectNoProcess();
}
