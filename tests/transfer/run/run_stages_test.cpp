// A run from stage to stage, and its way out of each of them.

#include "child_processes.h"
#include "fake_syncfs.h"
#include "fake_utimensat.h"
#include "open_descriptors.h"
#include "run_fixture.h"
#include "shared_latch.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <optional>
#include <set>
#include <thread>

namespace fs = std::filesystem;

namespace {

using std::chrono::milliseconds;

constexpr char kUntouched[] = "Canceled before anything was touched.";

class RunStages : public RunFixture {
protected:
    // With the first thread of a process, the thread sanitizer starts one that stays.
    static void SetUpTestSuite() {
        std::thread([] {}).join();
    }

    // Everything that can keep a run in a stage: a link to a directory among the sources, a taken
    // name, a file that takes its time to get its date, and a disk that does not answer.
    RunStages() {
        fs::create_directory(Root / "elsewhere");
        fs::create_directory_symlink(Root / "elsewhere", Root / "from/link");
        WriteFile(Root / "to/b", "old");
        Request.Preserve = {.bMode = true, .bTimes = true};
        Request.Flush = FlushChoice::Always;
        Disk.Syncfs = FakeSyncfs::NeverEnd;
    }
    ~RunStages() override { Latch.Open(); }

    TransferRun Begin() const { return {Request, PlanOf({"link", "a", "b"})}; }

    // Lets the run go on to the stage, where it stays.
    testing::AssertionResult Stays(TransferRun& Run, Stage Wanted) {
        if (Wanted == Stage::Looking) {
            return testing::AssertionSuccess();
        }
        testing::AssertionResult reached = Reaches(Run, Stage::Judged);
        if (!reached || Wanted == Stage::Judged) {
            return reached;
        }
        Run.GoOn();
        reached = Asks(Run);
        if (!reached || Wanted == Stage::Copying) {
            return reached;
        }
        if (Wanted == Stage::Finishing) {
            Hold();
        }
        Answer(Run, TarvaneTransferConflictAction::Overwrite);
        reached = Reaches(Run, Wanted);
        return !reached || Wanted != Stage::Finishing
                   ? reached
                   : BecomesTrue("an entry is held", [this] { return bHeld.load(); });
    }

    // The entry that is held has its turn when so much time is over since a signal.
    void EndFinishingAfter(TransferRun& Run, milliseconds Time) {
        Run.Attend(Now);
        Now += Time;
        Run.Attend(Now);
        Latch.Open();
        ASSERT_TRUE(Ends(Run));
        EXPECT_EQ(Run.Outcome().EndSignal, SIGTERM);
    }

    void Hold() {
        Times.emplace([this] {
            bHeld = true;
            Latch.Wait();
            return 0;
        });
    }

    FakeSyncfs Disk;
    std::optional<FakeUtimensat> Times;
    std::atomic<bool> bHeld{false};
    SharedLatch Latch;
};

class EachStage : public RunStages, public testing::WithParamInterface<TransferRun::Stage> {};

std::set<std::string> Threads() {
    std::set<std::string> ids;
    for (const auto& entry : fs::directory_iterator("/proc/self/task")) {
        ids.insert(entry.path().filename());
    }
    return ids;
}

// What the process has beside its memory.
class Holdings {
public:
    // Those of the test before may still be about to end.
    Holdings() { EXPECT_TRUE(NoChildIsLeft()); }

    // The system lists a thread for a moment after its end, now and before.
    testing::AssertionResult AreAllThereIs() const {
        return BecomesTrue("nothing is left behind", [this] {
            return std::ranges::includes(OldThreads, Threads()) &&
                   std::ranges::includes(OldDescriptors, OpenDescriptors()) &&
                   ChildProcesses().empty();
        });
    }

private:
    const std::set<std::string> OldThreads = Threads();
    const std::set<std::string> OldDescriptors = OpenDescriptors();
};

} // namespace

TEST_F(RunStages, FollowEachOther) {
    Disk.Syncfs = nullptr;
    TransferRun run = Begin();
    EXPECT_EQ(run.CurrentStage(), Stage::Looking);
    EXPECT_EQ(run.Found(), nullptr);
    EXPECT_FALSE(run.Verdict());
    EXPECT_EQ(run.Job(), nullptr);

    ASSERT_TRUE(Stays(run, Stage::Judged));
    EXPECT_EQ(run.EntriesSeen(), 3U);
    ASSERT_NE(run.Found(), nullptr);
    EXPECT_EQ(run.Found()->Findings.Count(PreflightFindingKind::LinkToDirectory), 1U);
    EXPECT_EQ(run.Verdict()->Question, "Go on with the copy?");
    EXPECT_EQ(TreeOf(Root / "to"), (Tree{{"b", "file old"}}));

    run.GoOn();
    ASSERT_TRUE(Asks(run));
    EXPECT_EQ(run.CurrentStage(), Stage::Copying);
    EXPECT_EQ(run.View(Now).Snapshot.StageText, run.Job()->MakeUiSnapshot().StageText);
    EXPECT_EQ(ModeOf("to/a"), 0600U);

    Hold();
    Answer(run, TarvaneTransferConflictAction::Overwrite);
    ASSERT_TRUE(Reaches(run, Stage::Finishing));
    EXPECT_EQ(run.FinishingProgress().Total, 3U);
    EXPECT_FALSE(run.FinishingProgress().bFinished);

    Latch.Open();
    ASSERT_TRUE(Reaches(run, Stage::Flushing));
    EXPECT_TRUE(run.FinishingProgress().bFinished);
    EXPECT_EQ(ModeOf("to/a"), 0640U);
    EXPECT_EQ(ModeOf("to/b"), 0640U);

    ASSERT_TRUE(Ends(run));
    EXPECT_TRUE(run.FlushingProgress().bFinished);
    EXPECT_TRUE(run.View(Now).Snapshot.bSucceeded);
    EXPECT_EQ(run.Answered().size(), 1U);
    EXPECT_EQ(run.Outcome().Result, RunResult::Succeeded);
    EXPECT_EQ(run.EndLines(), (Strings{run.Outcome().Text, run.Outcome().FlushText}));
    EXPECT_EQ(ReadFile(Root / "to/b"), "new");
}

TEST_F(RunStages, TheViewOfAJobThatIsOverStandsStill) {
    Request.Flush = FlushChoice::Never;
    TransferRun run(Request, PlanOf({"a"}));
    ASSERT_TRUE(Ends(run));
    const TarvaneTransferUiSnapshot last = run.View(Now).Snapshot;
    ASSERT_TRUE(BecomesTrue("the job's own clock has gone on", [&] {
        return run.Job()->MakeUiSnapshot().ElapsedSeconds > last.ElapsedSeconds;
    }));
    EXPECT_TRUE(last.bSucceeded);
    EXPECT_EQ(run.View(Now).Snapshot.ElapsedSeconds, last.ElapsedSeconds);
}

TEST_F(RunStages, AreLeftOutWhereThereIsNothingToDo) {
    Request.Preserve = {};
    Request.Flush = FlushChoice::Never;
    TransferRun run(Request, PlanOf({"a"}));
    const std::set<Stage> expected{Stage::Looking, Stage::Copying, Stage::Over};
    EXPECT_TRUE(BecomesTrue("the run is over", [&] {
        EXPECT_TRUE(expected.contains(run.CurrentStage()));
        return run.Attend(Now);
    }));
    EXPECT_EQ(run.EndLines(), Strings{run.Outcome().Text});
    EXPECT_EQ(run.Outcome().bFlushed, std::nullopt);
    EXPECT_FALSE(run.Outcome().Finishing);
}

TEST_P(EachStage, IsLookedAtAsOftenAsItGoesOn) {
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, GetParam()));
    if (GetParam() == Stage::Judged) {
        EXPECT_GT(run.LongestWait(), std::chrono::minutes(1));
    } else {
        EXPECT_LE(run.LongestWait(), milliseconds(20));
    }
    Latch.Open();
}

TEST_P(EachStage, LeavesNothingBehindWhenTheRunIsLetGoOf) {
    const Holdings before;
    {
        TransferRun run = Begin();
        ASSERT_TRUE(Stays(run, GetParam()));
        Latch.Open();
    }
    EXPECT_TRUE(before.AreAllThereIs());
}

INSTANTIATE_TEST_SUITE_P(Run, EachStage,
                         testing::Values(TransferRun::Stage::Looking, TransferRun::Stage::Judged,
                                         TransferRun::Stage::Copying, TransferRun::Stage::Finishing,
                                         TransferRun::Stage::Flushing));

TEST_F(RunStages, HoldNothingWhenTheyAreOver) {
    const Holdings before;
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, Stage::Flushing));
    run.Cancel();
    EXPECT_EQ(run.CurrentStage(), Stage::Over);
    EXPECT_TRUE(before.AreAllThereIs());
}

TEST_F(RunStages, BeforeTheJobEndWithACancel) {
    for (const Stage stage : {Stage::Looking, Stage::Judged}) {
        TransferRun run = Begin();
        ASSERT_TRUE(Stays(run, stage));
        run.Cancel();
        EXPECT_EQ(run.CurrentStage(), Stage::Over);
        EXPECT_EQ(run.Outcome().Result, RunResult::Canceled);
        EXPECT_EQ(run.Outcome().EndSignal, std::nullopt);
        EXPECT_EQ(run.EndLines(), Strings{kUntouched});
        EXPECT_EQ(run.Job(), nullptr);
        run.GoOn();
        EXPECT_EQ(run.CurrentStage(), Stage::Over);
        EXPECT_EQ(TreeOf(Root / "to"), (Tree{{"b", "file old"}}));
    }
}

TEST_F(RunStages, GoOnAfterAJobThatIsCanceled) {
    Disk.Syncfs = nullptr;
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, Stage::Copying));
    EXPECT_FALSE(run.IsCanceled());
    Hold();
    run.Cancel();
    EXPECT_TRUE(run.IsCanceled());
    ASSERT_TRUE(Reaches(run, Stage::Finishing));
    EXPECT_FALSE(run.IsCanceled());
    Latch.Open();
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.Outcome().Result, RunResult::Canceled);
    EXPECT_EQ(run.Outcome().EndSignal, std::nullopt);
    EXPECT_EQ(run.Outcome().Finishing->Finished, 2U);
    EXPECT_EQ(run.Outcome().bFlushed, true);
    EXPECT_EQ(ModeOf("to/a"), 0640U);
    EXPECT_EQ(ReadFile(Root / "to/b"), "old");
}

TEST_F(RunStages, LeaveTheRestPrivateWhenTheFinishingIsCanceled) {
    Disk.Syncfs = nullptr;
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, Stage::Finishing));
    run.Cancel();
    EXPECT_TRUE(run.IsCanceled());
    Latch.Open();
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.Outcome().Result, RunResult::Succeeded);
    EXPECT_EQ(run.Outcome().EndSignal, SIGINT);
    EXPECT_TRUE(run.Outcome().Finishing->bCanceled);
    EXPECT_GT(run.Outcome().Finishing->Unreached, 0U);
    EXPECT_EQ(ModeOf("to/b"), 0600U);
    EXPECT_EQ(run.EndLines().size(), 3U);
}

TEST_F(RunStages, LeaveAFlushThatIsCanceled) {
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, Stage::Flushing));
    run.Cancel();
    EXPECT_EQ(run.CurrentStage(), Stage::Over);
    EXPECT_EQ(run.Outcome().Result, RunResult::Succeeded);
    EXPECT_EQ(run.Outcome().EndSignal, SIGINT);
    EXPECT_EQ(run.Outcome().bFlushed, false);
    EXPECT_NE(run.EndLines().back().find("umount says that the target is busy"), std::string::npos);
}

TEST_F(RunStages, EndByASignalBeforeTheJob) {
    for (const Stage stage : {Stage::Looking, Stage::Judged}) {
        TransferRun run = Begin();
        ASSERT_TRUE(Stays(run, stage));
        run.EndBy(SIGTERM);
        EXPECT_EQ(run.CurrentStage(), Stage::Over);
        EXPECT_EQ(run.Outcome().EndSignal, SIGTERM);
        EXPECT_EQ(run.EndLines(), Strings{kUntouched});
    }
}

TEST_F(RunStages, AreFinishedButNotFlushedAfterASignal) {
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, Stage::Copying));
    run.EndBy(SIGTERM);
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.Outcome().Result, RunResult::Canceled);
    EXPECT_EQ(run.Outcome().EndSignal, SIGTERM);
    EXPECT_EQ(run.Outcome().bFlushed, false);
    EXPECT_EQ(ModeOf("to/a"), 0640U);
}

TEST_F(RunStages, LeaveTheFinishingASecondAfterASignal) {
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, Stage::Finishing));
    run.EndBy(SIGTERM);
    EndFinishingAfter(run, milliseconds(900));
    EXPECT_FALSE(run.Outcome().Finishing->bCanceled);
    EXPECT_EQ(ModeOf("to/b"), 0640U);
}

TEST_F(RunStages, LeaveTheFinishingNoMoreThanASecondAfterASignal) {
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, Stage::Finishing));
    run.EndBy(SIGTERM);
    EndFinishingAfter(run, milliseconds(1000));
    EXPECT_TRUE(run.Outcome().Finishing->bCanceled);
    EXPECT_EQ(ModeOf("to/b"), 0600U);
}

TEST_F(RunStages, LeaveAFlushAfterASignal) {
    TransferRun run = Begin();
    ASSERT_TRUE(Stays(run, Stage::Flushing));
    run.EndBy(SIGHUP);
    EXPECT_EQ(run.CurrentStage(), Stage::Over);
    EXPECT_EQ(run.Outcome().EndSignal, SIGHUP);
    EXPECT_EQ(run.Outcome().bFlushed, false);
}

TEST_F(RunStages, TakeNoAnswerToAQuestionThatIsGone) {
    WriteFile(Root / "to/a", "old");
    constexpr auto kOverwrite = TarvaneTransferConflictAction::Overwrite;
    TransferRun run = Begin();
    run.Answer(1, {.Action = kOverwrite});
    ASSERT_TRUE(Stays(run, Stage::Copying));
    const std::uint64_t first = run.OpenQuestion()->Id;
    EXPECT_EQ(run.OpenQuestion()->Name.Conflict.DestinationPath, PathOf("to/a"));
    Answer(run, kOverwrite);
    ASSERT_TRUE(Asks(run));
    run.Answer(first, {.Action = kOverwrite});
    EXPECT_EQ(run.Answered().size(), 1U);
    ASSERT_TRUE(run.OpenQuestion());
    EXPECT_NE(run.OpenQuestion()->Id, first);
    Answer(run, TarvaneTransferConflictAction::Skip);
    ASSERT_TRUE(Reaches(run, Stage::Flushing));
    run.Answer(first, {.Action = kOverwrite});
    EXPECT_FALSE(run.OpenQuestion());
    EXPECT_EQ(ReadFile(Root / "to/a"), "new");
    EXPECT_EQ(ReadFile(Root / "to/b"), "old");
}
