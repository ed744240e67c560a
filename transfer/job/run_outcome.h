// How a run has ended: the job, and what comes before and after it.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

enum class RunResult {
    Succeeded,
    Failed,
    Canceled,
    // Nothing was begun: the request contradicts itself, or cannot be carried out here.
    WrongUsage,
};

// What a job has done until its end, in numbers.
struct TransferCounts {
    // Without what was skipped.
    std::uint64_t Entries = 0;
    std::uint64_t Bytes = 0;
};

struct RunOutcome {
    RunResult Result = RunResult::Failed;
    // The job's last text, or the reason why there was no job.
    std::string Text = {};
    // Nothing when there was no job.
    std::optional<TransferCounts> Counts = {};
    // The signal that the run was ended by, SIGINT for Esc too; nothing when it came to its own
    // end.
    std::optional<int> EndSignal = {};
    // Whether what was copied has reached the disks; nothing when that was not to be waited for.
    std::optional<bool> bFlushed = {};
    // What is to be said of that, or what went wrong with it; the other one is empty.
    std::string FlushText = {};
    std::string FlushError = {};
};
