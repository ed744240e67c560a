// What a look through the sources shares with whoever follows it, and what it comes to.

#pragma once

#include "preflight_findings.h"

#include <atomic>
#include <cstdint>

// How the interface follows a look that runs elsewhere, and ends it early. It may lie in memory
// that processes share.
struct PreflightControl {
    std::atomic<bool> bStopRequested{false};
    std::atomic<std::uint64_t> EntriesSeen{0};
};

struct PreflightResult {
    PreflightFindings Findings;
    // The totals that the engine will count.
    std::uint64_t Entries = 0;
    std::uint64_t Bytes = 0;
    // What will really be copied: links to directories followed, entries that are only renamed
    // left out. Neither counts what a link cycle would repeat.
    std::uint64_t CopiedEntries = 0;
    std::uint64_t CopiedBytes = 0;
    // The move removes entries that nobody selected, through a link to a directory.
    bool bRemovesUnselected = false;
    // It was stopped early; the other members hold what was seen until then.
    bool bCanceled = false;
};
