// The look through the sources before a job starts, as the user lives through it.

#pragma once

#include <optional>

#include "job_end.h"
#include "prompt_context.h"
#include "run_outcome.h"
#include "status_record.h"
#include "tarvanetransfer.h"
#include "track_list.h"
#include "transfer_request.h"

// Looks through the sources beside the loop, says so, and tells what it found. Esc cancels the run.
// A request that leaves the look out gets the guards all the same. Whether the run goes on is the
// preflight verdict's; this asks where that says so.
//
// Record, where there is one, gets what is to be carried over.
//
// Returns how the run has ended, or nothing when it goes on, with OutFound. A dry run always ends
// here.
std::optional<RunOutcome> RunPreflightPhase(const TransferRequest& Request,
                                            const TarvaneTransferPlan& Plan,
                                            const PromptContext& Context, const KnownDiscs& Discs,
                                            FoundBeforehand& OutFound,
                                            StatusRecord* Record = nullptr);
