// What a job that is over comes to: how far it came, what is missing, and how the run ends by it.

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "conflict_tally.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"

// Directories of the sources that must not be read: the engine copies them as empty ones.
struct UnreadDirectories {
    // The first ones, and the number of all.
    std::vector<std::filesystem::path> First = {};
    std::uint64_t Count = 0;

    // Forgets those in a tree that was skipped: they are not missing.
    void LeaveOut(const std::filesystem::path& Tree);
};

// What the look before a job has found that its run and its end depend on.
struct FoundBeforehand {
    UnreadDirectories Unread = {};
    // How many files are taken, where one answer for all of them does what the choices say.
    std::optional<std::uint64_t> TakenFiles = {};
};

// A job that is over, and what is known about it beside its own texts and counters.
struct EndedJob {
    const TarvaneTransferJob& Job;
    const TarvaneTransferPlan& Plan;
    const ConflictTally& Names;
    // None when no name was taken.
    const AnsweredConflict* LastAnswer;
    const UnreadDirectories& Unread;
    // Of the choice that has ended it; empty when none has.
    const std::string& FailSentence;
    // The taken files, when the engine has answered for them by itself, so that nobody has counted
    // what was replaced.
    std::optional<std::uint64_t> FilesLeftToEngine = {};
};

// A job whose result is not whole has failed, whatever the engine says.
RunOutcome OutcomeOf(const EndedJob& Ended);

// Whether a job that has succeeded has certainly done less than was counted. Links that are
// followed add to what was counted, and may hide it.
bool IsLessThanCounted(const EndedJob& Ended);
