// What a run comes to that does not do all that was asked, and what is said about it.

#include "fake_syncfs.h"
#include "fake_utimensat.h"
#include "needs.h"
#include "no_descriptors_left.h"
#include "no_processes_left.h"
#include "own_mount_namespace.h"
#include "run_fixture.h"

#include <cerrno>
#include <optional>

namespace {

// A file that nobody can read, not even root.
constexpr char kUnreadable[] = "/proc/sys/vm/drop_caches";

class RunEnd : public RunFixture {
protected:
    // Runs to the end, whatever the look finds.
    void RunToTheEnd(TransferRun& Run) {
        ASSERT_TRUE(BecomesTrue("the run is over", [&] {
            Run.GoOn();
            return Run.Attend(Now);
        }));
    }
};

TEST_F(RunEnd, SaysWhatHasFailedAndHowFarItCame) {
    TarvaneTransferPlan plan = PlanOf({"a", "b"});
    plan.Items[1].SourcePath = kUnreadable;
    TransferRun run(Request, plan);
    RunToTheEnd(run);
    EXPECT_EQ(run.Outcome().Result, RunResult::Failed);
    const Strings lines = run.EndLines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0],
              "/proc/sys/vm/drop_caches: Failed to open source file. (Permission denied)");
    EXPECT_EQ(lines[1].substr(0, 16), "Copied 1 entry, ");
    EXPECT_EQ(ReadFile(Root / "to/a"), "new");
}

// Its first bytes cannot be read, and there is no more to be said about it.
TEST_F(RunEnd, SaysInOneSentenceWhatElseHasFailed) {
    Request.Preserve = {.bTimes = true};
    const FakeUtimensat times([] { return EIO; });
    TarvaneTransferPlan plan = PlanOf({"a", "b"});
    plan.Items[1].SourcePath = "/proc/self/mem";
    TransferRun run(Request, plan);
    RunToTheEnd(run);
    EXPECT_EQ(run.EndLines().front(),
              "/proc/self/mem: Failed while reading source file; cannot set the times of '" +
                  PathOf("to/a") + "': Input/output error");
}

TEST_F(RunEnd, AsksAboutTooLittleRoomAndFailsWithoutIt) {
    NeedRoot();
    const OwnMountNamespace space;
    const ScopedMount disk = MountTmpfs(Root / "to", "size=64k");
    WriteFile(Root / "from/big", PatternBytes(100000));
    TransferRun run(Request, PlanOf({"a", "big"}));
    ASSERT_TRUE(Reaches(run, Stage::Judged));
    EXPECT_EQ(run.Found()->Findings.Count(PreflightFindingKind::TooLittleSpace), 1U);
    EXPECT_EQ(TreeOf(Root / "to"), Tree());
    run.GoOn();
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.Outcome().Result, RunResult::Failed);
    EXPECT_NE(run.EndLines().front().find("(No space left on "), std::string::npos)
        << run.EndLines().front();
    EXPECT_EQ(TreeOf(Root / "to"), (Tree{{"a", "file new"}}));
}

TEST_F(RunEnd, DoesNotBeginWhereAChoiceRefuses) {
    WriteFile(Root / "to/a", "old");
    Request.OnConflict = FileConflictChoice::Fail;
    TransferRun run(Request, PlanOf({"a", "b"}));
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.Outcome().Result, RunResult::Failed);
    EXPECT_EQ(run.EndLines(), Strings{"cannot create '" + PathOf("to/a") + "': File exists"});
    EXPECT_EQ(run.Job(), nullptr);
    EXPECT_TRUE(run.Answered().empty());
    EXPECT_FALSE(run.OpenQuestion());
    EXPECT_EQ(TreeOf(Root / "to"), (Tree{{"a", "file old"}}));
}

TEST_F(RunEnd, SaysThatTheLookCouldNotBegin) {
    std::optional<TransferRun> run;
    {
        const NoProcessesLeft noProcesses;
        run.emplace(Request, PlanOf({"a"}));
    }
    ASSERT_TRUE(Ends(*run));
    EXPECT_EQ(run->Outcome().Result, RunResult::Failed);
    EXPECT_EQ(run->EndLines(),
              Strings{"cannot look through the sources: Resource temporarily unavailable"});
    EXPECT_EQ(run->Found(), nullptr);
}

TEST_F(RunEnd, SaysThatNoRecordCouldBeKept) {
    Request.Preserve = {.bTimes = true};
    const TarvaneTransferPlan plan = PlanOf({"a"});
    std::optional<TransferRun> run;
    {
        const NoDescriptorsLeft noDescriptors;
        run.emplace(Request, plan);
    }
    EXPECT_EQ(run->CurrentStage(), Stage::Over);
    EXPECT_EQ(run->Outcome().Result, RunResult::Failed);
    EXPECT_EQ(run->EndLines(),
              Strings{"cannot keep a record of modes and dates: no temporary file: Too many "
                      "open files"});
}

TEST_F(RunEnd, SaysWhatTheDiskMayHaveLostBelowWhatWasDone) {
    FakeSyncfs disk;
    disk.Syncfs = FakeSyncfs::FailWith(EIO);
    Request.Flush = FlushChoice::Always;
    TransferRun run(Request, PlanOf({"a"}));
    RunToTheEnd(run);
    EXPECT_EQ(run.Outcome().Result, RunResult::Failed);
    const Strings lines = run.EndLines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].substr(0, 16), "Copied 1 entry, ");
    EXPECT_EQ(lines[1], "cannot write everything to '" + PathOf("to") + "': Input/output error");
}

TEST_F(RunEnd, NamesTheCopiesThatAreNotAsLongAsTheirSources) {
    Request.bMove = true;
    const RunOutcome outcome{
        .Result = RunResult::Failed,
        .Text = "2 copies are not as long as their sources were",
        .Counts = TransferCounts{.Entries = 3},
        .Finishing = FinishResult{.LeftAlone = 1, .FirstChanged = {"/x", "/y"}, .Unreached = 1}};
    EXPECT_EQ(
        JobEndLines(Request, outcome),
        (std::vector<EndLine>{
            {EndLine::Kind::Problem, outcome.Text + ":"},
            {EndLine::Kind::Detail, "  /x"},
            {EndLine::Kind::Detail, "  /y"},
            {EndLine::Kind::Problem, "the copy of 1 entry has not got what was to come along"},
            {EndLine::Kind::Done, CountsText(*outcome.Counts, Request.bMove)},
            {EndLine::Kind::Done,
             "1 entry was left alone: it is gone, or something else stands there now."}}));
}

} // namespace
