#include "transfer_session.h"

#include "becomes_true.h"
#include "file_tree.h"
#include "temporary_directory.h"

#include <csignal>
#include <fstream>
#include <functional>
#include <map>
#include <poll.h>
#include <stdexcept>
#include <system_error>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

using Job = std::shared_ptr<TarvaneTransferJob>;

// Runs in the place of the engine when it is set.
std::function<void(const Job&)> gEngine;
bool gThreadsFail = false;

} // namespace

// What the mangled names are of: RunTarvaneTransferJob, and the part of std::thread that starts
// one.
extern "C" {
void __real__Z21RunTarvaneTransferJobRKSt10shared_ptrI18TarvaneTransferJobE19TarvaneTransferPlan(
    const Job& Running, TarvaneTransferPlan Plan);
void __wrap__Z21RunTarvaneTransferJobRKSt10shared_ptrI18TarvaneTransferJobE19TarvaneTransferPlan(
    const Job& Running, TarvaneTransferPlan Plan);
void __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
    std::thread* Self, std::unique_ptr<std::thread::_State> State, void (*Depend)());
void __wrap__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
    std::thread* Self, std::unique_ptr<std::thread::_State> State, void (*Depend)());

void __wrap__Z21RunTarvaneTransferJobRKSt10shared_ptrI18TarvaneTransferJobE19TarvaneTransferPlan(
    const Job& Running, TarvaneTransferPlan Plan) {
    if (gEngine) {
        gEngine(Running);
        return;
    }
    __real__Z21RunTarvaneTransferJobRKSt10shared_ptrI18TarvaneTransferJobE19TarvaneTransferPlan(
        Running, std::move(Plan));
}

void __wrap__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
    std::thread* Self, std::unique_ptr<std::thread::_State> State, void (*Depend)()) {
    if (gThreadsFail) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    }
    __real__ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE(
        Self, std::move(State), Depend);
}
}

namespace {

class TransferSessionTest : public testing::Test {
protected:
    TransferSessionTest() {
        gEngine = nullptr;
        gThreadsFail = false;
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
            return Session.GetPendingConflict(conflict);
        });
    }

    TemporaryDirectory Directory;
};

// The mask of blocked signals of every thread of this process but the first.
std::map<std::string, std::string> BlockedSignalsOfOtherThreads() {
    std::map<std::string, std::string> masks;
    for (const fs::directory_entry& thread : fs::directory_iterator("/proc/self/task")) {
        std::ifstream status(thread.path() / "status");
        std::string line;
        while (std::getline(status, line)) {
            if (line.starts_with("SigBlk:") &&
                thread.path().filename() != std::to_string(getpid())) {
                masks[thread.path().filename()] = line.substr(8);
            }
        }
    }
    return masks;
}

} // namespace

TEST_F(TransferSessionTest, RunsThePlanToItsEnd) {
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(IsOverSoon(session));
    EXPECT_TRUE(session.Snapshot().bSucceeded);
    EXPECT_EQ(session.Snapshot().MessageText, "Copied 1 item(s).");
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
    EXPECT_EQ(rows[0].State, session.StageLabel());
}

TEST_F(TransferSessionTest, BlocksAllSignalsInItsWorkerAndNoneOutside) {
    WriteFile(Directory / "b.txt", "old");
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(AsksSoon(session));
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (int signal = 1; signal < SIGRTMIN; ++signal) {
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << signal;
    }
    int workers = 0;
    for (const auto& [thread, mask] : BlockedSignalsOfOtherThreads()) {
        const unsigned long long blocked = std::stoull(mask, nullptr, 16);
        // A sanitizer's own thread blocks what it likes.
        workers += blocked != 0;
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGWINCH, SIGUSR1}) {
            EXPECT_TRUE(blocked == 0 || ((blocked >> (signal - 1)) & 1) == 1) << signal;
        }
    }
    EXPECT_GE(workers, 1);
}

TEST_F(TransferSessionTest, PassesAnAnswerToTheJob) {
    WriteFile(Directory / "b.txt", "old");
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(AsksSoon(session));
    EXPECT_TRUE(session.ResolveConflict(TarvaneTransferConflictAction::Overwrite, ""));
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
    EXPECT_TRUE(session.Snapshot().bFinished);
    EXPECT_FALSE(session.Snapshot().bSucceeded);
    EXPECT_EQ(session.Snapshot().MessageText, "Transfer stopped: no memory for this");
}

TEST_F(TransferSessionTest, TurnsAnythingElseThatIsThrownIntoAFailedJob) {
    gEngine = [](const Job&) { throw 7; };
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(IsOverSoon(session));
    EXPECT_FALSE(session.Snapshot().bSucceeded);
    EXPECT_EQ(session.Snapshot().MessageText, "Transfer stopped by an unknown error.");
}

TEST_F(TransferSessionTest, KeepsTheOutcomeOfAJobThatHasFinishedBeforeTheException) {
    gEngine = [](const Job& Running) {
        Running->FinishCanceled("Canceled by the test.");
        throw std::runtime_error("too late");
    };
    TransferSession session(PlanTo("b.txt"));
    ASSERT_TRUE(IsOverSoon(session));
    EXPECT_TRUE(session.Snapshot().bCanceled);
    EXPECT_EQ(session.Snapshot().MessageText, "Canceled by the test.");
}

TEST_F(TransferSessionTest, FailsTheJobWhenNoThreadCanBeStarted) {
    gThreadsFail = true;
    TransferSession session(PlanTo("b.txt"));
    EXPECT_TRUE(session.IsOver());
    EXPECT_FALSE(session.Snapshot().bSucceeded);
    EXPECT_EQ(session.Snapshot().MessageText,
              "Failed to start the transfer: Resource temporarily unavailable");
    EXPECT_FALSE(fs::exists(Directory / "b.txt"));
}
