// One transfer as every front end holds it: the job, the thread that works on it, and the poll.

#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "tarvanetransfer.h"

// Runs one plan on a thread of its own while a front end polls, answers and cancels.
//
// Threads: one thread makes, uses and destroys the session; the worker is inside.
class TransferSession {
public:
    // Registers the job and starts its worker, in which all signals are blocked.
    // Errors: an exception that leaves the engine, or a thread that cannot be started, becomes a
    // failed job.
    explicit TransferSession(TarvaneTransferPlan Plan);
    // Asks the worker to stop and waits until it has.
    ~TransferSession();
    TransferSession(const TransferSession&) = delete;
    TransferSession& operator=(const TransferSession&) = delete;

    // Whether the worker is through with the job: its flags, message and files are final.
    bool IsOver() const { return bOver; }
    // Becomes readable when the session is over; for poll. It may be -1, which poll ignores.
    int OverFd() const { return OverEvent; }

    TarvaneTransferJob& GetJob() { return *Job; }
    TarvaneTransferUiSnapshot Snapshot() const { return Job->MakeUiSnapshot(); }
    // The label of the stage, as job lists show it.
    std::string StageLabel() const { return Job->MakeJobSnapshot().State; }
    bool IsMove() const { return Job->IsMove(); }
    void RequestCancel() { Job->RequestCancel(); }
    bool IsCancelRequested() const { return Job->IsCancelRequested(); }

    // As in the job: the conflict that waits for an answer, and the answer.
    bool GetPendingConflict(TarvaneTransferConflict& OutConflict) const {
        return Job->GetPendingConflict(OutConflict);
    }
    bool ResolveConflict(TarvaneTransferConflictAction Action, const std::string& RenamePath) {
        return Job->ResolveConflict(Action, RenamePath);
    }

private:
    void Work(TarvaneTransferPlan Plan) noexcept;
    void FailUnlessFinished(const std::string& Reason) noexcept;

    std::shared_ptr<TarvaneTransferJob> Job;
    std::atomic<bool> bOver{false};
    int OverEvent = -1;
    std::thread Worker;
};
