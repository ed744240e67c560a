// A running job as the user lives through it: progress, conflicts, cancel.

#pragma once

#include "prompt_context.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"

// Runs the plan to its end.
RunOutcome RunJobPhase(const TransferRequest& Request, TarvaneTransferPlan Plan,
                       const PromptContext& Context);
