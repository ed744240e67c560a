// What a look through the sources shares with whoever follows it, and what it comes to.

#pragma once

#include "preflight_findings.h"

#include <atomic>
#include <cstdint>

// How the interface follows a look that runs elsewhere. It may lie in memory that processes share.
struct PreflightControl {
    std::atomic<std::uint64_t> EntriesSeen{0};
};

// So many taken names, by what the choices will do about them.
struct TakenNameCounts {
    std::uint64_t Replaced = 0;
    // Directories that stay, and get what is in their namesakes.
    std::uint64_t Merged = 0;
    // Those of them that a link leads to, which are in no total.
    std::uint64_t MergedBehindLinks = 0;
    std::uint64_t Skipped = 0;
    std::uint64_t Renamed = 0;
    // Replaced or skipped, as the contents are.
    std::uint64_t Compared = 0;
    // Somebody will be asked.
    std::uint64_t Asked = 0;
    // The run must not begin.
    std::uint64_t Refused = 0;
};

struct PreflightResult {
    PreflightFindings Findings;
    TakenNameCounts Taken;
    // The totals that the engine will count.
    std::uint64_t Entries = 0;
    std::uint64_t Bytes = 0;
    // What is in them and stays where it is.
    std::uint64_t SkippedEntries = 0;
    std::uint64_t SkippedBytes = 0;
    // What the job will count beyond them, because links lead to it; what is skipped there too.
    std::uint64_t FollowedEntries = 0;
    std::uint64_t FollowedBytes = 0;
    // What will really be copied: links to directories followed, entries that are only renamed or
    // are skipped left out. Neither counts what a link cycle would repeat.
    std::uint64_t CopiedEntries = 0;
    std::uint64_t CopiedBytes = 0;
    // The move removes entries that nobody selected, through a link to a directory.
    bool bRemovesUnselected = false;
    // One answer for all files does what the choices say about each: one item goes where names
    // differ in every byte, and what is taken there are files, for files to replace or to skip,
    // and directories to merge into. No link, nothing special, no other mount on either way, and
    // when there is a record no file to replace that more people may use than its source.
    bool bTakesOnlyFiles = false;
    // Everything was looked at, so the totals hold.
    bool bComplete = true;
};
