// What follows a job that carries modes, times or owners over.

#pragma once

#include "finisher.h"
#include "prompt_context.h"
#include "run_outcome.h"

// Finishes what the job has made and shows how far it is when that takes long. Esc and SIGINT end
// it, also after those that have canceled the job, and leave the rest as it is; a signal that ends
// programs does so only when there is little time left. InOutOutcome is that of the job before; how
// the finishing ends becomes part of it.
void RunFinishingPhase(const FinishTask& Task, const PromptContext& Context,
                       RunOutcome& InOutOutcome);
