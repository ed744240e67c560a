// A job as it is in the middle of a copy, for the benchmarks to look at.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarvanetransfer.h"

constexpr std::uint64_t kBlockBytes = 262144;

// A path as music collections have them, too long to be shown whole.
inline std::string PathOfFile(int Number) {
    return "/home/user/Music/Collections/The Quartet/2024-02-11 Live in the Town Hall/CD 2/" +
           std::to_string(Number) + " - Encore with the whole orchestra.flac";
}

inline std::shared_ptr<TarvaneTransferJob> MakeRunningJob() {
    const bool bMove = false;
    auto job = std::make_shared<TarvaneTransferJob>(bMove, 3, "Music");
    job->SetTotals(20000, 1234567890123);
    job->SetStage(TarvaneTransferStage::Copying, "Copying items");
    job->SetCurrentPath(PathOfFile(7), 41037004);
    job->MarkItemsDone(1234);
    job->AddBytesDone(12345678901);
    return job;
}
