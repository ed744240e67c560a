// The lines of the progress dialog.

#include "clocked_job.h"
#include "grouping_locale.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

constexpr std::uint64_t kMega = 1'048'576;
constexpr const char* kCancelHint =
    "Press Esc to cancel. Partial destination files may remain after a cancel.";
constexpr const char* kCancelingHint =
    "Canceling transfer. Waiting for the current filesystem step to finish.";

using SnapshotText = ClockedJob;

TEST_F(SnapshotText, OfANewJobShowsNothingKnown) {
    EXPECT_EQ(Ui().StageText, "Stage: Preparing");
    EXPECT_EQ(Ui().PathText, "Current: Waiting...");
    EXPECT_EQ(Ui().OverallText, "Overall items 0 / 0");
    EXPECT_EQ(Ui().IoText, "Rate -- | Spent 00:00 | Remaining --:--");
    EXPECT_EQ(Ui().MessageText, "Preparing");
    EXPECT_EQ(Ui().HintText, kCancelHint);
}

TEST_F(SnapshotText, LeavesTheTitleToTheInterface) {
    EXPECT_EQ(Ui().TitleText, "");
    Job.FinishSuccess("done");
    EXPECT_EQ(Ui().TitleText, "");
}

TEST_F(SnapshotText, AStatusEqualToTheLabelOfTheStageIsNotRepeated) {
    Job.SetStage(TarvaneTransferStage::Copying, "Copying");
    EXPECT_EQ(Ui().StageText, "Stage: Copying");
    EXPECT_EQ(Ui().MessageText, "Copying");
}

TEST_F(SnapshotText, AStatusThatDiffersFromTheLabelFollowsIt) {
    Job.SetStage(TarvaneTransferStage::Preparing, "Scanning transfer contents");
    EXPECT_EQ(Ui().StageText, "Stage: Preparing | Scanning transfer contents");
    EXPECT_EQ(Ui().MessageText, "Scanning transfer contents");
}

TEST_F(SnapshotText, AStatusThatDiffersInCaseOnlyFollowsTheLabel) {
    Job.SetStage(TarvaneTransferStage::Copying, "copying");
    EXPECT_EQ(Ui().StageText, "Stage: Copying | copying");
}

TEST_F(SnapshotText, AnEmptyStatusDoesNotFollowTheLabel) {
    Job.FinishFailure("");
    EXPECT_EQ(Ui().StageText, "Stage: Failed");
    EXPECT_EQ(Ui().MessageText, "");
}

TEST_F(SnapshotText, AnUnknownStageIsPending) {
    Job.SetStage(static_cast<TarvaneTransferStage>(7), "");
    EXPECT_EQ(Ui().StageText, "Stage: Pending");
}

TEST_F(SnapshotText, APathOf88BytesIsShownWhole) {
    const std::string path = "/" + std::string(87, 'p');
    Job.SetCurrentPath(path, 0);
    EXPECT_EQ(Ui().PathText, "Current: " + path);
}

TEST_F(SnapshotText, APathOf89BytesIsShownAs42BytesThreeDotsAnd42Bytes) {
    const std::string first = "/" + std::string(41, 'a');
    const std::string last(42, 'z');
    Job.SetCurrentPath(first + "12345" + last, 0);
    EXPECT_EQ(Ui().PathText, "Current: " + first + "..." + last);
}

TEST_F(SnapshotText, AMuchLongerPathIsShownAs42BytesThreeDotsAnd42Bytes) {
    const std::string first = "/" + std::string(41, 'a');
    const std::string last(42, 'z');
    Job.SetCurrentPath(first + std::string(900, 'm') + last, 0);
    EXPECT_EQ(Ui().PathText, "Current: " + first + "..." + last);
}

TEST_F(SnapshotText, OverallShowsBytesAndItems) {
    Job.SetTotals(12, 10 * kMega);
    Job.MarkItemsDone(3);
    Job.AddBytesDone(kMega + kMega / 2);
    EXPECT_EQ(Ui().OverallText, "Overall 1.5 MB / 10.0 MB | Items 3 / 12");
}

TEST_F(SnapshotText, OverallShowsItemsOnlyWithoutByteTotals) {
    Job.SetTotals(12, 0);
    Job.MarkItemsDone(3);
    Job.AddBytesDone(5);
    EXPECT_EQ(Ui().OverallText, "Overall items 3 / 12");
}

TEST_F(SnapshotText, OverallShowsItemsWithoutGrouping) {
    Job.SetTotals(18'446'744'073'709'551'615u, 1024);
    Job.MarkItemsDone(1'234'567);
    EXPECT_EQ(Ui().OverallText, "Overall 0 B / 1.0 KB | Items 1234567 / 18446744073709551615");
}

TEST_F(SnapshotText, IoShowsRateSpentAndRemainingTime) {
    Job.SetTotals(1, 612 * kMega);
    AddAfter(11s, 6 * kMega);
    AddAfter(1s, 6 * kMega);
    EXPECT_EQ(Ui().IoText, "Rate 6.0 MB/s | Spent 00:12 | Remaining 01:40");
}

TEST_F(SnapshotText, IoOfAFinishedJobEndsWithItsMessage) {
    Clock.Advance(61s);
    Job.FinishSuccess("Copied 3 item(s).");
    EXPECT_EQ(Ui().IoText, "Rate -- | Spent 01:01 | Remaining 00:00 | Copied 3 item(s).");
}

TEST_F(SnapshotText, IoOfAFinishedJobWithAnEmptyMessageEndsWithTheSeparator) {
    Job.FinishFailure("");
    EXPECT_EQ(Ui().IoText, "Rate -- | Spent 00:00 | Remaining 00:00 | ");
}

TEST_F(SnapshotText, IoOfARunningJobDoesNotShowItsStatus) {
    Job.RequestCancel();
    EXPECT_EQ(Ui().IoText, "Rate -- | Spent 00:00 | Remaining --:--");
}

TEST_F(SnapshotText, TheHintSaysThatACancelIsOnItsWay) {
    Job.SetStage(TarvaneTransferStage::Copying, "");
    Job.RequestCancel();
    EXPECT_EQ(Ui().HintText, kCancelingHint);
}

TEST_F(SnapshotText, TheHintIsSetInEveryStage) {
    for (int number = 0; number <= 7; ++number) {
        Job.SetStage(static_cast<TarvaneTransferStage>(number), "");
        EXPECT_EQ(Ui().HintText, kCancelHint) << Ui().StageText;
    }
}

TEST_F(SnapshotText, TheHintOfAFinishedJobIsTheUsualOneEvenAfterACancel) {
    Job.RequestCancel();
    Job.FinishCanceled("Copy canceled. Partial destination files may remain.");
    EXPECT_EQ(Ui().HintText, kCancelHint);
}

TEST_F(SnapshotText, DoesNotFollowTheLocaleOfTheProgram) {
    const GroupingLocale locale;
    Job.SetTotals(12'345, 1500 * kMega);
    Job.MarkItemsDone(6'789);
    AddAfter(1s, 1'536);
    EXPECT_EQ(Ui().OverallText, "Overall 1.5 KB / 1.5 GB | Items 6789 / 12345");
    EXPECT_EQ(Ui().IoText, "Rate 1.5 KB/s | Spent 00:01 | Remaining 284:26:39");
}

} // namespace
