// The finishing of a run: copies get the modes, times and owners that their sources had.

#pragma once

#include "desk_notes.h"
#include "finisher.h"
#include "progress_texts.h"
#include "run_outcome.h"
#include "status_record.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <system_error>

// An empty record for the look through the sources; null where nothing is carried over.
// Errors: std::system_error without memory or a file.
std::unique_ptr<StatusRecord> RecordFor(const TransferRequest& Request,
                                        const TarvaneTransferPlan& Plan);

// How a run ends for which no record can be kept.
RunOutcome EndWithoutRecord(const std::system_error& Error);

// What the finishing has to know of the time before the job, and hears from its desk.
class FinishPreparation {
public:
    // Is made right before the job. Record, which the look has filled, and Plan outlive it.
    FinishPreparation(const TransferRequest& Request, const TarvaneTransferPlan& Plan,
                      const StatusRecord& Record);
    FinishPreparation(const FinishPreparation&) = delete;
    FinishPreparation& operator=(const FinishPreparation&) = delete;

    // For the desk of the job.
    DeskNotes& Notes() { return FromDesk; }
    // What is to be done after a job that has ended so. Refers to this object and its record. Once.
    FinishTask TaskAfter(const RunOutcome& Job);

private:
    DeskNotes FromDesk;
    FinishTask Task;
};

// Finishes what the job has made.
//
// Threads: one thread makes, uses and destroys it, which cancels what still runs.
class FinishStep {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // Begins, unless no thread can be started.
    explicit FinishStep(const FinishTask& Task);

    bool HasBegun() const { return Work.has_value(); }
    // Whether it is over, which it is when it has not begun.
    bool Attend(TimePoint Now);
    // Leaves the rest as it is.
    void Cancel();
    // The same when it has taken a second more: that much of the time that a signal leaves is for
    // the clean-up, and the rest for the last lines.
    void EndBy(int Signal, TimePoint Now);

    FinishProgress Progress() const;
    // For poll; -1 when it has not begun.
    int Descriptor() const { return Work ? Work->OverFd() : -1; }

    // How it has ended becomes part of the outcome, which is that of the job before. Requires: it
    // is over.
    void NoteEnd(RunOutcome& InOutOutcome) const;

private:
    const std::uint64_t Total;
    std::optional<Finisher> Work;
    bool bOver = false;
    FinishResult NotBegun;
    std::optional<int> EndSignal;
    std::optional<TimePoint> EndsAt;
};
