// The wait for what a finished job has left in the page cache.

#pragma once

#include "flush_step.h"
#include "prompt_context.h"
#include "run_outcome.h"

// Flushes and shows how far it is. Esc and SIGINT end the wait, also after those that have canceled
// the job; what was copied stays. InOutOutcome is that of the job before; how the flush ends
// becomes part of it.
void RunFlushPhase(FlushStep& Flush, const PromptContext& Context, RunOutcome& InOutOutcome);
