// How far a run is, in words that are ours and not the engine's. None is cleaned for a screen.

#pragma once

#include <cstdint>
#include <string>

#include "flusher.h"
#include "progress_watch.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"

// How far the look before the job is.
std::string PreflightText(std::uint64_t EntriesSeen);

// The job in one line with the engine's texts: how much is done and how fast, or the stage while
// nothing is counted yet, followed by the claims.
std::string JobText(const TarvaneTransferUiSnapshot& Snapshot, const ProgressClaims& Claims);

// The claims, empty when there is nothing to say.
std::string StalledText(const ProgressClaims& Claims);
std::string WrongTotalsText(const ProgressClaims& Claims);

// How far a job came, as the last line of its run: "Copied 12,345 entries, 6.7 GB, in 03:12 (35.7
// MB/s); 12 skipped, 3 replaced, 1 renamed." Less than a second is no time to tell a rate from.
std::string CountsText(const TransferCounts& Counts, bool bMove);

// How far the finishing of the copies is, in entries.
struct FinishProgress {
    std::uint64_t Done = 0;
    std::uint64_t Total = 0;
    bool bFinished = false;
};

// "Setting modes and dates: 12,345 of 50,000 entries."
std::string FinishText(const FinishProgress& Progress);

// What Esc does while the look, the finishing or the flush is shown, and what is not to be done
// yet.
inline constexpr char kPreflightHint[] = "Press Esc to cancel.";
inline constexpr char kFinishHint[] = "Esc leaves the rest without them.";
inline constexpr char kFlushHint[] =
    "Not safe to unplug yet. Esc ends the wait; the copied files stay.";

// What a flush still has to do: "Writing to the disk: at most 1.5 MB left | Rate 6.0 MB/s".
std::string FlushText(const FlushProgress& Progress);
