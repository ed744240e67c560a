// The registry when locks or memory fail, and when jobs end in the middle of a collection.

#include "engine_source.h"

#include "becomes_true.h"
#include "counting_sound.h"
#include "failing_allocation.h"
#include "failing_lock.h"
#include "job_access.h"
#include "lock_probe.h"

#include <thread>

#include <gtest/gtest.h>

namespace {

class RegistryFailures : public testing::Test {
protected:
    RegistryFailures() { CollectActiveTarvaneTransferJobSnapshots(); }

    std::shared_ptr<TarvaneTransferJob> Registered(const std::string& Label) {
        auto job = std::make_shared<TarvaneTransferJob>(false, 1, Label);
        RegisterTarvaneTransferJob(job);
        return job;
    }

    CountingSound Sound;
};

TEST_F(RegistryFailures, AFailedLockIsThrownAndLeavesTheRegistryAsItWas) {
    const auto job = Registered("A");
    {
        const FailingLock failing(gTransferRegistryMutex);
        EXPECT_THROW(RegisterTarvaneTransferJob(job), std::system_error);
        EXPECT_THROW(CollectActiveTarvaneTransferJobSnapshots(), std::system_error);
    }
    EXPECT_EQ(gTransferRegistry.size(), 1u);
    EXPECT_EQ(CollectActiveTarvaneTransferJobSnapshots().size(), 1u);
}

TEST_F(RegistryFailures, AnEmptyJobIsIgnoredWithoutLocking) {
    const FailingLock failing(gTransferRegistryMutex);
    EXPECT_NO_THROW(RegisterTarvaneTransferJob(nullptr));
    EXPECT_EQ(gTransferRegistry.size(), 0u);
}

TEST_F(RegistryFailures, AJobThatCannotBeLockedIsThrownAndTheRegistryIsReleased) {
    const auto job = Registered("A");
    {
        const FailingLock failing(PrivateOf<JobMember::Mutex>(*job));
        EXPECT_THROW(CollectActiveTarvaneTransferJobSnapshots(), std::system_error);
    }
    EXPECT_TRUE(IsFree(gTransferRegistryMutex));
    EXPECT_EQ(CollectActiveTarvaneTransferJobSnapshots().size(), 1u);
}

TEST_F(RegistryFailures, ARegistryThatCannotGrowThrowsReleasedAndWithoutItsExpiredEntries) {
    auto expired = Registered("A");
    const auto kept = Registered("B");
    const auto added = std::make_shared<TarvaneTransferJob>(false, 1, "C");
    expired.reset();
    gTransferRegistry.resize(1);
    gTransferRegistry.shrink_to_fit();
    gTransferRegistry[0] = kept;
    {
        const FailingAllocation failing(0);
        EXPECT_THROW(RegisterTarvaneTransferJob(added), std::bad_alloc);
    }
    EXPECT_TRUE(IsFree(gTransferRegistryMutex));
    EXPECT_EQ(gTransferRegistry.size(), 1u);
}

// Lets every allocation of a collection fail once, until none does.
TEST_F(RegistryFailures, ARowThatCannotBeBuiltLeavesTheRegistryReleasedAndWhole) {
    const auto first = Registered("a label too long to live inside of the string object");
    const auto second = Registered("B");
    bool bFailed = true;
    std::size_t allowed = 0;
    for (; bFailed && allowed < 1000; ++allowed) {
        try {
            const FailingAllocation failing(allowed);
            CollectActiveTarvaneTransferJobSnapshots();
            bFailed = failing.Failed();
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(IsFree(gTransferRegistryMutex));
        }
        EXPECT_EQ(gTransferRegistry.size(), 2u);
    }
    EXPECT_FALSE(bFailed);
    EXPECT_GT(allowed, 2u);
}

TEST_F(RegistryFailures, ACollectionHoldsTheRegistryWhileItTakesTheLocksOfJobs) {
    const auto job = Registered("A");
    std::unique_lock lock(PrivateOf<JobMember::Mutex>(*job));
    std::thread collector([] { CollectActiveTarvaneTransferJobSnapshots(); });
    EXPECT_TRUE(BecomesTrue("a row is being built", [&] { return job.use_count() == 2; }));
    EXPECT_FALSE(IsFree(gTransferRegistryMutex));
    lock.unlock();
    collector.join();
    EXPECT_TRUE(IsFree(gTransferRegistryMutex));
}

TEST_F(RegistryFailures, AJobReleasedDuringACollectionDiesThereUnderTheLockOfTheRegistry) {
    std::thread::id diedOn;
    bool bRegistryFree = true;
    std::shared_ptr<TarvaneTransferJob> job(new TarvaneTransferJob(false, 1, "A"),
                                            [&](TarvaneTransferJob* Dying) {
                                                diedOn = std::this_thread::get_id();
                                                bRegistryFree = IsFree(gTransferRegistryMutex);
                                                delete Dying;
                                            });
    RegisterTarvaneTransferJob(job);
    const auto next = Registered("B");
    std::unique_lock lock(PrivateOf<JobMember::Mutex>(*job));
    std::vector<TarvaneTransferJobSnapshot> rows;
    std::thread collector([&] { rows = CollectActiveTarvaneTransferJobSnapshots(); });
    const std::thread::id collectorId = collector.get_id();
    EXPECT_TRUE(BecomesTrue("a row is being built", [&] { return job.use_count() == 2; }));
    job.reset();
    lock.unlock();
    collector.join();
    EXPECT_EQ(diedOn, collectorId);
    EXPECT_FALSE(bRegistryFree);
    EXPECT_EQ(rows.size(), 2u);
    EXPECT_EQ(gTransferRegistry.size(), 2u);
}

} // namespace
