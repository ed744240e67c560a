// The wait for what a finished job has left in the page cache.

#pragma once

#include "flusher.h"
#include "prompt_context.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"

// Flushes and shows how far it is. Esc and SIGINT end the wait, also after those that have canceled
// the job; what was copied stays. InOutOutcome is that of the job before, which has carried Plan
// out or a part of it; how the flush ends becomes part of it.
void RunFlushPhase(Flusher& Flush, const TarvaneTransferPlan& Plan, const PromptContext& Context,
                   RunOutcome& InOutOutcome);
