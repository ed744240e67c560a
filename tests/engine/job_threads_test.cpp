// A worker that feeds a job while other threads look at it, answer it and cancel it.

#include "tarvanetransfer.h"

#include "counting_sound.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;
using Stage = TarvaneTransferStage;

const std::string kFirstPath = "/first" + std::string(60, 'f');
const std::string kSecondPath = "/second" + std::string(70, 's');

constexpr std::uint64_t kMostRounds = 100'000'000;

bool IsOneOf(const std::string& Text, std::initializer_list<std::string> Known) {
    return std::find(Known.begin(), Known.end(), Text) != Known.end();
}

class JobThreads : public testing::Test {
protected:
    // Runs Look on a thread of its own, again and again until the job is finished, and once after.
    void Poll(std::function<void()> Look) {
        Others.emplace_back([this, Look = std::move(Look)] {
            while (!Job.IsFinished()) {
                Look();
                ++Looks;
                std::this_thread::yield();
            }
            Look();
        });
    }

    void JoinOthers() {
        for (std::thread& other : Others) {
            other.join();
        }
    }

    // Copies two files in turns, and asks a question now and then, until all is done or a cancel
    // comes. Returns how many questions were answered.
    std::uint64_t Work(std::uint64_t Rounds, std::uint64_t RoundsPerQuestion) {
        Job.SetTotals(Rounds, Rounds * 10);
        Job.SetStage(Stage::Copying, "");
        std::uint64_t answered = 0;
        for (std::uint64_t round = 0; round < Rounds && !Job.IsCancelRequested(); ++round) {
            Job.SetCurrentPath(round % 2 == 0 ? kFirstPath : kSecondPath, 10);
            Job.AddBytesDone(10);
            Job.MarkItemsDone(1);
            if (round % RoundsPerQuestion == 0) {
                Action action = Action::Cancel;
                std::string renamePath;
                answered +=
                    Job.WaitForConflict(TarvaneTransferConflict(), action, renamePath) ? 1u : 0u;
            }
        }
        return answered;
    }

    CountingSound Sound;
    TarvaneTransferJob Job{false, 1, "label"};
    std::vector<std::thread> Others;
    // How often the other threads have looked, so that the worker can go on until they have.
    std::atomic<std::uint64_t> Looks{0};
};

// Must hold for every snapshot taken while the worker works: counters never go back, fractions stay
// in their range, texts are whole and among those that were set.
TEST_F(JobThreads, SnapshotsShowOnlyStatesThatTheJobWasIn) {
    std::uint64_t bytesBefore = 0;
    std::uint64_t itemsBefore = 0;
    Poll([&] {
        const TarvaneTransferUiSnapshot ui = Job.MakeUiSnapshot();
        EXPECT_GE(ui.DoneBytes, bytesBefore);
        EXPECT_GE(ui.DoneItems, itemsBefore);
        EXPECT_LE(ui.OverallProgress01, 1.0);
        EXPECT_LE(ui.FileProgress01, 1.0);
        EXPECT_TRUE(IsOneOf(ui.MessageText, {"Preparing", "Copying", "Copied."}));
        EXPECT_TRUE(IsOneOf(ui.PathText, {"Current: Waiting...", "Current: " + kFirstPath,
                                          "Current: " + kSecondPath}));
        bytesBefore = ui.DoneBytes;
        itemsBefore = ui.DoneItems;
    });
    Poll([&] { EXPECT_EQ(Job.MakeJobSnapshot().Source, "label"); });
    Job.SetTotals(kMostRounds, kMostRounds * 10);
    Job.SetStage(Stage::Copying, "");
    std::uint64_t rounds = 0;
    for (; rounds < kMostRounds && (rounds < 20'000 || Looks < 200); ++rounds) {
        Job.SetCurrentPath(rounds % 2 == 0 ? kFirstPath : kSecondPath, 10);
        Job.AddBytesDone(10);
        Job.MarkItemsDone(1);
    }
    Job.FinishSuccess("Copied.");
    JoinOthers();
    EXPECT_GE(Looks, 200u);
    EXPECT_EQ(bytesBefore, rounds * 10);
    EXPECT_EQ(itemsBefore, rounds);
    EXPECT_EQ(Job.MakeUiSnapshot().StageText, "Stage: Completed | Copied.");
}

// Must hold: however many threads look and answer, each question is answered exactly once.
TEST_F(JobThreads, EveryQuestionIsAnsweredOnceByWhoeverComesFirst) {
    std::atomic<std::uint64_t> accepted{0};
    for (int thread = 0; thread < 2; ++thread) {
        Poll([&] {
            TarvaneTransferConflict shown;
            if (Job.GetPendingConflict(shown) && Job.ResolveConflict(Action::Skip, "")) {
                ++accepted;
            }
        });
    }
    Poll([this] { Job.MakeUiSnapshot(); });
    const std::uint64_t answered = Work(2000, 2);
    Job.FinishSuccess("Copied.");
    JoinOthers();
    EXPECT_EQ(answered, 1000u);
    EXPECT_EQ(accepted, 1000u);
}

// Must hold: a cancel stops a worker that copies or waits, the message of its finisher stands, and
// what it did until then stays counted.
TEST_F(JobThreads, ACancelStopsAWorkerWhereverItIs) {
    std::atomic<std::uint64_t> answers{0};
    Poll([&] {
        if (answers < 50 && Job.ResolveConflict(Action::Overwrite, "")) {
            ++answers;
        }
    });
    Poll([&] {
        if (answers == 50) {
            Job.RequestCancel();
        }
    });
    Poll([this] { Job.MakeJobSnapshot(); });
    const std::uint64_t answered = Work(kMostRounds, 7);
    Job.FinishCanceled("Copy canceled.");
    JoinOthers();
    const TarvaneTransferUiSnapshot ui = Job.MakeUiSnapshot();
    EXPECT_LE(answered, 50u);
    EXPECT_EQ(ui.MessageText, "Copy canceled.");
    EXPECT_TRUE(ui.bFinished && ui.bCanceled && !ui.bCancelRequested);
    EXPECT_EQ(ui.DoneBytes, ui.DoneItems * 10);
}

} // namespace
