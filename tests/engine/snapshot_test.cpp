// The numbers of the progress dialog: rate, fractions, times, flags and counters.

#include "clocked_job.h"
#include "failing_lock.h"
#include "job_access.h"

#include <limits>
#include <system_error>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class Snapshot : public ClockedJob {
protected:
    std::uint64_t Rate() const { return Ui().TransferRateBytesPerSecond; }
};

TEST_F(Snapshot, OfANewJobShowsNothingDoneAndAnUnknownRest) {
    EXPECT_EQ(Ui().OverallProgress01, 0.0);
    EXPECT_EQ(Ui().FileProgress01, 0.0);
    EXPECT_EQ(Ui().RemainingSeconds, -1.0);
    EXPECT_EQ(Ui().ElapsedSeconds, 0.0);
}

TEST_F(Snapshot, CopiesTheCounters) {
    Job.SetTotals(12, 3000);
    Job.MarkItemsDone(4);
    Job.AddBytesDone(500);
    Job.SetCurrentFileProgress(60, 700);
    EXPECT_EQ(Ui().TotalItems, 12u);
    EXPECT_EQ(Ui().TotalBytes, 3000u);
    EXPECT_EQ(Ui().DoneItems, 4u);
    EXPECT_EQ(Ui().DoneBytes, 500u);
    EXPECT_EQ(Ui().CurrentFileDoneBytes, 60u);
    EXPECT_EQ(Ui().CurrentFileTotalBytes, 700u);
}

TEST_F(Snapshot, MeasuresElapsedTimeFromConstruction) {
    Clock.Advance(12'345'678'901ns);
    EXPECT_EQ(Ui().ElapsedSeconds, 12.345678901);
}

TEST_F(Snapshot, RateIsTheGrowthFromTheOldestToTheNewestSample) {
    AddAfter(10s, 1'000'000);
    AddAfter(1s, 100);
    AddAfter(1s, 500);
    EXPECT_EQ(Rate(), 300u);
}

TEST_F(Snapshot, RateIsTruncated) {
    AddAfter(0s, 1000);
    AddAfter(300ms, 100);
    EXPECT_EQ(Rate(), 333u);
}

TEST_F(Snapshot, RateOfOneSampleIsTheAverageOnceMoreThan50msHavePassed) {
    AddAfter(0ms, 1000);
    Clock.Advance(50ms);
    EXPECT_EQ(Rate(), 0u);
    Clock.Advance(1ns);
    EXPECT_EQ(Rate(), 19999u);
    Clock.Advance(2s - 50ms - 1ns);
    EXPECT_EQ(Rate(), 500u);
}

TEST_F(Snapshot, RateOfTwoSamples50msApartIsTheAverage) {
    AddAfter(1s, 1000);
    AddAfter(50ms, 500);
    Job.FinishFailure("");
    EXPECT_EQ(Rate(), 1428u);
}

TEST_F(Snapshot, RateOfTwoSamplesMoreThan50msApartIsSampled) {
    AddAfter(1s, 1000);
    AddAfter(50ms + 1ns, 500);
    Job.FinishFailure("");
    EXPECT_EQ(Rate(), 9999u);
}

TEST_F(Snapshot, RateOfACounterThatWentBackwardsIsTheAverage) {
    static constexpr std::uint64_t kHuge = std::uint64_t{1} << 60;
    AddAfter(1s, kHuge);
    AddAfter(1s, std::numeric_limits<std::uint64_t>::max() - kHuge + 401);
    ASSERT_EQ(Ui().DoneBytes, 400u);
    EXPECT_EQ(Rate(), 200u);
}

TEST_F(Snapshot, RateOfACounterThatStoodStillIsTheAverage) {
    AddAfter(1s, 1000);
    Clock.Advance(1s);
    Job.FinishCanceled("");
    EXPECT_EQ(Rate(), 500u);
}

TEST_F(Snapshot, RateIsUnknownWithoutBytes) {
    Job.SetTotals(1, 1000);
    Clock.Advance(60s);
    EXPECT_EQ(Rate(), 0u);
}

TEST_F(Snapshot, RateOfAJobThatFinishedWithin50msCountsAsIfItTook50ms) {
    AddAfter(10ms, 1000);
    EXPECT_EQ(Rate(), 0u);
    Job.FinishSuccess("");
    EXPECT_EQ(Rate(), 20000u);
}

TEST_F(Snapshot, RateBeyondItsRangeIsTheHighest) {
    constexpr std::uint64_t highest = std::numeric_limits<std::uint64_t>::max();
    AddAfter(1s, 1);
    AddAfter(160ms, highest - 1);
    EXPECT_EQ(Rate(), highest);
    TarvaneTransferJob quick(false, 1, "");
    quick.AddBytesDone(highest);
    quick.FinishSuccess("");
    EXPECT_EQ(quick.MakeUiSnapshot().TransferRateBytesPerSecond, highest);
}

TEST_F(Snapshot, OverallProgressGoesByBytes) {
    Job.SetTotals(2, 1000);
    Job.MarkItemsDone(1);
    Job.AddBytesDone(250);
    EXPECT_EQ(Ui().OverallProgress01, 0.25);
}

TEST_F(Snapshot, OverallProgressGoesByItemsWithoutBytes) {
    Job.SetTotals(8, 0);
    Job.MarkItemsDone(3);
    Job.AddBytesDone(250);
    EXPECT_EQ(Ui().OverallProgress01, 0.375);
}

TEST_F(Snapshot, OverallProgressByItemsStopsAtOne) {
    Job.SetTotals(2, 0);
    Job.MarkItemsDone(3);
    EXPECT_EQ(Ui().OverallProgress01, 1.0);
}

TEST_F(Snapshot, OverallProgressOfAFinishedJobWithoutTotalsIsOne) {
    EXPECT_EQ(Ui().OverallProgress01, 0.0);
    Job.FinishFailure("");
    EXPECT_EQ(Ui().OverallProgress01, 1.0);
}

TEST_F(Snapshot, OverallProgressOfAFinishedJobWithTotalsStaysWhereItWas) {
    Job.SetTotals(2, 1000);
    Job.AddBytesDone(250);
    Job.FinishCanceled("");
    EXPECT_EQ(Ui().OverallProgress01, 0.25);
}

// A file that grew while it was copied.
TEST_F(Snapshot, DoneBytesBeyondTheTotalShowOneAndNoEstimate) {
    Job.SetTotals(1, 1000);
    AddAfter(1s, 1500);
    EXPECT_EQ(Ui().OverallProgress01, 1.0);
    EXPECT_EQ(Ui().RemainingSeconds, -1.0);
    Job.FinishSuccess("");
    EXPECT_EQ(Ui().RemainingSeconds, 0.0);
}

TEST_F(Snapshot, FileProgressGoesByTheBytesOfTheFile) {
    Job.SetCurrentFileProgress(3, 4);
    EXPECT_EQ(Ui().FileProgress01, 0.75);
    Job.SetCurrentFileProgress(5, 4);
    EXPECT_EQ(Ui().FileProgress01, 1.0);
}

TEST_F(Snapshot, FileProgressWithoutBytesIsZeroWhilePreparingAndRemoving) {
    Job.SetTotals(4, 0);
    Job.MarkItemsDone(1);
    Job.SetStage(TarvaneTransferStage::Preparing, "");
    EXPECT_EQ(Ui().FileProgress01, 0.0);
    Job.SetStage(TarvaneTransferStage::RemovingSource, "");
    EXPECT_EQ(Ui().FileProgress01, 0.0);
}

TEST_F(Snapshot, FileProgressWithoutBytesIsTheOverallOneInEveryOtherStage) {
    Job.SetTotals(4, 0);
    Job.MarkItemsDone(1);
    for (const auto stage :
         {TarvaneTransferStage::Copying, TarvaneTransferStage::WaitingForConflict,
          TarvaneTransferStage::Completed, TarvaneTransferStage::Failed,
          TarvaneTransferStage::Canceled}) {
        Job.SetStage(stage, "");
        EXPECT_EQ(Ui().FileProgress01, 0.25) << Ui().StageText;
    }
}

TEST_F(Snapshot, RemainingTimeIsTheMissingBytesAtTheRate) {
    Job.SetTotals(1, 10'000);
    AddAfter(1s, 1000);
    AddAfter(1s, 200);
    EXPECT_EQ(Ui().RemainingSeconds, 44.0);
}

TEST_F(Snapshot, RemainingTimeIsUnknownWithoutARate) {
    Job.SetTotals(1, 10'000);
    Clock.Advance(10s);
    EXPECT_EQ(Ui().RemainingSeconds, -1.0);
}

TEST_F(Snapshot, RemainingTimeIsUnknownWithoutByteTotals) {
    Job.SetTotals(4, 0);
    Job.MarkItemsDone(2);
    AddAfter(1s, 1000);
    EXPECT_EQ(Ui().RemainingSeconds, -1.0);
}

TEST_F(Snapshot, RemainingTimeIsZeroOnceFinished) {
    Job.SetTotals(1, 1000);
    AddAfter(1s, 1000);
    Job.FinishSuccess("");
    EXPECT_EQ(Ui().RemainingSeconds, 0.0);
}

TEST_F(Snapshot, RemainingTimeIsKeptWhenAJobEndsShortOfItsBytes) {
    Job.SetTotals(1, 1000);
    AddAfter(1s, 100);
    Clock.Advance(1s);
    Job.FinishFailure("");
    EXPECT_EQ(Rate(), 50u);
    EXPECT_EQ(Ui().RemainingSeconds, 18.0);
}

TEST_F(Snapshot, ACancelRequestShowsUntilTheJobFinishes) {
    EXPECT_FALSE(Ui().bCancelRequested);
    Job.RequestCancel();
    EXPECT_TRUE(Ui().bCancelRequested);
    EXPECT_FALSE(Ui().bCanceled);
    Job.FinishCanceled("");
    EXPECT_FALSE(Ui().bCancelRequested);
    EXPECT_TRUE(Ui().bCanceled);
}

TEST_F(Snapshot, AFailedLockIsThrownToTheCaller) {
    Job.AddBytesDone(5);
    {
        const FailingLock failing(PrivateOf<JobMember::Mutex>(Job));
        EXPECT_THROW(Ui(), std::system_error);
    }
    EXPECT_EQ(Ui().DoneBytes, 5u);
}

} // namespace
