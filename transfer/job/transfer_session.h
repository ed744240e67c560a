// One transfer as every front end holds it: the job and the thread that works on it.

#pragma once

#include "tarvanetransfer.h"
#include "worker_thread.h"

#include <memory>
#include <optional>

// Runs one plan on a thread of its own while a front end polls, answers and cancels the job.
//
// Threads: one thread makes, uses and destroys the session; the worker is inside.
class TransferSession {
public:
    // Registers the job and starts its worker. With bPrivate, what the worker makes is for this
    // user alone, whatever the umask of the program; where the system lets no thread have an umask
    // of its own, the program's is changed until no such session runs.
    // Errors: an exception that leaves the engine, or a worker that cannot be started, becomes a
    // failed job.
    explicit TransferSession(TarvaneTransferPlan Plan, bool bPrivate = false);
    // Asks the worker to stop and waits until it has.
    ~TransferSession();
    TransferSession(const TransferSession&) = delete;
    TransferSession& operator=(const TransferSession&) = delete;

    // Whether the worker is through with the job: its flags, message and files are final.
    bool IsOver() const { return !Worker || Worker->IsOver(); }
    // Becomes readable when the session is over; for poll. It is -1, which poll ignores, when the
    // worker could not be started.
    int OverFd() const { return Worker ? Worker->OverFd() : -1; }

    TarvaneTransferJob& Job() { return *Running; }

    // Gives back what the worker has held, for those who keep the job. Requires: it is over.
    void Close() { Worker.reset(); }

private:
    const std::shared_ptr<TarvaneTransferJob> Running;
    std::optional<WorkerThread> Worker;
};
