// `tarvane copy` and `tarvane move`: one job at a prompt, in a script or in a log.

#pragma once

#include "exit_status_function.h"
#include "prompt_request.h"

// Carries the request out and returns how that has ended. Progress and messages go to
// standard error; JSON Lines, the lines of -v and the totals of a dry run to standard output.
//
// Requires: the only thread of the program.
RunOutcome RunAtPrompt(const PromptRequest& Request, ExitStatusFunction ExitStatusOf);
