// The wait for what a finished job has left in the page cache.

#pragma once

#include "flusher.h"
#include "prompt_context.h"
#include "run_outcome.h"

// Flushes and shows how far it is. Esc and SIGINT end the wait; what was copied stays. InOutOutcome
// is that of the job before, which has succeeded; a flush that fails or is ended early becomes part
// of it.
void RunFlushPhase(Flusher& Flush, const PromptContext& Context, RunOutcome& InOutOutcome);
