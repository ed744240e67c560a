// What became of the taken names of one job.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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
    // The sources of the names that were skipped with all below them.
    const std::vector<std::string>& SkippedDirectories() const { return SkippedTrees; }
    // The names of files with a size that were skipped. The engine counts of them, and of nothing
    // else that is skipped, the bytes that it has counted before.
    std::uint64_t SkippedFiles() const { return SkippedSizedNames; }

private:
    std::optional<SettledConflict> Settle(const ItemCounters& Now);

    std::optional<AnsweredConflict> Last;
    std::uint64_t ReplacedNames = 0;
    std::uint64_t RenamedNames = 0;
    std::uint64_t MergedNames = 0;
    std::uint64_t SkippedSizedNames = 0;
    std::vector<std::string> SkippedTrees;
};
