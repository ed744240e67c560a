// The list of running jobs: what is in it, in which order, and what its rows say.

#include "engine_source.h"

#include "counting_sound.h"
#include "fake_steady_clock.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class Registry : public testing::Test {
protected:
    // The registry is the process's own: entries of earlier tests go first.
    Registry() { CollectActiveTarvaneTransferJobSnapshots(); }

    std::shared_ptr<TarvaneTransferJob> Registered(const std::string& Label) {
        auto job = std::make_shared<TarvaneTransferJob>(false, 1, Label);
        RegisterTarvaneTransferJob(job);
        return job;
    }

    // The labels of the rows, in their order.
    std::vector<std::string> Listed() {
        std::vector<std::string> labels;
        for (const TarvaneTransferJobSnapshot& row : CollectActiveTarvaneTransferJobSnapshots()) {
            labels.push_back(row.Source);
        }
        return labels;
    }

    FakeSteadyClock Clock;
    CountingSound Sound;
};

using Labels = std::vector<std::string>;

TEST_F(Registry, WithoutJobsListsNothing) {
    EXPECT_EQ(Listed(), Labels());
}

TEST_F(Registry, IgnoresAnEmptyJob) {
    RegisterTarvaneTransferJob(nullptr);
    EXPECT_EQ(gTransferRegistry.size(), 0u);
}

TEST_F(Registry, ListsJobsInOrderOfRegistration) {
    const auto second = std::make_shared<TarvaneTransferJob>(false, 1, "B");
    const auto first = Registered("A");
    RegisterTarvaneTransferJob(second);
    EXPECT_EQ(Listed(), (Labels{"A", "B"}));
}

TEST_F(Registry, ListsOnlyTheSecondOnceTheFirstHasFinished) {
    const auto first = Registered("A");
    const auto second = Registered("B");
    first->FinishSuccess("");
    EXPECT_EQ(Listed(), Labels{"B"});
}

TEST_F(Registry, AFinishedJobThatIsStillOwnedIsNotListedButItsEntryIsKept) {
    const auto succeeded = Registered("A");
    const auto failed = Registered("B");
    const auto canceled = Registered("C");
    succeeded->FinishSuccess("");
    failed->FinishFailure("");
    canceled->FinishCanceled("");
    EXPECT_EQ(Listed(), Labels());
    EXPECT_EQ(gTransferRegistry.size(), 3u);
}

TEST_F(Registry, AReleasedJobIsNotListedAndItsEntryIsGoneAfterACollection) {
    auto job = Registered("A");
    job.reset();
    EXPECT_EQ(gTransferRegistry.size(), 1u);
    EXPECT_EQ(Listed(), Labels());
    EXPECT_EQ(gTransferRegistry.size(), 0u);
}

TEST_F(Registry, TheEntryOfAReleasedJobIsGoneAfterARegistration) {
    auto job = Registered("A");
    job.reset();
    const auto next = Registered("B");
    EXPECT_EQ(gTransferRegistry.size(), 1u);
    EXPECT_EQ(Listed(), Labels{"B"});
}

TEST_F(Registry, RemovingEntriesKeepsTheOrderOfTheRest) {
    auto a = Registered("A");
    const auto b = Registered("B");
    auto c = Registered("C");
    const auto d = Registered("D");
    const auto e = Registered("E");
    c.reset();
    EXPECT_EQ(Listed(), (Labels{"A", "B", "D", "E"}));
    a.reset();
    const auto f = Registered("F");
    EXPECT_EQ(Listed(), (Labels{"B", "D", "E", "F"}));
}

TEST_F(Registry, AJobRegisteredTwiceIsListedTwice) {
    const auto job = Registered("A");
    RegisterTarvaneTransferJob(job);
    EXPECT_EQ(Listed(), (Labels{"A", "A"}));
}

TEST_F(Registry, KeepsNoJobAlive) {
    const auto job = Registered("A");
    Listed();
    EXPECT_EQ(job.use_count(), 1);
}

TEST_F(Registry, TheRowOfANewJobShowsNothingKnown) {
    const auto job = Registered("left");
    const auto rows = CollectActiveTarvaneTransferJobSnapshots();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].Source, "left");
    EXPECT_EQ(rows[0].Job, "Copy");
    EXPECT_EQ(rows[0].State, "Preparing");
    EXPECT_EQ(rows[0].Progress, "0%");
    EXPECT_EQ(rows[0].Detail, "Waiting... | Rate -- | Spent 00:00 | Remaining --:--");
}

class JobRow : public testing::Test {
protected:
    FakeSteadyClock Clock;
    CountingSound Sound;
    TarvaneTransferJob Job{true, 1, ""};
};

TEST_F(JobRow, OfAJobWithoutALabelIsCalledTarvane) {
    EXPECT_EQ(Job.MakeJobSnapshot().Source, "Tarvane");
}

TEST_F(JobRow, OfAMoveSaysMove) {
    EXPECT_EQ(Job.MakeJobSnapshot().Job, "Move");
}

TEST_F(JobRow, ShowsTheLabelOfTheStageNotTheStatus) {
    Job.SetStage(TarvaneTransferStage::Copying, "Something else");
    EXPECT_EQ(Job.MakeJobSnapshot().State, "Copying");
}

TEST_F(JobRow, ShowsTheOverallFractionInPercent) {
    Job.SetTotals(8, 0);
    Job.MarkItemsDone(3);
    EXPECT_EQ(Job.MakeJobSnapshot().Progress, "38%");
}

TEST_F(JobRow, ShowsTheCurrentPathAndTheRate) {
    Job.SetCurrentPath("/music/a.flac", 0);
    Job.SetTotals(1, 4096);
    Clock.Advance(2s);
    Job.AddBytesDone(2048);
    EXPECT_EQ(Job.MakeJobSnapshot().Detail,
              "/music/a.flac | Rate 1.0 KB/s | Spent 00:02 | Remaining 00:02");
}

TEST_F(JobRow, RemovesTheNameOfTheLineOnlyOnce) {
    Job.SetCurrentPath("Current: x", 0);
    EXPECT_EQ(Job.MakeJobSnapshot().Detail, "Current: x | Rate -- | Spent 00:00 | Remaining --:--");
}

TEST_F(JobRow, ShowsALongPathElided) {
    const std::string first(42, 'a');
    const std::string last(42, 'z');
    Job.SetCurrentPath(first + "12345" + last, 0);
    EXPECT_EQ(Job.MakeJobSnapshot().Detail,
              first + "..." + last + " | Rate -- | Spent 00:00 | Remaining --:--");
}

TEST_F(JobRow, OfAFinishedJobCanStillBeMade) {
    Job.FinishFailure("Transfer failed.");
    EXPECT_EQ(Job.MakeJobSnapshot().State, "Failed");
    EXPECT_EQ(Job.MakeJobSnapshot().Progress, "100%");
    EXPECT_EQ(Job.MakeJobSnapshot().Detail,
              "Waiting... | Rate -- | Spent 00:00 | Remaining 00:00 | Transfer failed.");
}

} // namespace
