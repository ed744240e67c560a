// Transfers as rows and scenes.

#include "run_rows.h"

#include "becomes_true.h"
#include "file_tree.h"
#include "plan_fixture.h"

#include <chrono>
#include <cstdlib>
#include <functional>

namespace {

namespace fs = std::filesystem;
using Action = TarvaneTransferConflictAction;
using Stage = TransferRun::Stage;

class RunRowsTest : public PlanFixture {
protected:
    RunRowsTest() { setenv("SSH_CONNECTION", "somewhere", 1); }
    ~RunRowsTest() override { Runs.EndAll(SIGTERM); }

    std::uint64_t Start(const TransferRequest& Wanted) {
        TransferRequest request = Wanted;
        request.OnConflict = FileConflictChoice::Ask;
        request.Flush = FlushChoice::Never;
        return Runs.Start(request, Plan(request));
    }
    // Copies where the name is taken, so that the job waits for an answer.
    std::uint64_t StartAsking(const fs::path& Source, const std::string& Destination) {
        WriteFile(Directory / Source, "new");
        WriteFile(Directory / Destination / Source.filename(), "old");
        return Start(Copy({Source, Destination}));
    }
    // The look finds a link to a directory, about which somebody is asked before the job.
    std::uint64_t StartJudged(const std::string& Name) {
        if (!fs::exists("link")) {
            fs::create_directory_symlink("tree", "link");
        }
        WriteFile(Directory / "dest" / Name, "old");
        const std::uint64_t id = Start(Copy({"link", Name, "dest"}));
        EXPECT_TRUE(Reach("it is judged", [&] { return StageOf(id) == Stage::Judged; }));
        return id;
    }

    TransferRun& RunOf(std::uint64_t Id) { return *Runs.Find(Id)->Run; }
    Stage StageOf(std::uint64_t Id) { return RunOf(Id).CurrentStage(); }
    testing::AssertionResult Reach(const std::string& What, const std::function<bool()>& Holds) {
        return BecomesTrue(What, [&] {
            Runs.Attend(Now);
            return Holds();
        });
    }
    testing::AssertionResult Asks(std::uint64_t Id) {
        return Reach("it asks", [&] { return RunOf(Id).OpenQuestion().has_value(); });
    }
    testing::AssertionResult AllEnd() {
        return Reach("all are over", [&] { return Runs.CountRunning() == 0; });
    }
    void Answer(std::uint64_t Id, const ConflictAnswer& Given) {
        RunOf(Id).Answer(RunOf(Id).OpenQuestion()->Id, Given);
    }

    // Number, source, job and state of each row.
    Names Rows() {
        Names rows;
        for (const JobListRow& row : ::RowsOf(Runs)) {
            rows.push_back(std::to_string(row.Id) + " " + Short(row.Texts.Source) + " " +
                           row.Texts.Job + ": " + row.Texts.State);
        }
        return rows;
    }
    JobListRow Row(std::uint64_t Id) { return ::RowsOf(Runs).at(Id - 1); }

    RunList Runs;
    std::chrono::steady_clock::time_point Now{std::chrono::hours(1)};
};

const char* const kWaitsForChoice = "Waiting for conflict choice";

TEST_F(RunRowsTest, NameWhatIsTransferred) {
    const std::string here = Directory.Path().string();
    EXPECT_EQ(TitleOf(RunOf(Start(Copy({"a.txt", "dest"})))), "Copy: " + here);
    EXPECT_EQ(TitleOf(RunOf(Start(Move({"tree/inner.txt", "dest"})))), "Move: " + here + "/tree");
}

TEST_F(RunRowsTest, AreOursBeforeTheJob) {
    EXPECT_TRUE(::RowsOf(Runs).empty());
    const std::uint64_t id = Start(Copy({"tree/inner.txt", "dest"}));
    EXPECT_EQ(Rows(), (Names{"1 tree Copy: Looking"}));
    EXPECT_FALSE(Row(id).bWaitsForAnswer);
    EXPECT_FALSE(Row(id).bFinished);
    const std::uint64_t judged = StartJudged("b.txt");
    EXPECT_EQ(Row(judged).Texts.State, "Waiting for an answer");
    EXPECT_TRUE(Row(judged).bWaitsForAnswer);
    EXPECT_EQ(Row(judged).Texts.Progress, "");
}

TEST_F(RunRowsTest, AreTheEnginesDuringTheJob) {
    const std::uint64_t id = StartAsking("a.txt", "dest");
    ASSERT_TRUE(Asks(id));
    const std::vector<TarvaneTransferJobSnapshot> engine =
        CollectActiveTarvaneTransferJobSnapshots();
    ASSERT_EQ(engine.size(), 1U);
    const JobListRow row = Row(id);
    EXPECT_EQ(row.Texts.Source, engine[0].Source);
    EXPECT_EQ(row.Texts.State, engine[0].State);
    EXPECT_EQ(row.Texts.Progress, engine[0].Progress);
    EXPECT_EQ(row.Texts.Detail, engine[0].Detail);
    EXPECT_EQ(row.Texts.State, kWaitsForChoice);
    EXPECT_TRUE(row.bWaitsForAnswer);
    EXPECT_FALSE(row.bCancelRequested);
    RunOf(id).Cancel();
    EXPECT_TRUE(Row(id).bCancelRequested);
}

TEST_F(RunRowsTest, AreEachItsOwnWhenALaterRunsJobBeganFirst) {
    const std::uint64_t first = StartJudged("a.txt");
    const std::uint64_t second = StartAsking("2/file", "dest/second");
    ASSERT_TRUE(Asks(second));
    RunOf(first).GoOn();
    ASSERT_TRUE(Asks(first));
    const std::uint64_t third = StartAsking("3/file", "dest/third");
    ASSERT_TRUE(Asks(third));
    const std::string waits = std::string(" Copy: ") + kWaitsForChoice;
    const std::string here = Directory.Path().string();
    EXPECT_EQ(Rows(), (Names{"1 " + here + waits, "2 2" + waits, "3 3" + waits}));
    // One goes from the middle.
    Answer(second, {.Action = Action::Skip});
    ASSERT_TRUE(Reach("the second is over", [&] { return StageOf(second) == Stage::Over; }));
    EXPECT_EQ(Rows(), (Names{"1 " + here + waits, "2 2 Copy: Done", "3 3" + waits}));
}

TEST_F(RunRowsTest, AreEachItsOwnAsSoonAsAJobHasBegun) {
    const std::uint64_t first = StartJudged("a.txt");
    const std::uint64_t second = StartJudged("b.txt");
    const std::uint64_t third = StartAsking("3/file", "dest/third");
    ASSERT_TRUE(Asks(third));
    Runs.GoOn(second);
    Runs.GoOn(first);
    EXPECT_EQ(Short(Row(third).Texts.Source), "3");
    EXPECT_EQ(Row(third).Texts.State, kWaitsForChoice);
    EXPECT_EQ(Runs.Find(third)->JobNumber, 1U);
    EXPECT_EQ(Runs.Find(second)->JobNumber, 2U);
    EXPECT_EQ(Runs.Find(first)->JobNumber, 3U);
}

TEST_F(RunRowsTest, SayAtTheEndWhatHasBecomeOfIt) {
    const std::uint64_t done = StartAsking("a.txt", "dest");
    ASSERT_TRUE(Asks(done));
    Answer(done, {.Action = Action::Rename, .RenamePath = (Directory / "dest/new").string()});
    ASSERT_TRUE(AllEnd());
    JobListRow row = Row(done);
    EXPECT_TRUE(row.bFinished);
    EXPECT_FALSE(row.bCanRunAgain);
    EXPECT_EQ(row.Texts.State, "Done");
    EXPECT_EQ(row.Texts.Progress, "100%");
    EXPECT_EQ(row.EndLines, RunOf(done).EndLines());
    EXPECT_EQ(row.Texts.Detail, RunOf(done).EndLines().front());
    ASSERT_EQ(row.Answers.size(), 1U);
    EXPECT_EQ(row.Answers[0], (Directory / "dest/a.txt").string() + ": rename to '" +
                                  (Directory / "dest/new").string() + "'");

    const std::uint64_t canceled = StartAsking("b.txt", "dest");
    ASSERT_TRUE(Asks(canceled));
    RunOf(canceled).Cancel();
    ASSERT_TRUE(AllEnd());
    row = Row(canceled);
    EXPECT_TRUE(row.bCanRunAgain);
    EXPECT_EQ(row.Texts.State, "Canceled");
    EXPECT_EQ(row.Texts.Progress, "");
    EXPECT_FALSE(row.bWaitsForAnswer);

    TransferRequest request = Copy({"a.txt", "dest"});
    const TarvaneTransferPlan plan = Plan(request);
    fs::remove("a.txt");
    const std::uint64_t failed = Runs.Start(request, plan);
    ASSERT_TRUE(Reach("it is judged", [&] { return StageOf(failed) == Stage::Judged; }));
    RunOf(failed).GoOn();
    ASSERT_TRUE(AllEnd());
    EXPECT_EQ(Row(failed).Texts.State, "Failed");
    EXPECT_TRUE(Row(failed).bCanRunAgain);
}

TEST_F(RunRowsTest, HaveAScenePerStage) {
    const std::uint64_t id = StartJudged("a.txt");
    RateHistory rates;
    TransferRun& run = RunOf(id);
    ProgressScene scene = SceneOf(run, &rates, Now);
    EXPECT_EQ(scene.Title, TitleOf(run));
    EXPECT_EQ(scene.Rates, &rates);
    ASSERT_TRUE(std::holds_alternative<LookingScene>(scene.Moment));
    EXPECT_EQ(std::get<LookingScene>(scene.Moment).EntriesSeen, run.EntriesSeen());
    EXPECT_GT(run.EntriesSeen(), 0U);
    EXPECT_TRUE(scene.bQuestionWaits);

    run.GoOn();
    ASSERT_TRUE(Asks(id));
    scene = SceneOf(run, nullptr, Now);
    ASSERT_TRUE(std::holds_alternative<CopyingScene>(scene.Moment));
    EXPECT_EQ(std::get<CopyingScene>(scene.Moment).Snapshot.StageText,
              run.View(Now).Snapshot.StageText);
    EXPECT_TRUE(scene.bQuestionWaits);
    EXPECT_FALSE(scene.IsOver());

    Answer(id, {.Action = Action::Skip});
    ASSERT_TRUE(AllEnd());
    scene = SceneOf(run, nullptr, Now);
    ASSERT_TRUE(scene.IsOver());
    const OverScene& over = std::get<OverScene>(scene.Moment);
    EXPECT_EQ(over.Result, RunResult::Succeeded);
    EXPECT_EQ(over.Lines, run.EndLines());
    ASSERT_TRUE(over.Job);
    EXPECT_EQ(over.Job->Snapshot.DoneItems, run.View(Now).Snapshot.DoneItems);
    EXPECT_FALSE(scene.bQuestionWaits);
}

TEST_F(RunRowsTest, HaveNoJobInTheSceneOfARunWithoutOne) {
    TransferRun& run = RunOf(StartJudged("a.txt"));
    run.Cancel();
    const ProgressScene scene = SceneOf(run, nullptr, Now);
    ASSERT_TRUE(scene.IsOver());
    EXPECT_EQ(std::get<OverScene>(scene.Moment).Result, RunResult::Canceled);
    EXPECT_FALSE(std::get<OverScene>(scene.Moment).Job);
    EXPECT_EQ(Row(1).Texts.State, "Canceled");
}

} // namespace
