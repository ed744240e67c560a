// `tarvane copy` and `tarvane move`: one job at a prompt, in a script or in a log.

#pragma once

#include "transfer_request.h"

// Carries the request out and returns the program's exit status. Progress and messages go to
// standard error; JSON Lines, the lines of -v and the totals of a dry run to standard output.
//
// Requires: the only thread of the program.
int RunLineFrontEnd(const TransferRequest& Request);
