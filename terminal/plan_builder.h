// From a request to the engine's plan: which source gets which name at the destination.

#pragma once

#include <string>
#include <variant>
#include <vector>

#include "tarvanetransfer.h"
#include "transfer_request.h"

// Why there is no plan. Nothing was touched. Sentences are like those of UsageError; there is none
// when the user ended the wait for a drive.
struct PlanRefusal {
    int ExitStatus = 0;
    std::vector<std::string> Sentences;
};

using BuiltPlan = std::variant<TarvaneTransferPlan, PlanRefusal>;

// Reads sources and destination as cp and mv do; every path of the plan is absolute, with links and
// ".." as they were given. A CD without a track stands for all its audio tracks. What the request's
// conflict choices would refuse about the items themselves is refused here, before anything is
// touched.
//
// Threads: an interface thread, before other threads are started, because it may wait for a drive
// (see FetchTrackList).
BuiltPlan BuildPlan(const TransferRequest& Request);
