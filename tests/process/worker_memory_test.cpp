// A worker thread that gets no memory.

#include "worker_thread.h"

#include "failing_allocation.h"
#include "open_descriptors.h"

#include <new>

#include <gtest/gtest.h>

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
