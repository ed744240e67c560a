// A job, from the record of what its sources were like to copies that are like them.

#pragma once

#include "job_end.h"
#include "prompt_context.h"
#include "run_outcome.h"
#include "status_record.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"

// Runs the plan to its end, and finishes what it has done however it has ended. Record is null, or
// was filled by the look that has found Found.
RunOutcome RunRecordedJob(const TransferRequest& Request, const TarvaneTransferPlan& Plan,
                          const FoundBeforehand& Found, const StatusRecord* Record,
                          const PromptContext& Context);
