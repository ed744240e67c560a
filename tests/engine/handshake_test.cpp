// One conflict: how it is posted, shown, answered, refused and withdrawn.

#include "handshake_fixture.h"

namespace {

class Handshake : public HandshakeFixture {};

TEST_F(Handshake, ReturnsTheAnswer) {
    EXPECT_TRUE(Ask({Answers(Action::Overwrite)}));
    EXPECT_EQ(Answer, Action::Overwrite);
    EXPECT_EQ(RenamePath, "");
}

TEST_F(Handshake, ReturnsTheNewPathOfARename) {
    EXPECT_TRUE(Ask({Answers(Action::Rename, "/to (2)")}));
    EXPECT_EQ(Answer, Action::Rename);
    EXPECT_EQ(RenamePath, "/to (2)");
}

TEST_F(Handshake, ReturnsThePathThatCameWithAnyAcceptedAction) {
    EXPECT_TRUE(Ask({Answers(Action::Skip, "/unasked")}));
    EXPECT_EQ(RenamePath, "/unasked");
}

TEST_F(Handshake, ReturnsAnActionItDoesNotKnowAsItWasGiven) {
    EXPECT_TRUE(Ask({Answers(static_cast<Action>(42))}));
    EXPECT_EQ(Answer, static_cast<Action>(42));
}

TEST_F(Handshake, ShowsEveryFieldOfThePostedConflict) {
    const TarvaneTransferConflict posted{Kind::Directory,
                                         "/a",
                                         "/b",
                                         "2024-03-07 14:05:09",
                                         "1999-12-31 23:59:59",
                                         1,
                                         2,
                                         -3,
                                         -4,
                                         true,
                                         false,
                                         true,
                                         false,
                                         false,
                                         true};
    TarvaneTransferConflict shown;
    ScriptedWait wait({[&] { EXPECT_TRUE(Job.GetPendingConflict(shown)); }, Answers(Action::Skip)});
    EXPECT_TRUE(Job.WaitForConflict(posted, Answer, RenamePath));
    EXPECT_EQ(shown.Kind, Kind::Directory);
    EXPECT_EQ(shown.SourcePath, "/a");
    EXPECT_EQ(shown.DestinationPath, "/b");
    EXPECT_EQ(shown.SourceDate, "2024-03-07 14:05:09");
    EXPECT_EQ(shown.DestinationDate, "1999-12-31 23:59:59");
    EXPECT_EQ(shown.SourceSizeBytes, 1u);
    EXPECT_EQ(shown.DestinationSizeBytes, 2u);
    EXPECT_EQ(shown.SourceModifiedTicks, -3);
    EXPECT_EQ(shown.DestinationModifiedTicks, -4);
    EXPECT_TRUE(shown.bSourceDirectory && !shown.bDestinationDirectory);
    EXPECT_TRUE(shown.bSourceHasSize && !shown.bDestinationHasSize);
    EXPECT_TRUE(!shown.bSourceHasModifiedTime && shown.bDestinationHasModifiedTime);
}

TEST_F(Handshake, ShowsThatItWaits) {
    const auto look = [this] {
        EXPECT_EQ(CurrentStage(), Stage::WaitingForConflict);
        EXPECT_EQ(Status(), "Waiting for conflict choice");
        EXPECT_EQ(Job.MakeUiSnapshot().StageText, "Stage: Waiting for conflict choice");
    };
    EXPECT_TRUE(Ask({look, Answers(Action::Skip)}));
}

TEST_F(Handshake, GetPendingConflictWithoutOneLeavesItsArgumentUntouched) {
    TarvaneTransferConflict untouched = ConflictOf(Kind::Directory);
    EXPECT_FALSE(Job.GetPendingConflict(untouched));
    EXPECT_EQ(untouched.Kind, Kind::Directory);
    EXPECT_EQ(untouched.SourcePath, "/from");
}

TEST_F(Handshake, AnAnsweredConflictIsNotShownAgain) {
    EXPECT_TRUE(Ask({[this] {
        EXPECT_TRUE(Job.ResolveConflict(Action::Overwrite, ""));
        EXPECT_FALSE(IsPending());
    }}));
}

TEST_F(Handshake, ASecondAnswerIsRefusedAndChangesNothing) {
    EXPECT_TRUE(Ask({[this] {
        EXPECT_TRUE(Job.ResolveConflict(Action::Overwrite, ""));
        EXPECT_FALSE(Job.ResolveConflict(Action::SkipAll, "/x"));
        EXPECT_FALSE(Job.ResolveConflict(Action::Cancel, ""));
    }}));
    EXPECT_EQ(Answer, Action::Overwrite);
    EXPECT_EQ(RenamePath, "");
    EXPECT_FALSE(Job.IsCancelRequested());
    EXPECT_FALSE(PrivateOf<JobMember::bFileDecisionSet>(Job));
}

TEST_F(Handshake, ARenameWithoutAPathIsRefusedAndTheWorkerKeepsWaiting) {
    EXPECT_TRUE(Ask({[this] {
                         EXPECT_FALSE(Job.ResolveConflict(Action::Rename, ""));
                         EXPECT_TRUE(IsPending());
                         EXPECT_EQ(Status(), "Waiting for conflict choice");
                     },
                     Answers(Action::Rename, "/given")}));
    EXPECT_EQ(Waits, 2u);
    EXPECT_EQ(RenamePath, "/given");
}

TEST_F(Handshake, AnAnswerWithoutAConflictIsRefused) {
    EXPECT_FALSE(Job.ResolveConflict(Action::Overwrite, ""));
    EXPECT_FALSE(Job.ResolveConflict(Action::Cancel, ""));
    EXPECT_FALSE(Job.IsCancelRequested());
    EXPECT_EQ(Status(), "Preparing");
}

TEST_F(Handshake, AnAllAnswerWithoutAConflictIsNotRemembered) {
    for (const auto all :
         {Action::MergeAll, Action::SkipAll, Action::OverwriteAll, Action::OverwriteAllOlder}) {
        EXPECT_FALSE(Job.ResolveConflict(all, ""));
    }
    EXPECT_FALSE(PrivateOf<JobMember::bDirectoryDecisionSet>(Job));
    EXPECT_FALSE(PrivateOf<JobMember::bFileDecisionSet>(Job));
    EXPECT_TRUE(Ask({Answers(Action::Skip)}));
    EXPECT_EQ(Waits, 1u);
}

TEST_F(Handshake, GoesBackToCopyingFromWhateverStageItWasIn) {
    Job.SetStage(Stage::RemovingSource, "Something else");
    EXPECT_TRUE(Ask({Answers(Action::Overwrite)}));
    EXPECT_EQ(CurrentStage(), Stage::Copying);
    EXPECT_EQ(Status(), "Copying");
}

TEST_F(Handshake, WithdrawsAnAnsweredConflict) {
    EXPECT_TRUE(Ask({Answers(Action::Rename, "/given")}));
    EXPECT_FALSE(IsPending());
    EXPECT_FALSE(Job.ResolveConflict(Action::Overwrite, ""));
    EXPECT_FALSE(PrivateOf<JobMember::bConflictPending>(Job));
    EXPECT_FALSE(PrivateOf<JobMember::bConflictResolved>(Job));
    EXPECT_EQ(PrivateOf<JobMember::ConflictRenamePath>(Job), "");
}

TEST_F(Handshake, ResetsTheWithdrawnConflictToADefaultOne) {
    ScriptedWait wait({Answers(Action::Merge)});
    EXPECT_TRUE(Job.WaitForConflict(ConflictOf(Kind::Directory), Answer, RenamePath));
    EXPECT_EQ(PrivateOf<JobMember::PendingConflict>(Job).Kind, Kind::File);
    EXPECT_EQ(PrivateOf<JobMember::PendingConflict>(Job).SourcePath, "");
    EXPECT_EQ(PrivateOf<JobMember::PendingConflict>(Job).DestinationPath, "");
}

TEST_F(Handshake, StartsTheNextConflictWithoutTheLastAnswer) {
    EXPECT_TRUE(Ask({Answers(Action::Rename, "/given")}));
    EXPECT_TRUE(Ask({[this] {
                         EXPECT_TRUE(IsPending());
                         EXPECT_EQ(PrivateOf<JobMember::ConflictAction>(Job), Action::Cancel);
                     },
                     Answers(Action::Overwrite)}));
    EXPECT_EQ(Answer, Action::Overwrite);
    EXPECT_EQ(RenamePath, "");
}

TEST_F(Handshake, AWakeUpWithoutAReasonIsHarmless) {
    EXPECT_TRUE(Ask({{}, {}, [this] { EXPECT_TRUE(IsPending()); }, Answers(Action::Overwrite)}));
    EXPECT_EQ(Waits, 4u);
    EXPECT_EQ(Answer, Action::Overwrite);
}

} // namespace
