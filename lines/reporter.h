// How a front end reports on a run: one class for each style of progress.

#pragma once

#include "conflict_desk.h"
#include "flusher.h"
#include "preflight.h"
#include "progress_watch.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"

#include <functional>
#include <string>

// One look at a running job.
struct ProgressView {
    TarvaneTransferUiSnapshot Snapshot;
    // Asks for the label of the stage, which costs more than the rest of the view.
    std::function<std::string()> StageLabel;
    ProgressClaims Claims;
};

// Reports nothing: the style None. The others override what they report. Looking, Running and
// Flushing are called ten times a second.
class Reporter {
public:
    Reporter() = default;
    virtual ~Reporter() = default;
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;

    virtual void Looking(std::uint64_t /*EntriesSeen*/) {}
    virtual void Looked(const PreflightResult& /*Result*/) {}
    virtual void Running(const ProgressView& /*View*/) {}
    virtual void Answered(const AnsweredConflict& /*Answer*/) {}
    virtual void Flushing(const FlushProgress& /*Progress*/) {}
    virtual void Ended(const RunOutcome& /*Outcome*/, int /*ExitStatus*/) {}
    // Whether the reader of the output has gone away.
    virtual bool IsBroken() const { return false; }
    // Waits until everything is out. Returns the errno of the failure to write it, or 0.
    virtual int Finish() { return 0; }
};
