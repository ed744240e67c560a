// A session that gets no memory.

#include "transfer_session.h"

#include "becomes_true.h"
#include "failing_allocation.h"
#include "file_tree.h"
#include "link_names.h"
#include "open_descriptors.h"
#include "temporary_directory.h"

#include <new>
#include <optional>
#include <utility>

#include <gtest/gtest.h>

namespace {

using Job = std::shared_ptr<TarvaneTransferJob>;

// The engine's thread has no memory any more, to its end.
bool gRunsOut = false;

} // namespace

void RealRunJob(const Job& Running, TarvaneTransferPlan Plan) REAL(RunTarvaneTransferJob);
void WrappedRunJob(const Job& Running, TarvaneTransferPlan Plan) WRAPPED(RunTarvaneTransferJob);

void WrappedRunJob(const Job& Running, TarvaneTransferPlan Plan) {
    if (gRunsOut) {
        thread_local std::optional<FailingAllocation> none;
        none.emplace(0);
        throw std::bad_alloc();
    }
    RealRunJob(Running, std::move(Plan));
}

TEST(TransferSession, LeavesNothingBehindWhenMemoryRunsOut) {
    constexpr std::size_t kMostAllocations = 200;
    const TemporaryDirectory directory;
    WriteFile(directory / "a.txt", "new");
    TarvaneTransferPlan plan;
    plan.Items.resize(1);
    plan.Items[0].SourcePath = directory / "a.txt";
    plan.Items[0].DestinationPath = directory / "b.txt";
    const auto before = OpenDescriptors();
    std::size_t allowed = 0;
    for (bool bFailed = true; bFailed && allowed < kMostAllocations; ++allowed) {
        TarvaneTransferPlan copy = plan;
        std::optional<TransferSession> session;
        const FailingAllocation limit(allowed);
        try {
            session.emplace(std::move(copy));
        } catch (const std::bad_alloc&) {}
        bFailed = limit.Failed();
    }
    EXPECT_GT(allowed, 1U);
    EXPECT_LT(allowed, kMostAllocations);
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_TRUE(CollectActiveTarvaneTransferJobSnapshots().empty());
}

TEST(TransferSession, FailsWithoutASentenceWhereThereIsNoMemoryForIt) {
    gRunsOut = true;
    TransferSession session{TarvaneTransferPlan()};
    EXPECT_TRUE(BecomesTrue("the session is over", [&] { return session.IsOver(); }));
    gRunsOut = false;
    const TarvaneTransferUiSnapshot end = session.Job().MakeUiSnapshot();
    EXPECT_TRUE(end.bFinished);
    EXPECT_FALSE(end.bSucceeded);
    EXPECT_EQ(end.MessageText, "");
}

// The end of a session may come while an exception over memory goes on.
TEST(TransferSession, EndsWithoutMemory) {
    const TemporaryDirectory directory;
    WriteFile(directory / "a.txt", "new");
    TarvaneTransferPlan plan;
    plan.Items.resize(1);
    plan.Items[0].SourcePath = directory / "a.txt";
    plan.Items[0].DestinationPath = directory / "b.txt";
    std::optional<TransferSession> session;
    session.emplace(std::move(plan));
    {
        const FailingAllocation limit(0);
        session.reset();
    }
    EXPECT_EQ(ReadFile(directory / "b.txt"), "new");
}
