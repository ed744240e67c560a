// How a run has ended: the job, and what comes before and after it.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "finisher.h"

enum class RunResult {
    Succeeded,
    Failed,
    Canceled,
    // Nothing was begun: the request contradicts itself, or cannot be carried out here.
    WrongUsage,
};

// What a job has done until its end, in numbers.
struct TransferCounts {
    // Without what was skipped, directories that were there already, and a file that was begun and
    // removed again.
    std::uint64_t Entries = 0;
    std::uint64_t Bytes = 0;
    double Seconds = 0.0;
    // Entries; what lies in a directory is counted too.
    std::uint64_t Skipped = 0;
    // Taken names.
    std::uint64_t Replaced = 0;
    std::uint64_t Renamed = 0;
    // Directories that were there already and are not among the entries.
    std::uint64_t Merged = 0;
};

struct RunOutcome {
    RunResult Result = RunResult::Failed;
    // How far the job came, when it has succeeded; otherwise why it has not, or why there was none.
    std::string Text = {};
    // Nothing when there was no job.
    std::optional<TransferCounts> Counts = {};
    // The signal that the run was ended by, SIGINT also for Esc after the job. Nothing when it came
    // to its own end, when Esc or SIGINT has canceled the job, or Esc the look before it.
    std::optional<int> EndSignal = {};
    // What has become of modes, times and owners; nothing when none were to be carried over.
    std::optional<FinishResult> Finishing = {};
    // Whether what was copied has reached the disks; nothing when that was not to be waited for.
    std::optional<bool> bFlushed = {};
    // What is to be said of that, or what went wrong with it; the other one is empty.
    std::string FlushText = {};
    std::string FlushError = {};
};

// The program's exit status for an outcome; the numbers are the program's own.
using ExitStatusFunction = int (*)(const RunOutcome& Outcome);
