// A running job as the user lives through it: progress, conflicts, cancel.

#pragma once

#include "job_end.h"
#include "prompt_context.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"

// Runs the plan to its end. Found is from the look before it.
RunOutcome RunJobPhase(const TransferRequest& Request, TarvaneTransferPlan Plan,
                       FoundBeforehand Found, const PromptContext& Context);
