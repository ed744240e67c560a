// What a front end may claim about a running job beyond the engine's own texts.

#pragma once

#include <chrono>
#include <cstdint>

#include "tarvanetransfer.h"

// What is shown beside the texts of one snapshot.
struct ProgressClaims {
    // Of the whole job: 0 to 99 while it runs and never less than before, 100 once it has
    // succeeded.
    int Percent = 0;
    // Seconds without a byte or an entry while copying; 0 unless they are worth a word.
    int StalledSeconds = 0;
    // More was copied than the scan has counted: the totals cannot be relied on.
    bool bMoreThanCounted = false;
    // A file was shorter than counted. The engine shows such a file as whole at its end.
    bool bLessThanCounted = false;
};

// How full the bar of the current file is. What has no bytes of its own gets the fraction of the
// whole from the engine.
int FilePercent(const TarvaneTransferUiSnapshot& Snapshot, const ProgressClaims& Claims);

// Follows one job from snapshot to snapshot.
class ProgressWatch {
public:
    using Clock = std::chrono::steady_clock;

    // bWaiting: the job waits for an answer, which is no stall.
    ProgressClaims Observe(const TarvaneTransferUiSnapshot& Snapshot, bool bWaiting,
                           Clock::time_point Now);

private:
    int StalledSeconds(const TarvaneTransferUiSnapshot& Snapshot, bool bWaiting,
                       Clock::time_point Now);

    bool IsLessThanCounted(const TarvaneTransferUiSnapshot& Snapshot);

    // A file that is being copied.
    struct FileAtWork {
        std::uint64_t ItemsBefore = 0;
        std::uint64_t TotalBytes = 0;
        // What was still to come of the file when DoneBytes had been counted.
        std::uint64_t BytesLeft = 0;
        std::uint64_t DoneBytes = 0;
    };

    int Percent = 0;
    bool bLess = false;
    // As it was in the last snapshot, and as it was in an earlier one that the next has confirmed:
    // the counters of one snapshot may be those of two files.
    FileAtWork Seen;
    FileAtWork Confirmed;
    std::uint64_t LastBytes = 0;
    std::uint64_t LastItems = 0;
    bool bCopying = false;
    Clock::time_point LastAdvance;
};
