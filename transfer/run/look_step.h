// The look through the sources before a job starts, and what it means for the run.

#pragma once

#include "job_end.h"
#include "preflight_run.h"
#include "preflight_verdict.h"
#include "run_outcome.h"
#include "status_record.h"
#include "tarvanetransfer.h"
#include "track_list.h"
#include "transfer_request.h"

#include <cstdint>
#include <optional>

// How a run ends that was canceled before its job: by EndSignal, or by a person.
RunOutcome CanceledBeforehand(std::optional<int> EndSignal);

// Looks through the sources in a process of its own. A request that leaves the look out gets the
// guards all the same. Letting go of it waits for nothing.
//
// Threads: one thread makes, uses and destroys it.
class LookStep {
public:
    // RequestOfRun outlives it, Plan need not. bWantsTotals: somebody wants the totals of all
    // entries. Record, where there is one, gets what is to be carried over.
    LookStep(const TransferRequest& RequestOfRun, const TarvaneTransferPlan& Plan,
             const KnownDiscs& Discs, bool bWantsTotals, StatusRecord* Record);

    // Whether it is over.
    bool Attend() { return Look.IsOver(); }
    std::uint64_t EntriesSeen() const { return Look.EntriesSeen(); }
    // For poll; see PreflightRun.
    int Descriptor() const { return Look.OverFd(); }

    // Requires, for the rest: it is over.

    // What it has found; null when it has broken off.
    const PreflightResult* Result() const;
    // A look that has broken off stops the run.
    PreflightVerdict Judge(bool bCanAsk) const;
    // For the job.
    FoundBeforehand Found() const;

private:
    const TransferRequest& Request;
    PreflightRun Look;
};
