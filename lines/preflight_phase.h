// The look through the sources before a job starts, as the user lives through it.

#pragma once

#include "prompt.h"
#include "reporter.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"

#include <optional>

// Looks through the sources on a thread of its own, says so, and tells what it found. Esc skips it.
// Somebody who can be asked decides whether to go on; otherwise only a move that would remove
// entries that were not selected stops here, unless the request allows it.
//
// Returns how the run has ended, or nothing when it goes on. A dry run always ends here.
std::optional<RunOutcome> RunPreflightPhase(const TransferRequest& Request,
                                            const TarvaneTransferPlan& Plan, Prompt& Console,
                                            Reporter& Output);
