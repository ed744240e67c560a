// What follows a job that carries modes and dates over, and what it makes of the job's outcome.

#include "finishing_phase.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "at_prompt.h"
#include "fake_utimensat.h"
#include "no_room_for_threads.h"

namespace {

using std::chrono::milliseconds;

constexpr std::int64_t kLongAgo = 1000000000;
constexpr mode_t kSourceMode = 0644;

// Two files that a job has copied and left private.
class FinishingPhase : public PhaseAtPrompt {
protected:
    FinishingPhase() {
        for (const char* name : {"a", "b"}) {
            WriteFile(Root / "from" / name, "data");
            SetModifiedTime(Root / "from" / name, kLongAgo);
            EXPECT_EQ(::chmod((Root / "from" / name).c_str(), kSourceMode), 0);
            WriteFile(Root / "to" / name, "data");
            EXPECT_EQ(::chmod((Root / "to" / name).c_str(), 0600), 0);
        }
        // Only what a test waits for takes its time.
        Screen.StopClockUntil([] { return false; });
    }

    void Run() {
        StatusRecord record;
        StatusRecord::Writer writer(record, record.FileDescriptor());
        for (const char* name : {"a", "b"}) {
            struct stat status {};
            EXPECT_EQ(::stat((Root / "from" / name).c_str(), &status), 0);
            RecordedStatus source = RecordedStatusOf(status);
            source.SizeBytes += GrownBytes;
            const std::string path = PathOf(std::string("to/") + name);
            writer.Add({.What = RecordedEntry::Kind::File, .Name = path, .Source = source});
        }
        writer.Finish();
        const AnsweredNames names;
        RunFinishingPhase({.Record = record,
                           .Names = names,
                           .Preserve = {.bMode = bCarriesModes, .bTimes = true},
                           .bWhole = Outcome.Result == RunResult::Succeeded},
                          Context(), Outcome);
    }

    // The first file's turn takes until the latch is open, and the clock goes on meanwhile.
    void Hold() {
        Times.emplace([this] {
            bHeld = true;
            Latch.Wait();
            return 0;
        });
        Screen.StopClockUntil([this] { return bHeld && !bReleased; });
    }
    std::function<bool()> IsHeld() {
        return [this] { return bHeld.load(); };
    }
    void Release() {
        bReleased = true;
        Latch.Open();
    }
    std::function<void()> Releasing() {
        return [this] { Release(); };
    }

    void LeaveAtOnce() {
        Hold();
        Screen.PressWhen(IsHeld(), {kEscapeKey});
        Screen.Script({Screen.Always(), {{}, {kEscapeKey}}, Releasing()});
        int status = 0;
        try {
            Run();
        } catch (const ScriptedExit& exited) {
            status = exited.Status;
        }
        EXPECT_EQ(status, 1000 + SIGINT);
    }

    mode_t ModeOf(const std::string& Name) const {
        struct stat status {};
        EXPECT_EQ(::stat((Root / "to" / Name).c_str(), &status), 0);
        return status.st_mode & 07777;
    }
    void ExpectOutcome(RunResult Result, const std::string& Text,
                       std::optional<int> EndSignal = std::nullopt) {
        EXPECT_EQ(Outcome.Result, Result);
        EXPECT_EQ(Outcome.Text, Text);
        EXPECT_EQ(Outcome.EndSignal, EndSignal);
        EXPECT_TRUE(Screen.IsThrough());
    }
    void ExpectFinished() {
        EXPECT_EQ(Outcome.Finishing->Finished, 2U);
        EXPECT_EQ(Outcome.Finishing->Unreached, 0U);
        EXPECT_EQ(ModeOf("a"), kSourceMode);
        EXPECT_EQ(ModeOf("b"), kSourceMode);
        EXPECT_EQ(Report.Log.back(), "finishing over 2 of 2");
    }
    // In the first file's turn, which came to its end.
    void ExpectCanceled() {
        EXPECT_TRUE(Outcome.Finishing->bCanceled);
        EXPECT_EQ(Outcome.Finishing->Unreached, 1U);
        EXPECT_EQ(ModeOf("a"), kSourceMode);
        EXPECT_EQ(ModeOf("b"), 0600U);
        EXPECT_EQ(Report.Log.back(), "finishing is left at 1 of 2");
    }

    static constexpr const char* kCopied = "Copied 2 entries.";

    SharedLatch Latch;
    std::optional<FakeUtimensat> Times;
    std::atomic<bool> bHeld{false};
    bool bReleased = false;
    std::uint64_t GrownBytes = 0;
    bool bCarriesModes = true;
    RunOutcome Outcome{
        .Result = RunResult::Succeeded, .Text = kCopied, .Counts = TransferCounts{.Entries = 2}};
};

} // namespace

TEST_F(FinishingPhase, GivesCopiesTheirModesWithoutAWord) {
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied);
    ExpectFinished();
    EXPECT_EQ(Report.Count("finishing 0 of 2"), 0);
    EXPECT_EQ(Screen.Written(), "");
}

TEST_F(FinishingPhase, ShowsItselfAfterASecond) {
    Hold();
    const Terminal::TimePoint start = Screen.Now();
    Screen.Script({Reports("finishing 0 of 2", 2), {}, [this, start] {
                       EXPECT_GE(Screen.Now() - start, milliseconds(1000));
                       EXPECT_LE(Screen.Now() - start, milliseconds(1500));
                       Shown.Show({{"block"}}, Screen.Size());
                       Release();
                   }});
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied);
    ExpectFinished();
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(FinishingPhase, EndsWithEscAndLeavesTheRestPrivate) {
    Hold();
    Screen.PressWhen(IsHeld(), {kEscapeKey});
    Screen.Script({Screen.Always(), {}, Releasing()});
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied, SIGINT);
    ExpectCanceled();
}

TEST_F(FinishingPhase, EndsWithNoOtherKey) {
    Hold();
    Screen.PressWhen(IsHeld(), {PressedKey('q'), kEnterKey});
    Screen.Script({Screen.Later(milliseconds(300)), {}, Releasing()});
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied);
    ExpectFinished();
}

TEST_F(FinishingPhase, ComesToItsEndAfterASignalWhenItIsFast) {
    Hold();
    Screen.RaiseWhen(IsHeld(), SIGTERM);
    Screen.Script({Screen.Later(milliseconds(700)), {}, Releasing()});
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied, SIGTERM);
    ExpectFinished();
}

TEST_F(FinishingPhase, EndsASecondAfterASignal) {
    Hold();
    Screen.RaiseWhen(IsHeld(), SIGTERM);
    Screen.Script({Screen.Later(milliseconds(1300)), {}, Releasing()});
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied, SIGTERM);
    ExpectCanceled();
}

TEST_F(FinishingPhase, EndsASecondAfterNobodyReadsItsRecords) {
    Hold();
    Screen.Script({IsHeld(), {}, [this] { Report.bBroken = true; }});
    Screen.Script({Screen.Later(milliseconds(1300)), {}, Releasing()});
    Run();
    ExpectOutcome(RunResult::Succeeded, kCopied, SIGPIPE);
    ExpectCanceled();
}

TEST_F(FinishingPhase, LeavesAtOnceWhenItIsAskedTwice) {
    LeaveAtOnce();
    EXPECT_EQ(Screen.Screen(), "tarvane: left before all modes and dates were set: what was not "
                               "reached stays private\n");
}

TEST_F(FinishingPhase, CallsNothingPrivateWhereModesAreNotCarriedOver) {
    bCarriesModes = false;
    LeaveAtOnce();
    EXPECT_EQ(Screen.Screen(), "tarvane: left before all modes and dates were set\n");
}

TEST_F(FinishingPhase, AnswersAStatusRequest) {
    Hold();
    Screen.RaiseWhen(IsHeld(), SIGUSR1);
    Screen.Script({Screen.Shows("Setting modes and dates: 0 of 2 entries.\n"), {}, Releasing()});
    Run();
    ExpectFinished();
}

TEST_F(FinishingPhase, ComesAfterAJobThatEscHasCanceled) {
    Loop.Requests().Interrupt();
    Outcome.Result = RunResult::Canceled;
    Run();
    ExpectOutcome(RunResult::Canceled, kCopied);
    ExpectFinished();
    // The end of the run does not wait for an output that stands still.
    EXPECT_TRUE(Loop.Requests().IsAsked());
    EXPECT_FALSE(Loop.Requests().MustLeave(Screen.Now()));
}

TEST_F(FinishingPhase, EndsWithEscAfterAJobThatEscHasCanceled) {
    Loop.Requests().Interrupt();
    Outcome.Result = RunResult::Canceled;
    Hold();
    Screen.PressWhen(IsHeld(), {kEscapeKey});
    Screen.Script({Screen.Always(), {}, Releasing()});
    Run();
    ExpectOutcome(RunResult::Canceled, kCopied, SIGINT);
    ExpectCanceled();
}

TEST_F(FinishingPhase, ComesAfterAJobThatASignalHasCanceled) {
    Loop.Requests().Terminate(SIGTERM, Screen.Now());
    Outcome.Result = RunResult::Canceled;
    Run();
    ExpectOutcome(RunResult::Canceled, kCopied, SIGTERM);
    ExpectFinished();
}

TEST_F(FinishingPhase, CallsNothingPrivateThatTheJobHasNotMade) {
    Outcome.Result = RunResult::Canceled;
    Outcome.Counts = TransferCounts{};
    Hold();
    Screen.PressWhen(IsHeld(), {kEscapeKey});
    Screen.Script({Screen.Always(), {}, Releasing()});
    Run();
    EXPECT_TRUE(Outcome.Finishing->bCanceled);
    EXPECT_EQ(Outcome.Finishing->Unreached, 0U);
}

TEST_F(FinishingPhase, MakesAFailureOfCopiesThatAreNotAsLong) {
    GrownBytes = 1;
    Run();
    ExpectOutcome(RunResult::Failed, "2 copies are not as long as their sources were");
    ExpectFinished();
    EXPECT_EQ(Outcome.Finishing->FirstChanged,
              (std::vector<std::string>{PathOf("to/a"), PathOf("to/b")}));
}

TEST_F(FinishingPhase, MakesAFailureOfWhatCannotBeSet) {
    Times.emplace([] { return EIO; });
    Run();
    ExpectOutcome(RunResult::Failed, "cannot set the times of '" + PathOf("to/a") +
                                         "': Input/output error, and 1 entry more could not be "
                                         "changed");
}

TEST_F(FinishingPhase, KeepsWhatAJobHasFailedBy) {
    GrownBytes = 1;
    Outcome.Result = RunResult::Failed;
    Outcome.Text = "the disk is full";
    Run();
    ExpectOutcome(RunResult::Failed,
                  "the disk is full; 2 copies are not as long as their sources were");
}

TEST_F(FinishingPhase, MakesAFailureOfACanceledJobWhenItFails) {
    GrownBytes = 1;
    Outcome.Result = RunResult::Canceled;
    Run();
    ExpectOutcome(RunResult::Failed, "2 copies are not as long as their sources were");
}

TEST_F(FinishingPhase, SaysThatAllIsPrivateWhenItCannotBegin) {
    const NoRoomForThreads noRoom;
    Run();
    EXPECT_EQ(Outcome.Result, RunResult::Failed);
    EXPECT_EQ(Outcome.Text, "cannot set all modes and dates: Resource temporarily unavailable");
    EXPECT_EQ(Outcome.Finishing->Unreached, 2U);
    EXPECT_EQ(ModeOf("a"), 0600U);
}
