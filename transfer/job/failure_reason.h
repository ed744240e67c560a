// Why a job has failed. The engine's sentences name neither the file nor the reason where it opens
// and writes files; both are found out afterwards, by looking.

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "conflict_desk.h"
#include "tarvanetransfer.h"

// A job that has failed, after the engine has cleaned up.
struct FailedJob {
    std::string Sentence;
    const TarvaneTransferPlan& Plan;
    // What the job worked on last, and the size that it had then.
    std::filesystem::path CurrentPath;
    std::uint64_t CurrentBytes = 0;
    // Skipped ones included.
    std::uint64_t DoneEntries = 0;
    // None when no name was taken.
    const AnsweredConflict* LastAnswer = nullptr;
};

// The sentence whole, with the path before it and the reason behind it where they are certain:
// "/to/big: Failed while writing destination file. (No space left on /to: 2.0 MB needed, 256 KB
// free)". Not cleaned for a screen. Nothing is read, written or waited for.
std::string FailureText(const FailedJob& Failed);
