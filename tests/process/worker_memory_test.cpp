// A worker thread that gets no memory.

#include "crash_stack.h"
#include "worker_thread.h"

#include "failing_allocation.h"
#include "open_descriptors.h"

#include <atomic>
#include <csignal>
#include <new>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

int RealAtThreadEnd(void (*Destroy)(void*), void* Object,
                    void* Program) asm("__real___cxa_thread_atexit");
int WrappedAtThreadEnd(void (*Destroy)(void*), void* Object,
                       void* Program) asm("__wrap___cxa_thread_atexit");

namespace {

// What is registered to be destroyed with its thread.
std::atomic<int> gObjectsOfThreads{0};

} // namespace

int WrappedAtThreadEnd(void (*Destroy)(void*), void* Object, void* Program) {
    ++gObjectsOfThreads;
    return RealAtThreadEnd(Destroy, Object, Program);
}

TEST(WorkerThread, LeavesNoDescriptorBehindWhenMemoryRunsOut) {
    constexpr std::size_t kMostAllocations = 100;
    const auto before = OpenDescriptors();
    std::size_t allowed = 0;
    for (bool bFailed = true; bFailed && allowed < kMostAllocations; ++allowed) {
        const FailingAllocation limit(allowed);
        try {
            const WorkerThread worker([] {});
        } catch (const std::bad_alloc&) {}
        bFailed = limit.Failed();
    }
    EXPECT_GT(allowed, 1U);
    EXPECT_LT(allowed, kMostAllocations);
    EXPECT_EQ(OpenDescriptors(), before);
}

// Where memory runs out while the C library takes note of such an object, the process ends.
TEST(WorkerThread, HasNoObjectOfItsOwnToDestroyAtItsEnd) {
    std::optional<WorkerThread> worker;
    worker.emplace([] {});
    worker.reset();
    EXPECT_EQ(gObjectsOfThreads, 0);
}

TEST(CrashStack, IsLeftOutWhereThereIsNoMemoryForIt) {
    std::thread([] {
        // A sanitizer gives every thread one and wants it back.
        stack_t before{};
        const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
        ASSERT_EQ(sigaltstack(&none, &before), 0);
        {
            const FailingAllocation limit(0);
            ArmCrashStack();
            EXPECT_TRUE(limit.Failed());
        }
        stack_t now{};
        sigaltstack(nullptr, &now);
        EXPECT_NE(now.ss_flags & SS_DISABLE, 0);
        sigaltstack(&before, nullptr);
    }).join();
}
