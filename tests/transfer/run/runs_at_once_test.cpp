// Several runs in one process.

#include "run_fixture.h"

#include <cstddef>
#include <deque>

namespace {

constexpr mode_t kUmask = 027;

// Three runs at once, each to a directory of its own where "b" is taken, and above which one is
// missing.
class RunsAtOnce : public RunFixture {
protected:
    RunsAtOnce() {
        Request.Preserve = {.bMode = true};
        for (const char* name : {"1", "2", "3"}) {
            const std::string destination = std::string("to/") + name;
            WriteFile(Root / destination / "b", "old");
            TarvaneTransferPlan plan = PlanOf({"a", "b"}, destination);
            plan.Items[0].DestinationPath = Root / destination / "made/a";
            Runs.emplace_back(Request, std::move(plan));
        }
    }
    ~RunsAtOnce() override { ::umask(UmaskBefore); }

    // Attends all of them in turn.
    template <typename Predicate>
    testing::AssertionResult AllBecome(const std::string& What, Predicate Holds) {
        return BecomesTrue(What, [&] {
            bool bAll = true;
            for (TransferRun& run : Runs) {
                run.Attend(Now);
                if (run.CurrentStage() == Stage::Judged) {
                    run.GoOn();
                }
                bAll = Holds(run) && bAll;
            }
            return bAll;
        });
    }
    testing::AssertionResult AllAsk() {
        return AllBecome("all ask",
                         [](const TransferRun& Run) { return Run.OpenQuestion().has_value(); });
    }
    testing::AssertionResult AllEnd() {
        return AllBecome("all are over",
                         [](const TransferRun& Run) { return Run.CurrentStage() == Stage::Over; });
    }

    const mode_t UmaskBefore = ::umask(kUmask);
    std::deque<TransferRun> Runs;
};

} // namespace

TEST_F(RunsAtOnce, DoNotDisturbEachOther) {
    ASSERT_TRUE(AllAsk());
    EXPECT_EQ(CollectActiveTarvaneTransferJobSnapshots().size(), 3U);
    for (auto run = Runs.rbegin(); run != Runs.rend(); ++run) {
        Answer(*run, TarvaneTransferConflictAction::Overwrite);
    }
    ASSERT_TRUE(AllEnd());
    for (const TransferRun& run : Runs) {
        EXPECT_EQ(run.Outcome().Result, RunResult::Succeeded) << run.Outcome().Text;
    }
    for (const std::string name : {"to/1/", "to/2/", "to/3/"}) {
        EXPECT_EQ(ReadFile(Root / name / "b"), "new");
        EXPECT_EQ(ModeOf(name + "b"), 0640U);
        EXPECT_EQ(ModeOf(name + "made"), 0750U);
        EXPECT_EQ(ModeOf(name + "made/a"), 0640U);
    }
    EXPECT_EQ(::umask(kUmask), kUmask);
}

TEST_F(RunsAtOnce, AreCanceledOneByOne) {
    ASSERT_TRUE(AllAsk());
    Runs[1].Cancel();
    ASSERT_TRUE(Ends(Runs[1]));
    EXPECT_EQ(Runs[1].Outcome().Result, RunResult::Canceled);
    for (const std::size_t other : {0U, 2U}) {
        ASSERT_TRUE(Runs[other].OpenQuestion());
        Answer(Runs[other], TarvaneTransferConflictAction::Skip);
    }
    ASSERT_TRUE(AllEnd());
    EXPECT_EQ(Runs[0].Outcome().Result, RunResult::Succeeded);
    EXPECT_EQ(Runs[2].Outcome().Result, RunResult::Succeeded);
}
