// A running job as the user lives through it: progress, conflicts, cancel.

#pragma once

#include "desk_notes.h"
#include "job_end.h"
#include "prompt_context.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"

// Runs the plan to its end. Found is from the look before it. With Notes, which is filled for what
// finishes the copies then, nothing that the request carries modes over for is open to others
// until that is done.
RunOutcome RunJobPhase(const TransferRequest& Request, TarvaneTransferPlan Plan,
                       FoundBeforehand Found, const PromptContext& Context,
                       DeskNotes* Notes = nullptr);
