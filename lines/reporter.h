// How a front end reports on a run: one class for each style of progress.

#pragma once

#include <cstdint>

#include "conflict_tally.h"
#include "flusher.h"
#include "preflight_result.h"
#include "progress_texts.h"
#include "progress_watch.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"

// A running job at one moment.
struct ProgressView {
    // For what is worth asking only when it is written down.
    const TarvaneTransferJob& Job;
    TarvaneTransferUiSnapshot Snapshot;
    ProgressClaims Claims;
};

// Reports nothing: the style None. The others override what they report. The first of each pair is
// called ten times a second.
class Reporter {
public:
    Reporter() = default;
    virtual ~Reporter() = default;
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;

    virtual void PreflightRuns(std::uint64_t /*EntriesSeen*/) {}
    virtual void PreflightIsOver(const PreflightResult& /*Result*/) {}
    virtual void JobRuns(const ProgressView& /*View*/) {}
    virtual void JobIsOver(const ProgressView& /*View*/) {}
    // Only when it takes long.
    virtual void FinishRuns(const FinishProgress& /*Progress*/) {}
    virtual void FinishIsOver(const FinishProgress& /*Progress*/) {}
    virtual void FlushRuns(const FlushProgress& /*Progress*/) {}
    virtual void FlushIsOver(const FlushProgress& /*Progress*/) {}
    virtual void ConflictIsSettled(const SettledConflict& /*Settled*/) {}
    virtual void RunIsOver(const RunOutcome& /*Outcome*/, int /*ExitStatus*/) {}

    // Whether each conflict has to be reported, so that the engine must not answer any by itself.
    virtual bool ReportsEachConflict() const { return false; }
    // Whether the totals of the look before the job are written down.
    virtual bool WantsTotals() const { return false; }
    // Whether the reader of the output has gone away.
    virtual bool IsBroken() const { return false; }
    // Waits until everything is out. Returns the errno of the failure to write it, or 0.
    virtual int Finish() { return 0; }
};
