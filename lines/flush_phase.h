// The wait for what a finished job has left in the page cache.

#pragma once

#include "flusher.h"
#include "line_console.h"
#include "progress_output.h"

// Flushes and shows how far it is, then says that it is safe to unplug. Esc and SIGINT end the
// wait; what was copied stays. Outcome is that of the job before, which has succeeded; a flush that
// fails or is ended early becomes part of it.
void RunFlushPhase(Flusher& Watch, LineConsole& Console, ProgressOutput& Output,
                   RunOutcome& Outcome);
