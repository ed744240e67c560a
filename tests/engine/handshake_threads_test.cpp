// A worker that waits for an answer and another thread that gives it, cancels or finishes.

#include "tarvanetransfer.h"

#include "becomes_true.h"
#include "counting_sound.h"
#include "job_access.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;

// Asks about one file on a thread of its own. The wait is under way when the constructor returns:
// a conflict that can be seen was posted under the lock that only the wait gives back.
class WaitingWorker {
public:
    explicit WaitingWorker(TarvaneTransferJob& Asking) : Job(Asking) {
        Thread = std::thread([this] {
            std::string renamePath;
            bAnswered = Job.WaitForConflict(TarvaneTransferConflict(), Answer, renamePath);
            bReturned = true;
        });
        TarvaneTransferConflict posted;
        EXPECT_TRUE(
            BecomesTrue("a conflict is posted", [&] { return Job.GetPendingConflict(posted); }));
    }

    ~WaitingWorker() {
        Job.RequestCancel();
        // The thread ends even if what should have woken it did not.
        PrivateOf<JobMember::ConflictCondition>(Job).notify_all();
        Thread.join();
    }

    testing::AssertionResult Returns() {
        return BecomesTrue("the wait returns", [this] { return bReturned.load(); });
    }

    Action Answer = Action::Cancel;
    bool bAnswered = false;

private:
    TarvaneTransferJob& Job;
    std::atomic<bool> bReturned{false};
    std::thread Thread;
};

class HandshakeThreads : public testing::Test {
protected:
    CountingSound Sound;
    TarvaneTransferJob Job{false, 1, ""};
};

TEST_F(HandshakeThreads, AnAnswerWakesTheWorker) {
    WaitingWorker worker(Job);
    EXPECT_TRUE(Job.ResolveConflict(Action::Overwrite, ""));
    ASSERT_TRUE(worker.Returns());
    EXPECT_TRUE(worker.bAnswered);
    EXPECT_EQ(worker.Answer, Action::Overwrite);
}

TEST_F(HandshakeThreads, TheAnswerCancelWakesTheWorker) {
    WaitingWorker worker(Job);
    EXPECT_TRUE(Job.ResolveConflict(Action::Cancel, ""));
    ASSERT_TRUE(worker.Returns());
    EXPECT_FALSE(worker.bAnswered);
}

TEST_F(HandshakeThreads, ACancelRequestWakesTheWorker) {
    WaitingWorker worker(Job);
    Job.RequestCancel();
    ASSERT_TRUE(worker.Returns());
    EXPECT_FALSE(worker.bAnswered);
}

TEST_F(HandshakeThreads, FinishSuccessWakesTheWorker) {
    WaitingWorker worker(Job);
    Job.FinishSuccess("");
    ASSERT_TRUE(worker.Returns());
    EXPECT_FALSE(worker.bAnswered);
}

TEST_F(HandshakeThreads, FinishFailureWakesTheWorker) {
    WaitingWorker worker(Job);
    Job.FinishFailure("");
    ASSERT_TRUE(worker.Returns());
    EXPECT_FALSE(worker.bAnswered);
}

TEST_F(HandshakeThreads, FinishCanceledWakesTheWorker) {
    WaitingWorker worker(Job);
    Job.FinishCanceled("");
    ASSERT_TRUE(worker.Returns());
    EXPECT_FALSE(worker.bAnswered);
}

// Must hold: the answer that a worker gets is the one that was given for the conflict it posted,
// and the interface never sees a conflict that is half of one and half of another.
TEST_F(HandshakeThreads, EachConflictGetsItsOwnAnswer) {
    static constexpr std::uint64_t kConflicts = 2000;
    std::atomic<bool> bDone{false};
    std::thread interface([&] {
        TarvaneTransferConflict shown;
        while (!bDone) {
            if (Job.GetPendingConflict(shown)) {
                EXPECT_EQ(shown.SourcePath, "/from/" + std::to_string(shown.SourceSizeBytes));
                EXPECT_EQ(shown.DestinationPath, "/to/" + std::to_string(shown.SourceSizeBytes));
                EXPECT_TRUE(Job.ResolveConflict(Action::Rename, shown.DestinationPath));
            }
            std::this_thread::yield();
        }
    });
    for (std::uint64_t number = 0; number < kConflicts; ++number) {
        TarvaneTransferConflict conflict;
        conflict.SourceSizeBytes = number;
        conflict.SourcePath = "/from/" + std::to_string(number);
        conflict.DestinationPath = "/to/" + std::to_string(number);
        Action action = Action::Cancel;
        std::string renamePath;
        EXPECT_TRUE(Job.WaitForConflict(conflict, action, renamePath));
        EXPECT_EQ(action, Action::Rename);
        EXPECT_EQ(renamePath, conflict.DestinationPath);
    }
    bDone = true;
    interface.join();
}

// Must hold: whichever of an answer and a cancel comes first, the wait ends; once a cancel was
// requested before the wait returned, or the answer was Cancel, it ends with false.
TEST_F(HandshakeThreads, AnswersAndCancelsRaceWithoutLosingEither) {
    static constexpr int kRounds = 300;
    for (int round = 0; round < kRounds; ++round) {
        TarvaneTransferJob raced(false, 1, "");
        WaitingWorker worker(raced);
        std::atomic<bool> bAccepted{false};
        std::thread answering([&] { bAccepted = raced.ResolveConflict(Action::Overwrite, ""); });
        std::thread canceling([&] { raced.RequestCancel(); });
        answering.join();
        canceling.join();
        ASSERT_TRUE(worker.Returns());
        EXPECT_TRUE(raced.IsCancelRequested());
        EXPECT_TRUE(bAccepted || !worker.bAnswered);
        EXPECT_EQ(worker.Answer, worker.bAnswered ? Action::Overwrite : Action::Cancel);
    }
}

} // namespace
