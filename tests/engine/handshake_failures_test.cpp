// The interface runs out of memory while it answers or cancels. Property: then nothing has changed
// and the worker waits as before; asking again works.

#include "handshake_fixture.h"

#include "failing_allocation.h"

namespace {

class HandshakeFailure : public HandshakeFixture {
protected:
    // A path that no string holds in itself.
    const std::string LongPath = "/given" + std::string(100, 'x');

    void AnswerWithoutMemory(Action Given) {
        const FailingAllocation failing(0);
        Job.ResolveConflict(Given, LongPath);
    }

    void ExpectAnswerIsThrown(Action Given) {
        EXPECT_THROW(AnswerWithoutMemory(Given), std::bad_alloc);
    }

    // A step of the interface: gives an answer without memory, which is thrown and changes nothing.
    ScriptedWait::Step FailsToAnswer(Action Given) {
        return [this, Given] {
            ExpectAnswerIsThrown(Given);
            EXPECT_TRUE(IsPending());
            EXPECT_FALSE(Job.IsCancelRequested());
            EXPECT_EQ(Status(), "Waiting for conflict choice");
        };
    }
};

TEST_F(HandshakeFailure, OfTheAnswerCancelLeavesTheConflictPosted) {
    EXPECT_FALSE(Ask({FailsToAnswer(Action::Cancel), Answers(Action::Cancel)}));
    EXPECT_EQ(Waits, 2U);
    EXPECT_EQ(Status(), "Cancel requested");
}

TEST_F(HandshakeFailure, OfARenameLeavesTheConflictPosted) {
    EXPECT_TRUE(Ask({FailsToAnswer(Action::Rename), Answers(Action::Rename, LongPath)}));
    EXPECT_EQ(RenamePath, LongPath);
}

TEST_F(HandshakeFailure, OfAnAnswerForAllIsNotRemembered) {
    EXPECT_TRUE(Ask({FailsToAnswer(Action::SkipAll), Answers(Action::Overwrite)}));
    EXPECT_TRUE(Ask({Answers(Action::Overwrite)}));
    EXPECT_EQ(Waits, 1U);
    EXPECT_EQ(Answer, Action::Overwrite);
}

TEST_F(HandshakeFailure, OfACancelRequestChangesNothing) {
    {
        const FailingAllocation failing(0);
        EXPECT_THROW(Job.RequestCancel(), std::bad_alloc);
    }
    EXPECT_FALSE(Job.IsCancelRequested());
    EXPECT_EQ(Status(), "Preparing");
    Job.RequestCancel();
    EXPECT_EQ(Status(), "Cancel requested");
}

} // namespace
