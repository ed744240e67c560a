// What the findings of a look mean for the run, whoever shows them.

#pragma once

#include "preflight_result.h"
#include "run_outcome.h"
#include "transfer_request.h"

#include <string>

struct PreflightVerdict {
    enum class Kind {
        GoOn,
        // Go on when Question is answered with yes.
        Ask,
        // The run ends here, as Outcome says.
        Stop,
    };
    Kind Decision = Kind::GoOn;
    std::string Question = {};
    RunOutcome Outcome = {};
};

// A taken name that the choices refuse stops the run, whoever could be asked. Somebody who can be
// asked decides about whatever else was found; otherwise only a move that would remove entries that
// were not selected stops, unless the request allows it. A dry run always stops here, and fails
// where the run would.
PreflightVerdict JudgePreflight(const TransferRequest& Request, const PreflightResult& Result,
                                bool bCanAsk);
