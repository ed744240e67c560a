// What a cancel or a finish does to a worker that waits for an answer or is about to.

#include "handshake_fixture.h"

namespace {

class HandshakeEnd : public HandshakeFixture {};

TEST_F(HandshakeEnd, TheAnswerCancelCancelsTheJob) {
    EXPECT_FALSE(Ask({Answers(Action::Cancel, "/unasked")}));
    EXPECT_EQ(Answer, Action::Cancel);
    EXPECT_EQ(RenamePath, "");
    EXPECT_TRUE(Job.IsCancelRequested());
    EXPECT_EQ(Status(), "Cancel requested");
}

TEST_F(HandshakeEnd, TheAnswerCancelDoesNotSetTheStageBackToCopying) {
    EXPECT_FALSE(Ask({Answers(Action::Cancel)}));
    EXPECT_EQ(CurrentStage(), Stage::WaitingForConflict);
    EXPECT_FALSE(IsPending());
}

TEST_F(HandshakeEnd, RequestCancelEndsTheWait) {
    EXPECT_FALSE(Ask({[this] { Job.RequestCancel(); }}));
    EXPECT_EQ(Answer, Action::Cancel);
    EXPECT_EQ(RenamePath, "");
    EXPECT_EQ(Status(), "Cancel requested");
    EXPECT_EQ(CurrentStage(), Stage::WaitingForConflict);
    EXPECT_FALSE(IsPending());
}

TEST_F(HandshakeEnd, AFinishEndsTheWaitAndKeepsStageAndMessage) {
    EXPECT_FALSE(Ask({[this] { Job.FinishFailure("Transfer failed."); }}));
    EXPECT_EQ(Answer, Action::Cancel);
    EXPECT_EQ(RenamePath, "");
    EXPECT_EQ(Status(), "Transfer failed.");
    EXPECT_EQ(CurrentStage(), Stage::Failed);
    EXPECT_FALSE(IsPending());
}

TEST_F(HandshakeEnd, ACancelWinsOverAnAnswerThatArrivesWithIt) {
    EXPECT_FALSE(Ask({[this] {
        EXPECT_TRUE(Job.ResolveConflict(Action::Rename, "/given"));
        Job.RequestCancel();
    }}));
    EXPECT_EQ(Answer, Action::Cancel);
    EXPECT_EQ(RenamePath, "");
    EXPECT_EQ(Status(), "Cancel requested");
}

TEST_F(HandshakeEnd, AFinishWinsOverAnAnswerThatArrivesWithIt) {
    EXPECT_FALSE(Ask({[this] {
        EXPECT_TRUE(Job.ResolveConflict(Action::Rename, "/given"));
        Job.FinishSuccess("done");
    }}));
    EXPECT_EQ(Answer, Action::Cancel);
    EXPECT_EQ(RenamePath, "");
    EXPECT_EQ(CurrentStage(), Stage::Completed);
}

TEST_F(HandshakeEnd, AWaitEnteredAfterRequestCancelPostsNothing) {
    Job.SetStage(Stage::Copying, "");
    Job.RequestCancel();
    EXPECT_FALSE(Ask({}));
    EXPECT_EQ(Answer, Action::Cancel);
    EXPECT_EQ(RenamePath, "");
    EXPECT_EQ(CurrentStage(), Stage::Copying);
    EXPECT_EQ(Status(), "Cancel requested");
}

TEST_F(HandshakeEnd, AWaitEnteredAfterAFinishPostsNothing) {
    Job.FinishFailure("Transfer failed.");
    EXPECT_FALSE(Ask({}));
    EXPECT_EQ(Answer, Action::Cancel);
    EXPECT_EQ(RenamePath, "");
    EXPECT_EQ(CurrentStage(), Stage::Failed);
    EXPECT_EQ(Status(), "Transfer failed.");
}

} // namespace
