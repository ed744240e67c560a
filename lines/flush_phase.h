// The wait for what a finished job has left in the page cache.

#pragma once

#include "flusher.h"
#include "prompt.h"
#include "reporter.h"

// Flushes and shows how far it is, then says that it is safe to unplug. Esc and SIGINT end the
// wait; what was copied stays. Outcome is that of the job before, which has succeeded; a flush that
// fails or is ended early becomes part of it.
void RunFlushPhase(Flusher& Watch, Prompt& Console, Reporter& Output, RunOutcome& Outcome);
