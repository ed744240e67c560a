// What the worker reports into a Job, what the interface asks of it, and how it ends.

#include "tarvanetransfer.h"

#include "counting_sound.h"
#include "failing_lock.h"
#include "job_access.h"
#include "lock_probe.h"

#include <system_error>
#include <thread>
#include <type_traits>

#include <gtest/gtest.h>

namespace {

class TransferJob : public testing::Test {
protected:
    std::string Status() const { return Job.MakeUiSnapshot().MessageText; }
    TarvaneTransferStage Stage() { return PrivateOf<JobMember::Stage>(Job); }

    CountingSound Sound;
    TarvaneTransferJob Job{false, 3, "left"};
};

TEST_F(TransferJob, IsNeitherCopyableNorPolymorphic) {
    EXPECT_FALSE(std::is_copy_constructible_v<TarvaneTransferJob>);
    EXPECT_FALSE(std::is_copy_assignable_v<TarvaneTransferJob>);
    EXPECT_FALSE(std::is_polymorphic_v<TarvaneTransferJob>);
}

TEST_F(TransferJob, StartsPreparingWithNothingDone) {
    const TarvaneTransferUiSnapshot ui = Job.MakeUiSnapshot();
    EXPECT_EQ(Stage(), TarvaneTransferStage::Preparing);
    EXPECT_EQ(ui.MessageText, "Preparing");
    EXPECT_EQ(ui.TotalItems | ui.DoneItems | ui.TotalBytes | ui.DoneBytes, 0u);
    EXPECT_EQ(ui.CurrentFileTotalBytes | ui.CurrentFileDoneBytes, 0u);
    EXPECT_FALSE(ui.bFinished || ui.bSucceeded || ui.bCanceled);
    EXPECT_FALSE(Job.IsCancelRequested());
    EXPECT_FALSE(Job.IsFinished());
}

TEST_F(TransferJob, StartsWithoutAConflictOrARememberedAnswer) {
    EXPECT_FALSE(PrivateOf<JobMember::bConflictPending>(Job));
    EXPECT_FALSE(PrivateOf<JobMember::bConflictResolved>(Job));
    EXPECT_EQ(PrivateOf<JobMember::PendingConflict>(Job).Kind, TarvaneTransferConflictKind::File);
    EXPECT_EQ(PrivateOf<JobMember::ConflictRenamePath>(Job), "");
    EXPECT_FALSE(PrivateOf<JobMember::bDirectoryDecisionSet>(Job));
    EXPECT_EQ(PrivateOf<JobMember::DirectoryDecision>(Job), TarvaneTransferConflictAction::Merge);
    EXPECT_FALSE(PrivateOf<JobMember::bFileDecisionSet>(Job));
    EXPECT_EQ(PrivateOf<JobMember::FileDecision>(Job), TarvaneTransferConflictAction::Overwrite);
}

TEST_F(TransferJob, KeepsWhatItWasMadeWith) {
    TarvaneTransferJob move(true, 7, "right");
    EXPECT_TRUE(move.IsMove());
    EXPECT_FALSE(Job.IsMove());
    EXPECT_EQ(PrivateOf<JobMember::RequestedTopLevelItems>(move), 7u);
    EXPECT_EQ(move.MakeJobSnapshot().Source, "right");
}

TEST_F(TransferJob, SetStageWithoutAStatusShowsTheLabelOfTheStage) {
    Job.SetStage(TarvaneTransferStage::Copying, "");
    EXPECT_EQ(Stage(), TarvaneTransferStage::Copying);
    EXPECT_EQ(Status(), "Copying");
}

TEST_F(TransferJob, SetStageWithAStatusShowsThat) {
    Job.SetStage(TarvaneTransferStage::Preparing, "Scanning transfer contents");
    EXPECT_EQ(Stage(), TarvaneTransferStage::Preparing);
    EXPECT_EQ(Status(), "Scanning transfer contents");
}

TEST_F(TransferJob, SetCurrentPathShowsThePathAndTheSizeOfItsFile) {
    Job.SetCurrentPath("/music/a.flac", 500);
    const TarvaneTransferUiSnapshot ui = Job.MakeUiSnapshot();
    EXPECT_EQ(ui.PathText, "Current: /music/a.flac");
    EXPECT_EQ(ui.CurrentFileTotalBytes, 500u);
    EXPECT_EQ(ui.CurrentFileDoneBytes, 0u);
}

TEST_F(TransferJob, GetCurrentPathIsEmptyBeforeTheFirst) {
    EXPECT_EQ(Job.GetCurrentPath(), "");
}

TEST_F(TransferJob, GetCurrentPathGivesALongPathWhole) {
    const std::string path = "/music/" + std::string(4000, 'a') + ".flac";
    Job.SetCurrentPath("/first", 1);
    Job.SetCurrentPath(path, 500);
    EXPECT_EQ(Job.GetCurrentPath(), path);
}

TEST_F(TransferJob, SetCurrentPathResetsTheDoneCounterEvenWhenThePathIsTheSame) {
    Job.SetCurrentPath("/a", 500);
    Job.AddBytesDone(200);
    Job.SetCurrentPath("/a", 500);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileDoneBytes, 0u);
    EXPECT_EQ(Job.MakeUiSnapshot().DoneBytes, 200u);
}

TEST_F(TransferJob, AddsUpWhatWasSkippedBesideWhatIsDone) {
    EXPECT_EQ(Job.GetSkippedItems() | Job.GetSkippedBytes(), 0u);
    Job.MarkSkipped(1, 500);
    Job.MarkSkipped(2, 30);
    EXPECT_EQ(Job.GetSkippedItems(), 3u);
    EXPECT_EQ(Job.GetSkippedBytes(), 530u);
    EXPECT_EQ(Job.MakeUiSnapshot().DoneItems | Job.MakeUiSnapshot().DoneBytes, 0u);
}

TEST_F(TransferJob, SetTotalsTakesItemsFirst) {
    Job.SetTotals(12, 3456);
    EXPECT_EQ(Job.MakeUiSnapshot().TotalItems, 12u);
    EXPECT_EQ(Job.MakeUiSnapshot().TotalBytes, 3456u);
}

TEST_F(TransferJob, SetCurrentFileProgressTakesDoneBytesFirst) {
    Job.SetCurrentFileProgress(30, 100);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileDoneBytes, 30u);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileTotalBytes, 100u);
    EXPECT_EQ(Job.MakeUiSnapshot().DoneBytes, 0u);
}

TEST_F(TransferJob, AddBytesDoneCountsForTheJobAndForTheFile) {
    Job.SetCurrentFileProgress(30, 100);
    Job.AddBytesDone(5);
    Job.AddBytesDone(7);
    EXPECT_EQ(Job.MakeUiSnapshot().DoneBytes, 12u);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileDoneBytes, 42u);
}

TEST_F(TransferJob, MarkItemsDoneAdds) {
    Job.MarkItemsDone(2);
    Job.MarkItemsDone(3);
    EXPECT_EQ(Job.MakeUiSnapshot().DoneItems, 5u);
}

TEST_F(TransferJob, MarkItemsDoneOfZeroChangesNothing) {
    Job.MarkItemsDone(2);
    Job.MarkItemsDone(0);
    EXPECT_EQ(Job.MakeUiSnapshot().DoneItems, 2u);
}

TEST_F(TransferJob, RequestCancelSetsTheFlagAndTheStatus) {
    Job.SetStage(TarvaneTransferStage::Copying, "");
    Job.RequestCancel();
    EXPECT_TRUE(Job.IsCancelRequested());
    EXPECT_EQ(Status(), "Cancel requested");
    EXPECT_EQ(Stage(), TarvaneTransferStage::Copying);
    EXPECT_FALSE(Job.IsFinished());
}

TEST_F(TransferJob, RequestCancelAfterFinishSuccessKeepsTheStatusButSetsTheFlag) {
    Job.FinishSuccess("Copied 3 item(s).");
    Job.RequestCancel();
    EXPECT_EQ(Status(), "Copied 3 item(s).");
    EXPECT_TRUE(Job.IsCancelRequested());
}

TEST_F(TransferJob, RequestCancelAfterAnyFinisherKeepsTheStatus) {
    Job.FinishFailure("Transfer failed.");
    Job.RequestCancel();
    EXPECT_EQ(Status(), "Transfer failed.");
    Job.FinishCanceled("Copy canceled.");
    Job.RequestCancel();
    EXPECT_EQ(Status(), "Copy canceled.");
}

TEST_F(TransferJob, FinishSuccessEndsItAsCompleted) {
    Job.FinishSuccess("Copied 3 item(s).");
    const TarvaneTransferUiSnapshot ui = Job.MakeUiSnapshot();
    EXPECT_EQ(Stage(), TarvaneTransferStage::Completed);
    EXPECT_TRUE(Job.IsFinished());
    EXPECT_TRUE(ui.bFinished && ui.bSucceeded && !ui.bCanceled);
    EXPECT_EQ(ui.MessageText, "Copied 3 item(s).");
}

TEST_F(TransferJob, FinishFailureEndsItAsFailed) {
    Job.FinishFailure("Failed to open source file.");
    const TarvaneTransferUiSnapshot ui = Job.MakeUiSnapshot();
    EXPECT_EQ(Stage(), TarvaneTransferStage::Failed);
    EXPECT_TRUE(Job.IsFinished());
    EXPECT_TRUE(ui.bFinished && !ui.bSucceeded && !ui.bCanceled);
    EXPECT_EQ(ui.MessageText, "Failed to open source file.");
}

TEST_F(TransferJob, FinishCanceledEndsItAsCanceled) {
    Job.FinishCanceled("Copy canceled.");
    const TarvaneTransferUiSnapshot ui = Job.MakeUiSnapshot();
    EXPECT_EQ(Stage(), TarvaneTransferStage::Canceled);
    EXPECT_TRUE(Job.IsFinished());
    EXPECT_TRUE(ui.bFinished && !ui.bSucceeded && ui.bCanceled);
    EXPECT_EQ(ui.MessageText, "Copy canceled.");
}

TEST_F(TransferJob, OnlySuccessPlaysTheSound) {
    Job.FinishFailure("");
    Job.FinishCanceled("");
    EXPECT_EQ(Sound.Played(), 0);
    Job.FinishSuccess("");
    EXPECT_EQ(Sound.Played(), 1);
}

TEST_F(TransferJob, PlaysTheSoundAfterEverythingElseAndWithoutTheLock) {
    TarvaneTransferUiSnapshot heard;
    std::thread::id player;
    Sound.Listen([&] {
        player = std::this_thread::get_id();
        ASSERT_TRUE(IsFree(PrivateOf<JobMember::Mutex>(Job)));
        heard = Job.MakeUiSnapshot();
    });
    Job.FinishSuccess("Copied 3 item(s).");
    EXPECT_EQ(heard.StageText, "Stage: Completed | Copied 3 item(s).");
    EXPECT_TRUE(heard.bFinished && heard.bSucceeded);
    EXPECT_EQ(player, std::this_thread::get_id());
}

TEST_F(TransferJob, AFailedLockIsThrownToTheCaller) {
    const FailingLock failing(PrivateOf<JobMember::Mutex>(Job));
    EXPECT_THROW(Job.SetStage(TarvaneTransferStage::Copying, ""), std::system_error);
    EXPECT_THROW(Job.SetCurrentPath("/a", 0), std::system_error);
    EXPECT_THROW(Job.GetCurrentPath(), std::system_error);
    EXPECT_THROW(Job.AddBytesDone(1), std::system_error);
    EXPECT_THROW(Job.RequestCancel(), std::system_error);
    EXPECT_THROW(Job.FinishSuccess(""), std::system_error);
    EXPECT_EQ(Sound.Played(), 0);
}

TEST_F(TransferJob, CountsAndReadsFlagsWithoutTheLock) {
    const FailingLock failing(PrivateOf<JobMember::Mutex>(Job));
    EXPECT_NO_THROW(Job.SetTotals(1, 2));
    EXPECT_NO_THROW(Job.MarkItemsDone(1));
    EXPECT_NO_THROW(Job.MarkSkipped(1, 2));
    EXPECT_NO_THROW(Job.GetSkippedItems());
    EXPECT_NO_THROW(Job.GetSkippedBytes());
    EXPECT_NO_THROW(Job.SetCurrentFileProgress(1, 2));
    EXPECT_NO_THROW(Job.AddBytesDone(0));
    EXPECT_NO_THROW(Job.IsCancelRequested());
    EXPECT_NO_THROW(Job.IsFinished());
}

} // namespace
