// What a private job makes without a record of what it should be like. What has no source of its
// own gets what the user's umask gives.

#pragma once

#include "finisher.h"
#include "tarvanetransfer.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <vector>

// Before the job.

// The directories above the destinations that the job is going to make, the outermost first.
std::vector<std::filesystem::path> MissingParents(const TarvaneTransferPlan& Plan);

// The destinations of CD tracks where nothing stands.
std::vector<std::filesystem::path> FreeTrackNames(const TarvaneTransferPlan& Plan);

// No entry that is there can be younger. One that is made within the next milliseconds may seem to
// be older, as the clock that gives entries their times goes in steps.
timespec TimeNow();

// After the job, when all that is in the record is finished. RecordedThere counts those that the
// job has made, replaced or merged into; others are looked for only where the job counts more, and
// get what belongs to their sources. Returns how many of these stay private, having no source any
// more. Errors: std::system_error when the record cannot be read.
std::uint64_t OpenUpUnrecorded(const FinishTask& Task, std::uint64_t RecordedThere,
                               const std::atomic<bool>& bCancel);
