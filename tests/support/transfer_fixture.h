// What the tests of the copying functions share: a directory, a job, and short words for looking at
// both.

#pragma once

#include "file_tree.h"
#include "tarvanetransfer.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

inline constexpr bool kCopy = false;
inline constexpr bool kMove = true;

// Items and bytes that a job counts as done.
struct Counted {
    std::uint64_t Items = 0;
    std::uint64_t Bytes = 0;

    bool operator==(const Counted&) const = default;
};

inline std::ostream& operator<<(std::ostream& Out, const Counted& Counts) {
    return Out << Counts.Items << " items, " << Counts.Bytes << " bytes";
}

inline Counted DoneBy(const TarvaneTransferJob& Job) {
    const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
    return {snapshot.DoneItems, snapshot.DoneBytes};
}

// The part of it that was skipped.
inline Counted SkippedBy(const TarvaneTransferJob& Job) {
    return {Job.GetSkippedItems(), Job.GetSkippedBytes()};
}

class TransferTest : public testing::Test {
protected:
    std::shared_ptr<TarvaneTransferJob> SharedJob =
        std::make_shared<TarvaneTransferJob>(false, 1, "");
    TarvaneTransferJob& Job = *SharedJob;
    // Every step assigns it and none appends, which the old text would show.
    std::string Message = "a message from before";
    TemporaryDirectory Directory;
};

// A plan whose items are given as source and destination.
inline TarvaneTransferPlan
PlanOf(bool bMove,
       const std::vector<std::pair<std::filesystem::path, std::filesystem::path>>& Items,
       TarvaneTransferConflictPolicy Policy = TarvaneTransferConflictPolicy::Overwrite) {
    TarvaneTransferPlan plan;
    plan.bMove = bMove;
    plan.ConflictPolicy = Policy;
    for (const auto& [source, destination] : Items) {
        TarvaneTransferItemPlan item;
        item.SourcePath = source;
        item.DestinationPath = destination;
        plan.Items.push_back(item);
    }
    return plan;
}
