// The flush of a run: what the job has done reaches the disks, so that they can be unplugged.

#pragma once

#include "flusher.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"

#include <filesystem>
#include <optional>
#include <vector>

// Threads: one at a time.
class FlushStep {
public:
    // Comes before the job, as failures to write would be reported to others. PlanOfRun outlives
    // it; for Directories see DirectoriesToFlush.
    FlushStep(const TarvaneTransferPlan& PlanOfRun,
              const std::vector<std::filesystem::path>& Directories)
        : Plan(PlanOfRun), Flush(Directories) {}

    // Whether a job that has ended so has left anything to flush.
    bool IsNeededAfter(const RunOutcome& Job) const;
    // Call it once.
    void Start(const RunOutcome& Job);

    // Looks how far it is. Whether nothing is left to wait for.
    bool Attend();
    // As it was last seen.
    const FlushProgress& Progress() const { return Latest; }

    // How it has ended becomes part of the outcome, which is that of the job before. EndSignal is
    // what the wait for it was ended by, SIGINT for Esc too; nothing when it is over.
    void NoteEnd(std::optional<int> EndSignal, RunOutcome& InOutOutcome) const;
    // The same for one that is not started, as the program is to end.
    void NoteLeftOut(RunOutcome& InOutOutcome);

private:
    const TarvaneTransferPlan& Plan;
    Flusher Flush;
    FlushProgress Latest;
};
