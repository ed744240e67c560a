// How a front end reports on a run: one class for each style of progress.

#pragma once

#include "flush_watch.h"
#include "preflight.h"
#include "progress_watch.h"
#include "tarvanetransfer.h"

#include <optional>
#include <string>

// One look at a running job.
struct ProgressView {
    TarvaneTransferUiSnapshot Snapshot;
    // The label of the stage.
    std::string Stage;
    ProgressClaims Claims;
};

// A conflict that was answered, by the user or by a choice from the command line.
struct AnsweredConflict {
    TarvaneTransferConflict Conflict;
    TarvaneTransferConflictAction Action = TarvaneTransferConflictAction::Cancel;
    std::string RenamePath;
    bool bByUser = false;
};

enum class RunResult {
    Succeeded,
    Failed,
    Canceled,
};

// How the whole run has ended.
struct RunOutcome {
    RunResult Result = RunResult::Failed;
    // The job's last text, or the reason why there was none.
    std::string Text;
    int ExitStatus = 0;
    // Whether what was copied has reached the disks; nothing when that was not to be waited for.
    std::optional<bool> bFlushed;
};

// Reports nothing: the style None. The others override what they report. Looking, Running and
// Flushing are called ten times a second.
class ProgressOutput {
public:
    ProgressOutput() = default;
    virtual ~ProgressOutput() = default;
    ProgressOutput(const ProgressOutput&) = delete;
    ProgressOutput& operator=(const ProgressOutput&) = delete;

    virtual void Looking(std::uint64_t /*EntriesSeen*/) {}
    virtual void Looked(const PreflightResult& /*Result*/) {}
    virtual void Running(const ProgressView& /*View*/) {}
    virtual void Answered(const AnsweredConflict& /*Answer*/) {}
    virtual void Flushing(const FlushProgress& /*Progress*/) {}
    virtual void Ended(const RunOutcome& /*Outcome*/) {}
    // Whether the reader of the output has gone away.
    virtual bool IsBroken() const { return false; }
    // Waits until everything is out. Returns the errno of the failure to write it, or 0.
    virtual int Finish() { return 0; }
};
