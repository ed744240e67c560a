#include "recorded_job.h"

#include "finish_step.h"
#include "finishing_phase.h"
#include "job_phase.h"

RunOutcome RunRecordedJob(const TransferRequest& Request, const TarvaneTransferPlan& Plan,
                          const FoundBeforehand& Found, const StatusRecord* Record,
                          const PromptContext& Context) {
    if (Record == nullptr) {
        return RunJobPhase(Request, Plan, Found, Context);
    }
    FinishPreparation preparation(Request, Plan, *Record);
    RunOutcome outcome = RunJobPhase(Request, Plan, Found, Context, &preparation.Notes());
    RunFinishingPhase(preparation.TaskAfter(outcome), Context, outcome);
    return outcome;
}
