// The public records and enumerations, and the two records that are private to the engine.

#include "engine_source.h"

#include "job_access.h"

#include <type_traits>

#include <gtest/gtest.h>

namespace {

template <typename Enumeration>
std::int32_t Number(Enumeration Value) {
    return static_cast<std::int32_t>(Value);
}

template <typename Enumeration>
constexpr bool kbSigned32 = std::is_same_v<std::underlying_type_t<Enumeration>, std::int32_t> &&
                            !std::is_convertible_v<Enumeration, std::int32_t>;

TEST(Enumerations, AreScopedAndSigned32Bit) {
    EXPECT_TRUE(kbSigned32<TarvaneTransferStage>);
    EXPECT_TRUE(kbSigned32<TarvaneTransferConflictPolicy>);
    EXPECT_TRUE(kbSigned32<TarvaneTransferConflictKind>);
    EXPECT_TRUE(kbSigned32<TarvaneTransferConflictAction>);
    EXPECT_TRUE(kbSigned32<TransferCopyResult>);
}

TEST(Enumerations, StagesHaveTheirNumbers) {
    EXPECT_EQ(Number(TarvaneTransferStage::Preparing), 0);
    EXPECT_EQ(Number(TarvaneTransferStage::Copying), 1);
    EXPECT_EQ(Number(TarvaneTransferStage::RemovingSource), 2);
    EXPECT_EQ(Number(TarvaneTransferStage::WaitingForConflict), 3);
    EXPECT_EQ(Number(TarvaneTransferStage::Completed), 4);
    EXPECT_EQ(Number(TarvaneTransferStage::Failed), 5);
    EXPECT_EQ(Number(TarvaneTransferStage::Canceled), 6);
}

TEST(Enumerations, PoliciesHaveTheirNumbers) {
    EXPECT_EQ(Number(TarvaneTransferConflictPolicy::Ask), 0);
    EXPECT_EQ(Number(TarvaneTransferConflictPolicy::Overwrite), 1);
    EXPECT_EQ(Number(TarvaneTransferConflictPolicy::Skip), 2);
}

TEST(Enumerations, ConflictKindsHaveTheirNumbers) {
    EXPECT_EQ(Number(TarvaneTransferConflictKind::Directory), 1);
    EXPECT_EQ(Number(TarvaneTransferConflictKind::File), 2);
}

TEST(Enumerations, ActionsHaveTheirNumbers) {
    EXPECT_EQ(Number(TarvaneTransferConflictAction::Merge), 1);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::MergeAll), 2);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::Skip), 3);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::SkipAll), 4);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::Overwrite), 5);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::Rename), 6);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::OverwriteAll), 7);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::CompareByContent), 8);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::OverwriteAllOlder), 9);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::Cancel), 10);
}

TEST(Enumerations, SkipIs2AsAPolicyAnd3AsAnAction) {
    EXPECT_EQ(Number(TarvaneTransferConflictPolicy::Skip), 2);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::Skip), 3);
}

TEST(Enumerations, OverwriteIs1AsAPolicyAnd5AsAnAction) {
    EXPECT_EQ(Number(TarvaneTransferConflictPolicy::Overwrite), 1);
    EXPECT_EQ(Number(TarvaneTransferConflictAction::Overwrite), 5);
}

TEST(Enumerations, CopyResultsHaveTheirNumbers) {
    EXPECT_EQ(Number(TransferCopyResult::Succeeded), 0);
    EXPECT_EQ(Number(TransferCopyResult::Skipped), 1);
    EXPECT_EQ(Number(TransferCopyResult::Failed), 2);
}

TEST(Conflict, DefaultsToKindFileNotDirectory) {
    EXPECT_EQ(TarvaneTransferConflict().Kind, TarvaneTransferConflictKind::File);
}

TEST(Conflict, DefaultsToNothingKnown) {
    const TarvaneTransferConflict conflict;
    EXPECT_EQ(conflict.SourcePath, "");
    EXPECT_EQ(conflict.DestinationPath, "");
    EXPECT_EQ(conflict.SourceDate, "");
    EXPECT_EQ(conflict.DestinationDate, "");
    EXPECT_EQ(conflict.SourceSizeBytes, 0u);
    EXPECT_EQ(conflict.DestinationSizeBytes, 0u);
    EXPECT_EQ(conflict.SourceModifiedTicks, 0);
    EXPECT_EQ(conflict.DestinationModifiedTicks, 0);
    EXPECT_FALSE(conflict.bSourceDirectory);
    EXPECT_FALSE(conflict.bDestinationDirectory);
    EXPECT_FALSE(conflict.bSourceHasSize);
    EXPECT_FALSE(conflict.bDestinationHasSize);
    EXPECT_FALSE(conflict.bSourceHasModifiedTime);
    EXPECT_FALSE(conflict.bDestinationHasModifiedTime);
}

TEST(Conflict, HasItsFieldsInOrder) {
    const TarvaneTransferConflict conflict{TarvaneTransferConflictKind::Directory,
                                           "a",
                                           "b",
                                           "c",
                                           "d",
                                           1,
                                           2,
                                           -3,
                                           -4,
                                           true,
                                           false,
                                           true,
                                           false,
                                           true,
                                           false};
    EXPECT_EQ(conflict.Kind, TarvaneTransferConflictKind::Directory);
    EXPECT_EQ(conflict.SourcePath + conflict.DestinationPath, "ab");
    EXPECT_EQ(conflict.SourceDate + conflict.DestinationDate, "cd");
    EXPECT_EQ(conflict.SourceSizeBytes, 1u);
    EXPECT_EQ(conflict.DestinationSizeBytes, 2u);
    EXPECT_EQ(conflict.SourceModifiedTicks, -3);
    EXPECT_EQ(conflict.DestinationModifiedTicks, -4);
    EXPECT_TRUE(conflict.bSourceDirectory && !conflict.bDestinationDirectory);
    EXPECT_TRUE(conflict.bSourceHasSize && !conflict.bDestinationHasSize);
    EXPECT_TRUE(conflict.bSourceHasModifiedTime && !conflict.bDestinationHasModifiedTime);
}

TEST(Conflict, OwnsItsTextsWhenCopied) {
    TarvaneTransferConflict first;
    first.SourcePath = "/a long enough path to live outside of the string object itself";
    const TarvaneTransferConflict second = first;
    first.SourcePath[1] = 'X';
    EXPECT_EQ(second.SourcePath, "/a long enough path to live outside of the string object itself");
}

// Cancel doubles as the absence of a decision.
TEST(Conflict, AFreshJobStoresCancelAsItsLastAnswer) {
    TarvaneTransferJob job(false, 1, "");
    EXPECT_EQ(PrivateOf<JobMember::ConflictAction>(job), TarvaneTransferConflictAction::Cancel);
}

TEST(Plan, ItemsDefaultToNothing) {
    const TarvaneTransferItemPlan item;
    EXPECT_EQ(item.Name, "");
    EXPECT_EQ(item.SourcePath, "");
    EXPECT_EQ(item.DestinationPath, "");
    EXPECT_FALSE(item.bDestinationRenamed);
    EXPECT_FALSE(item.bDirectory);
    EXPECT_EQ(item.ItemCount, 0u);
    EXPECT_EQ(item.ByteCount, 0u);
}

TEST(Plan, ItemsHaveTheirFieldsInOrder) {
    const TarvaneTransferItemPlan item{"name", "/from", "/to", true, false, 3, 4};
    EXPECT_EQ(item.Name, "name");
    EXPECT_EQ(item.SourcePath, "/from");
    EXPECT_EQ(item.DestinationPath, "/to");
    EXPECT_TRUE(item.bDestinationRenamed && !item.bDirectory);
    EXPECT_EQ(item.ItemCount, 3u);
    EXPECT_EQ(item.ByteCount, 4u);
}

TEST(Plan, DefaultsToAnEmptyCopyThatAsks) {
    const TarvaneTransferPlan plan;
    EXPECT_FALSE(plan.bMove);
    EXPECT_EQ(plan.ConflictPolicy, TarvaneTransferConflictPolicy::Ask);
    EXPECT_EQ(plan.SourceLabel, "");
    EXPECT_TRUE(plan.Items.empty());
}

TEST(Plan, HasItsFieldsInOrder) {
    const TarvaneTransferPlan plan{true, TarvaneTransferConflictPolicy::Skip, "label", {{}, {}}};
    EXPECT_TRUE(plan.bMove);
    EXPECT_EQ(plan.ConflictPolicy, TarvaneTransferConflictPolicy::Skip);
    EXPECT_EQ(plan.SourceLabel, "label");
    EXPECT_EQ(plan.Items.size(), 2u);
}

TEST(UiSnapshot, DefaultsToNothingDoneAndTheRestUnknown) {
    const TarvaneTransferUiSnapshot ui;
    EXPECT_FALSE(ui.bFinished || ui.bSucceeded || ui.bCanceled || ui.bCancelRequested);
    EXPECT_EQ(ui.TitleText + ui.StageText + ui.PathText + ui.OverallText, "");
    EXPECT_EQ(ui.IoText + ui.MessageText + ui.HintText, "");
    EXPECT_EQ(ui.OverallProgress01, 0.0);
    EXPECT_EQ(ui.FileProgress01, 0.0);
    EXPECT_EQ(ui.TotalBytes | ui.DoneBytes | ui.TotalItems | ui.DoneItems, 0u);
    EXPECT_EQ(ui.CurrentFileTotalBytes | ui.CurrentFileDoneBytes, 0u);
    EXPECT_EQ(ui.TransferRateBytesPerSecond, 0u);
    EXPECT_EQ(ui.ElapsedSeconds, 0.0);
    EXPECT_EQ(ui.RemainingSeconds, -1.0);
}

TEST(UiSnapshot, HasItsFieldsInOrder) {
    const TarvaneTransferUiSnapshot ui{true, false, true, false, "a", "b", "c", "d", "e", "f", "g",
                                       0.25, 0.5,   1,    2,     3,   4,   5,   6,   7,   8.0, 9.0};
    EXPECT_TRUE(ui.bFinished && !ui.bSucceeded && ui.bCanceled && !ui.bCancelRequested);
    EXPECT_EQ(ui.TitleText + ui.StageText + ui.PathText + ui.OverallText, "abcd");
    EXPECT_EQ(ui.IoText + ui.MessageText + ui.HintText, "efg");
    EXPECT_EQ(ui.OverallProgress01, 0.25);
    EXPECT_EQ(ui.FileProgress01, 0.5);
    EXPECT_EQ(ui.TotalBytes, 1u);
    EXPECT_EQ(ui.DoneBytes, 2u);
    EXPECT_EQ(ui.TotalItems, 3u);
    EXPECT_EQ(ui.DoneItems, 4u);
    EXPECT_EQ(ui.CurrentFileTotalBytes, 5u);
    EXPECT_EQ(ui.CurrentFileDoneBytes, 6u);
    EXPECT_EQ(ui.TransferRateBytesPerSecond, 7u);
    EXPECT_EQ(ui.ElapsedSeconds, 8.0);
    EXPECT_EQ(ui.RemainingSeconds, 9.0);
}

TEST(JobSnapshot, HasItsFieldsInOrder) {
    const TarvaneTransferJobSnapshot row{"a", "b", "c", "d", "e"};
    EXPECT_EQ(row.Source, "a");
    EXPECT_EQ(row.Job, "b");
    EXPECT_EQ(row.State, "c");
    EXPECT_EQ(row.Progress, "d");
    EXPECT_EQ(row.Detail, "e");
}

TEST(Totals, DefaultToNothingCounted) {
    const TransferTotals totals;
    EXPECT_EQ(totals.ItemCount, 0u);
    EXPECT_EQ(totals.ByteCount, 0u);
}

TEST(Constants, AreThoseOfTheEngine) {
    EXPECT_EQ(kTransferBufferBytes, 262144u);
    EXPECT_EQ(kInteractiveCopyBytesPerSecond, 6291456u);
    EXPECT_EQ(kTransferSampleInterval, std::chrono::nanoseconds(160'000'000));
    EXPECT_EQ(kTransferSampleWindow, std::chrono::nanoseconds(4'000'000'000));
}

} // namespace
