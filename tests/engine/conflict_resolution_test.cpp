// What a taken name means for one file: whether to go on, where to write, whether to skip.

#include "engine_source.h"

#include "file_conflict_fixture.h"

namespace {

TEST_F(FileConflict, IsNoneAtAnAbsentDestination) {
    fs::remove(Destination);
    for (const Policy policy : {Policy::Ask, Policy::Overwrite, Policy::Skip}) {
        bSkip = true;
        EXPECT_TRUE(Resolve(policy));
        EXPECT_EQ(Target, Destination);
        EXPECT_FALSE(bSkip);
    }
    EXPECT_EQ(Job.MakeUiSnapshot().StageText, "Stage: Preparing");
}

TEST_F(FileConflict, IsNoneAtADanglingLink) {
    fs::remove(Destination);
    fs::create_symlink("nowhere", Destination);
    EXPECT_TRUE(Resolve(Policy::Ask));
    EXPECT_FALSE(bSkip);
}

TEST_F(FileConflict, GivesANameOnlyWhereItIsAnother) {
    fs::path result;
    EXPECT_TRUE(ResolveLocalFileConflict(Job, Source, Destination, Policy::Overwrite, result, bSkip,
                                         Message));
    EXPECT_EQ(result, "");
    AnsweringInterface interface(Job, {{Act::Rename, (Directory / "other").string(), nullptr}});
    EXPECT_TRUE(
        ResolveLocalFileConflict(Job, Source, Destination, Policy::Ask, result, bSkip, Message));
    EXPECT_EQ(result, Directory / "other");
}

TEST_F(FileConflict, FailsAtADestinationThatCannotBeLookedAt) {
    fs::remove(Destination);
    fs::create_symlink("destination", Destination);
    EXPECT_FALSE(Resolve());
    EXPECT_EQ(Message, "Failed checking destination '" + Destination.string() +
                           "': Too many levels of symbolic links");
}

TEST_F(FileConflict, IsAskedAboutWithItsDates) {
    AnsweringInterface interface(Job, {{Act::Skip, "", nullptr}});
    EXPECT_TRUE(Resolve(Policy::Ask));
    const std::vector<TarvaneTransferConflict>& asked = interface.Stop();
    ASSERT_EQ(asked.size(), 1U);
    const TarvaneTransferConflict whole =
        MakeLocalConflict(TarvaneTransferConflictKind::File, Source, Destination);
    EXPECT_NE(whole.SourceDate, "");
    EXPECT_EQ(asked[0].SourceDate, whole.SourceDate);
    EXPECT_EQ(asked[0].DestinationDate, whole.DestinationDate);
}

TEST_F(FileConflict, IsOverwrittenByPolicyWithoutAQuestion) {
    EXPECT_TRUE(Resolve(Policy::Overwrite));
    EXPECT_EQ(Target, Destination);
    EXPECT_FALSE(bSkip);
    EXPECT_EQ(Message, "a message from before");
    EXPECT_EQ(Job.MakeUiSnapshot().StageText, "Stage: Preparing");
}

TEST_F(FileConflict, IsSkippedByPolicyWithoutAQuestion) {
    bSkip = false;
    EXPECT_TRUE(Resolve(Policy::Skip));
    EXPECT_TRUE(bSkip);
    EXPECT_EQ(Job.MakeUiSnapshot().StageText, "Stage: Preparing");
}

TEST_F(FileConflict, IsOverwrittenUnderAPolicyThatNobodyKnows) {
    EXPECT_TRUE(Resolve(static_cast<Policy>(77)));
    EXPECT_FALSE(bSkip);
}

TEST_F(FileConflict, ShowsTheQuestionWithBothSides) {
    EXPECT_TRUE(Answered(Act::Overwrite));
    ASSERT_EQ(Questions.size(), 1U);
    EXPECT_EQ(Questions[0].Kind, TarvaneTransferConflictKind::File);
    EXPECT_EQ(Questions[0].SourcePath, Source.string());
    EXPECT_EQ(Questions[0].DestinationPath, Destination.string());
    EXPECT_EQ(Questions[0].SourceSizeBytes, 8U);
    EXPECT_TRUE(Questions[0].bDestinationHasSize);
    EXPECT_TRUE(Questions[0].bSourceHasModifiedTime);
}

TEST_F(FileConflict, IsOverwrittenByAnswer) {
    for (const Act action : {Act::Overwrite, Act::OverwriteAll}) {
        bSkip = true;
        EXPECT_TRUE(Answered(action));
        EXPECT_EQ(Target, Destination);
        EXPECT_FALSE(bSkip);
    }
}

TEST_F(FileConflict, IsSkippedByAnswer) {
    for (const Act action : {Act::Skip, Act::SkipAll}) {
        bSkip = false;
        EXPECT_TRUE(Answered(action));
        EXPECT_EQ(Target, Destination);
        EXPECT_TRUE(bSkip);
    }
}

TEST_F(FileConflict, IsDecidedByARememberedAnswerWithoutAQuestion) {
    EXPECT_TRUE(Answered(Act::SkipAll));
    bSkip = false;
    EXPECT_TRUE(Resolve(Policy::Ask));
    EXPECT_TRUE(bSkip);
}

TEST_F(FileConflict, RefusesAnAnswerForDirectories) {
    for (const Act action : {Act::Merge, Act::MergeAll}) {
        Message.clear();
        EXPECT_FALSE(Answered(action));
        EXPECT_EQ(Message, "Invalid file conflict decision.");
        EXPECT_FALSE(Job.IsCancelRequested());
    }
}

TEST_F(FileConflict, RefusesAnAnswerThatNobodyKnows) {
    EXPECT_FALSE(Answered(static_cast<Act>(0)));
    EXPECT_EQ(Message, "Invalid file conflict decision.");
}

TEST_F(FileConflict, IsCanceledByAnswer) {
    EXPECT_FALSE(Answered(Act::Cancel));
    EXPECT_EQ(Message, "Transfer canceled.");
    EXPECT_TRUE(Job.IsCancelRequested());
}

TEST_F(FileConflict, IsCanceledWithoutAnAnswer) {
    Job.RequestCancel();
    EXPECT_FALSE(Resolve(Policy::Ask));
    EXPECT_EQ(Message, "Transfer canceled.");
}

TEST_F(FileConflict, IsNotPolledForACancelWhenPolicyDecides) {
    Job.RequestCancel();
    EXPECT_TRUE(Resolve(Policy::Overwrite));
    EXPECT_TRUE(Resolve(Policy::Skip));
}

} // namespace
