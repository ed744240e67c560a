// A look through the sources that holds nobody.

#pragma once

#include "preflight.h"
#include "preflight_reply.h"
#include "worker_process.h"

#include <memory>
#include <optional>
#include <string>

// Starts when it is made, in a process of its own: a file system that does not answer may hold the
// look for ever, and as a thread it would hold the end of the program too. Letting go of it waits
// for nothing.
//
// Threads: one thread makes, uses and destroys it; others may run.
class PreflightRun {
public:
    explicit PreflightRun(PreflightTask Task);

    std::uint64_t EntriesSeen() const { return Control->EntriesSeen; }
    bool IsOver();
    // Becomes readable when IsOver has something to do; for poll. It is -1, which poll ignores,
    // when the look could not be started.
    int OverFd() const { return Process ? Process->OverFd() : -1; }

    // Requires, for both: it is over. The second is the reason when the look has broken off.
    const PreflightResult& Result() const { return End->Result; }
    const std::string& Failure() const { return End->Failure; }

private:
    // Shared with the process.
    const std::unique_ptr<PreflightControl, void (*)(PreflightControl*)> Control;
    std::optional<WorkerProcess> Process;
    // Nothing until it is over.
    std::optional<PreflightEnd> End;
};
