// Making a plan while somebody waits in front of the screen.

#pragma once

#include "plan_builder.h"
#include "track_list.h"
#include "track_reader.h"
#include "transfer_request.h"
#include "worker_process.h"

#include <optional>

// Makes the plan of a request, and waits for the disks and drives that it names without holding
// anybody, the end of the program included.
//
// Threads: one thread makes, uses and destroys it; others may run.
class PlanTask {
public:
    // Takes as long as disks that answer do, but a moment at most.
    explicit PlanTask(TransferRequest RequestToPlan);

    // The plan, or why there is none, as soon as all disks have answered and all drives have told
    // what they hold; once. Nothing while one is waited for.
    std::optional<BuiltPlan> TakePlan();
    // The drive that is waited for; empty for none.
    const std::string& WaitsFor() const { return Asked; }

    const TransferRequest& Request() const { return Wanted; }
    // What the drives have told.
    const KnownDiscs& Discs() const { return Known; }

private:
    bool TakeTracks();

    const TransferRequest Wanted;
    // Another process looks first: who makes the plan would be held by a disk that does not answer.
    std::optional<WorkerProcess> Look;
    KnownDiscs Known;
    std::string Asked;
    std::optional<TrackReader> Reader;
};
