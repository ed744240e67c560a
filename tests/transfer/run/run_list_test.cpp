// Several transfers of one program.

#include "run_list.h"

#include "becomes_true.h"
#include "file_tree.h"
#include "no_descriptors_left.h"
#include "plan_fixture.h"

#include <csignal>

namespace {

namespace fs = std::filesystem;

class RunListTest : public PlanFixture {
protected:
    std::uint64_t Start(const Names& Operands,
                        FileConflictChoice OnConflict = FileConflictChoice::Ask) {
        TransferRequest request = Copy(Operands);
        request.OnConflict = OnConflict;
        request.Flush = FlushChoice::Never;
        return Runs.Start(request, Plan(request));
    }

    bool Reach(const std::string& What, const std::function<bool()>& Condition) {
        return bool(BecomesTrue(What, [&] {
            Runs.Attend(std::chrono::steady_clock::now());
            return Condition();
        }));
    }
    bool AllEnd() {
        return Reach("all are over", [&] { return Runs.CountRunning() == 0; });
    }
    RunResult ResultOf(std::uint64_t Id) { return Runs.Find(Id)->Run->Outcome().Result; }

    RunList Runs;
};

TEST_F(RunListTest, RunsSeveralAtOnceInTheOrderOfTheirStart) {
    const std::uint64_t first = Start({"a.txt", "dest/1"});
    const std::uint64_t second = Start({"tree", "dest/2"});
    const std::uint64_t third = Start({"b.txt", "dest/3"});
    EXPECT_EQ(Runs.CountRunning(), 3U);
    ASSERT_TRUE(AllEnd());
    std::vector<std::uint64_t> ids;
    for (const ListedRun& listed : Runs.All()) {
        ids.push_back(listed.Id);
        EXPECT_EQ(listed.Run->Outcome().Result, RunResult::Succeeded);
        EXPECT_TRUE(listed.IsOver());
    }
    EXPECT_EQ(ids, (std::vector{first, second, third}));
    EXPECT_EQ(ReadFile("dest/1"), "a");
    EXPECT_EQ(ReadFile("dest/2/inner.txt"), "inner");
    EXPECT_EQ(ReadFile("dest/3"), "b");
    EXPECT_EQ(Runs.Find(third + 1), nullptr);
}

TEST_F(RunListTest, TellsOfEachEndOnce) {
    const std::uint64_t id = Start({"a.txt", "dest"});
    ASSERT_TRUE(Reach("the end is told", [&] { return Runs.Find(id)->bNewEnd; }));
    EXPECT_TRUE(Runs.Find(id)->IsOver());
    Runs.Find(id)->bNewEnd = false;
    Runs.Attend(std::chrono::steady_clock::now());
    EXPECT_FALSE(Runs.Find(id)->bNewEnd);
}

TEST_F(RunListTest, TellsOfTheEndOfARunThatSomebodyHasEnded) {
    const std::uint64_t id = Start({"a.txt", "dest"});
    Runs.Find(id)->Run->Cancel();
    ASSERT_TRUE(Runs.Find(id)->IsOver());
    Runs.Attend(std::chrono::steady_clock::now());
    EXPECT_TRUE(Runs.Find(id)->bNewEnd);
    Runs.Find(id)->bNewEnd = false;
    Runs.Attend(std::chrono::steady_clock::now());
    EXPECT_FALSE(Runs.Find(id)->bNewEnd);
}

TEST_F(RunListTest, KnowsWhichRunWaitsForAnAnswer) {
    WriteFile("dest/a.txt", "old");
    EXPECT_EQ(Runs.FirstWaiting(), std::nullopt);
    const std::uint64_t other = Start({"b.txt", "dest"});
    const std::uint64_t asking = Start({"a.txt", "dest"});
    ASSERT_TRUE(Reach("a question is open", [&] { return Runs.FirstWaiting().has_value(); }));
    EXPECT_EQ(Runs.FirstWaiting(), asking);
    TransferRun& run = *Runs.Find(asking)->Run;
    run.Answer(run.OpenQuestion()->Id, {.Action = TarvaneTransferConflictAction::Overwrite});
    ASSERT_TRUE(AllEnd());
    EXPECT_EQ(Runs.FirstWaiting(), std::nullopt);
    EXPECT_EQ(ResultOf(other), RunResult::Succeeded);
    EXPECT_EQ(ReadFile("dest/a.txt"), "a");
}

TEST_F(RunListTest, RunsAPlanAgainAndLeavesAloneWhatIsThere) {
    fs::create_directory("dest/b.txt");
    const std::uint64_t failing = Start({"a.txt", "b.txt", "dest"}, FileConflictChoice::Fail);
    ASSERT_TRUE(AllEnd());
    ASSERT_EQ(ResultOf(failing), RunResult::Failed);
    fs::remove("dest/b.txt");
    WriteFile("dest/a.txt", "a");
    const std::uint64_t again = Runs.StartAgain(failing);
    EXPECT_NE(again, failing);
    ASSERT_TRUE(AllEnd());
    const RunOutcome& outcome = Runs.Find(again)->Run->Outcome();
    EXPECT_EQ(outcome.Result, RunResult::Succeeded) << outcome.Text;
    EXPECT_EQ(outcome.Counts->Entries, 1U);
    EXPECT_EQ(ReadFile("dest/b.txt"), "b");
}

TEST_F(RunListTest, EndsAllBySignal) {
    WriteFile("dest/a.txt", "old");
    const std::uint64_t asking = Start({"a.txt", "dest"});
    ASSERT_TRUE(Reach("a question is open", [&] { return Runs.FirstWaiting().has_value(); }));
    Runs.EndAll(SIGTERM);
    ASSERT_TRUE(AllEnd());
    EXPECT_EQ(ResultOf(asking), RunResult::Canceled);
    EXPECT_EQ(Runs.Find(asking)->Run->Outcome().EndSignal, SIGTERM);
    EXPECT_EQ(ReadFile("dest/a.txt"), "old");
}

} // namespace
