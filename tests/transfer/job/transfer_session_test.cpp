#include "transfer_session.h"

#include "becomes_true.h"
#include "file_tree.h"
#include "link_names.h"
#include "no_room_for_threads.h"
#include "temporary_directory.h"

#include <functional>
#include <poll.h>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

using Job = std::shared_ptr<TarvaneTransferJob>;

// Runs in the place of the engine when it is set.
std::function<void(const Job&)> gEngine;

} // namespace

void RealRunJob(const Job& Running, TarvaneTransferPlan Plan) REAL(RunTarvaneTransferJob);
void WrappedRunJob(const Job& Running, TarvaneTransferPlan Plan) WRAPPED(RunTarvaneTransferJob);

void WrappedRunJob(const Job& Running, TarvaneTransferPlan Plan) {
    if (gEngine) {
        gEngine(Running);
        return;
    }
    RealRunJob(Running, std::move(Plan));
}

namespace {

class TransferSessionTest : public testing::Test {
protected:
    TransferSessionTest() {
        gEngine = nullptr;
        WriteFile(Directory / "a.txt", "new");
    }

    // A copy of a.txt to Name, which asks when the name is taken.
    TarvaneTransferPlan PlanTo(const std::string& Name) const {
        TarvaneTransferPlan plan;
        plan.SourceLabel = "here";
        plan.Items.resize(1);
        plan.Items[0].SourcePath = Directory / "a.txt";
        plan.Items[0].DestinationPath = Directory / Name;
        return plan;
    }

    static testing::AssertionResult IsOverSoon(TransferSession& Session) {
        return BecomesTrue("the session is over", [&] { return Session.IsOver(); });
    }

    static testing::AssertionResult AsksSoon(TransferSession& Session) {
        return BecomesTrue("a conflict is posted", [&] {
            TarvaneTransferConflict conflict;
            return Session.Job().GetPendingConflict(conflict);
        });
    }

    TemporaryDirectory Directory;
};

} // namespace

TEST_F(TransferSessionTest, RunsThePlanToItsEnd) {
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(IsOverSoon(session));
    EXPECT_TRUE(session.Job().MakeUiSnapshot().bSucceeded);
    EXPECT_EQ(session.Job().MakeUiSnapshot().MessageText, "Copied 1 item(s).");
    EXPECT_EQ(ReadFile(Directory / "b.txt"), "new");
}

TEST_F(TransferSessionTest, WakesAPollWhenItIsOver) {
    TransferSession session(PlanTo("b.txt"));
    pollfd over{session.OverFd(), POLLIN, 0};
    const int limitMilliseconds = 20000;
    EXPECT_EQ(poll(&over, 1, limitMilliseconds), 1);
    EXPECT_TRUE(session.IsOver());
}

TEST_F(TransferSessionTest, StandsInTheJobListWhileItRuns) {
    WriteFile(Directory / "b.txt", "old");
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(AsksSoon(session));
    const std::vector<TarvaneTransferJobSnapshot> rows = CollectActiveTarvaneTransferJobSnapshots();
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].Source, "here");
    EXPECT_EQ(rows[0].State, "Waiting for conflict choice");
}

TEST_F(TransferSessionTest, PassesAnAnswerToTheJob) {
    WriteFile(Directory / "b.txt", "old");
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(AsksSoon(session));
    EXPECT_TRUE(session.Job().ResolveConflict(TarvaneTransferConflictAction::Overwrite, ""));
    ASSERT_TRUE(IsOverSoon(session));
    EXPECT_EQ(ReadFile(Directory / "b.txt"), "new");
}

TEST_F(TransferSessionTest, CancelsAndWaitsWhenItIsLetGo) {
    WriteFile(Directory / "b.txt", "old");
    {
        TransferSession session(PlanTo("b.txt"));
        ASSERT_TRUE(AsksSoon(session));
    }
    EXPECT_EQ(ReadFile(Directory / "b.txt"), "old");
    EXPECT_TRUE(CollectActiveTarvaneTransferJobSnapshots().empty());
}

TEST_F(TransferSessionTest, TurnsAnExceptionThatLeavesTheEngineIntoAFailedJob) {
    gEngine = [](const Job&) { throw std::runtime_error("no memory for this"); };
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(IsOverSoon(session));
    EXPECT_TRUE(session.Job().MakeUiSnapshot().bFinished);
    EXPECT_FALSE(session.Job().MakeUiSnapshot().bSucceeded);
    EXPECT_EQ(session.Job().MakeUiSnapshot().MessageText, "Transfer stopped: no memory for this");
}

TEST_F(TransferSessionTest, TurnsAnythingElseThatIsThrownIntoAFailedJob) {
    gEngine = [](const Job&) { throw 7; };
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(IsOverSoon(session));
    EXPECT_FALSE(session.Job().MakeUiSnapshot().bSucceeded);
    EXPECT_EQ(session.Job().MakeUiSnapshot().MessageText, "Transfer stopped by an unknown error.");
}

TEST_F(TransferSessionTest, KeepsTheOutcomeOfAJobThatHasFinishedBeforeTheException) {
    gEngine = [](const Job& Running) {
        Running->FinishCanceled("Canceled by the test.");
        throw std::runtime_error("too late");
    };
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(IsOverSoon(session));
    EXPECT_TRUE(session.Job().MakeUiSnapshot().bCanceled);
    EXPECT_EQ(session.Job().MakeUiSnapshot().MessageText, "Canceled by the test.");
}

TEST_F(TransferSessionTest, FailsTheJobWhenNoThreadCanBeStarted) {
    const NoRoomForThreads noThreads;
    TransferSession session(PlanTo("b.txt"));
    EXPECT_TRUE(session.IsOver());
    EXPECT_FALSE(session.Job().MakeUiSnapshot().bSucceeded);
    EXPECT_EQ(session.Job().MakeUiSnapshot().MessageText,
              "Failed to start the transfer: Resource temporarily unavailable");
    EXPECT_FALSE(fs::exists(Directory / "b.txt"));
}
