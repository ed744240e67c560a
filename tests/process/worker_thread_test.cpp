#include "worker_thread.h"

#include "becomes_true.h"
#include "no_descriptors_left.h"
#include "text_of_exception.h"

#include <atomic>
#include <csignal>
#include <poll.h>
#include <set>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

namespace {

constexpr int kLimitMilliseconds = 20000;

bool IsReadable(int Descriptor, int TimeoutMilliseconds) {
    pollfd event{Descriptor, POLLIN, 0};
    return poll(&event, 1, TimeoutMilliseconds) == 1 && event.revents == POLLIN;
}

sigset_t BlockedSignals() {
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return blocked;
}

} // namespace

TEST(WorkerThread, IsOverWhenItsWorkIs) {
    std::atomic<bool> bMayEnd{false};
    const WorkerThread worker([&bMayEnd] { bMayEnd.wait(false); });
    const int now = 0;
    EXPECT_FALSE(worker.IsOver());
    EXPECT_FALSE(IsReadable(worker.OverFd(), now));
    bMayEnd = true;
    bMayEnd.notify_one();
    EXPECT_TRUE(BecomesTrue("the worker is over", [&worker] { return worker.IsOver(); }));
}

TEST(WorkerThread, StaysReadableWhenItIsOver) {
    const WorkerThread worker([] {});
    EXPECT_TRUE(IsReadable(worker.OverFd(), kLimitMilliseconds));
    EXPECT_TRUE(IsReadable(worker.OverFd(), kLimitMilliseconds));
}

// Whoever is woken by the descriptor must not find the worker unfinished, and would not be woken
// again.
TEST(WorkerThread, IsOverBeforeItsDescriptorIsReadable) {
    constexpr int kRounds = 500;
    for (int round = 0; round < kRounds; ++round) {
        int written = 0;
        const WorkerThread worker([&written] { written = 7; });
        ASSERT_TRUE(IsReadable(worker.OverFd(), kLimitMilliseconds));
        ASSERT_TRUE(worker.IsOver()) << round;
        ASSERT_EQ(written, 7);
    }
}

TEST(WorkerThread, IsWaitedForWhenItIsLetGo) {
    std::atomic<bool> bDestroying{false};
    bool bEnded = false;
    {
        const WorkerThread worker([&] {
            bDestroying.wait(false);
            bEnded = true;
        });
        bDestroying = true;
        bDestroying.notify_one();
    }
    EXPECT_TRUE(bEnded);
}

TEST(WorkerThread, BlocksSignalsButFaultsInItsWorkAndNoneOutside) {
    const std::set<int> open = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGKILL, SIGSTOP};
    const sigset_t before = BlockedSignals();
    sigset_t inside{};
    {
        const WorkerThread worker([&inside] { inside = BlockedSignals(); });
    }
    const sigset_t after = BlockedSignals();
    for (int signal = 1; signal <= SIGSYS; ++signal) {
        EXPECT_EQ(sigismember(&inside, signal) == 1, open.count(signal) == 0) << signal;
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << signal;
    }
}

TEST(WorkerThread, SaysWhyItCannotBeStarted) {
    std::exception_ptr failure;
    bool bWorked = false;
    {
        const NoDescriptorsLeft limit;
        try {
            const WorkerThread worker([&bWorked] { bWorked = true; });
        } catch (...) {
            failure = std::current_exception();
        }
    }
    EXPECT_EQ(TextOf(failure), "Too many open files");
    EXPECT_FALSE(bWorked);
}
