// What became of the taken names of one job.

#pragma once

#include <cstdint>
#include <optional>

#include "conflict_desk.h"

enum class ConflictOutcome {
    Replaced,
    Merged,
    // The source got the answer's RenamePath.
    Renamed,
    Skipped,
    // The job ended before the name was done with.
    Unfinished,
};

struct SettledConflict {
    AnsweredConflict Answered;
    ConflictOutcome Outcome = ConflictOutcome::Unfinished;
};

// The engine tells what it has done in counters only: what became of a name shows in those of the
// next one, or of the end.
//
// Threads: one.
class ConflictTally {
public:
    // Takes the next answer. Returns the one before, which is settled now; nothing for the first.
    std::optional<SettledConflict> Add(const AnsweredConflict& Answered);
    // The same for the last one, with the counters of a job that is over.
    std::optional<SettledConflict> Finish(const ItemCounters& Final);

    std::uint64_t Replaced() const { return ReplacedNames; }
    std::uint64_t Renamed() const { return RenamedNames; }
    std::uint64_t Merged() const { return MergedNames; }
    // Whether anything but files with a size was skipped. The engine may count fewer bytes of that
    // than it has counted before.
    bool SkippedOtherThanFiles() const { return bSkippedOthers; }

private:
    std::optional<SettledConflict> Settle(const ItemCounters& Now);

    std::optional<AnsweredConflict> Last;
    std::uint64_t ReplacedNames = 0;
    std::uint64_t RenamedNames = 0;
    std::uint64_t MergedNames = 0;
    bool bSkippedOthers = false;
};
