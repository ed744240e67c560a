// `tarvane copy` and `tarvane move`: one job at a prompt, in a script or in a log.

#pragma once

#include "prompt_request.h"
#include "run_outcome.h"
#include "terminal.h"

// Carries the request out and returns how that has ended. Progress and messages go to standard
// error, which is what the terminal shows on; JSON Lines, the lines of -v and the totals of a dry
// run to standard output. Without a choice for files whose name is taken they are asked about where
// somebody can be asked, and fail elsewhere.
RunOutcome RunAtPrompt(const PromptRequest& Request, Terminal& Screen,
                       ExitStatusFunction ExitStatusOf);
