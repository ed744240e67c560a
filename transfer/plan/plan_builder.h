// From a request to the engine's plan: which source gets which name at the destination.

#pragma once

#include <variant>

#include "plan_refusal.h"
#include "tarvanetransfer.h"
#include "track_list.h"
#include "transfer_request.h"

using BuiltPlan = std::variant<TarvaneTransferPlan, PlanRefusal>;

// Reads sources and destination as cp and mv do; every path of the plan is absolute, with links and
// ".." as they were given. A CD without a track stands for all its audio tracks. Whether the names
// at the destination are taken is not looked at.
//
// Threads: any; ListTracks is called on the same one.
BuiltPlan BuildPlan(const TransferRequest& Request, const TrackLister& ListTracks);
