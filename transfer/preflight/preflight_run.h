// A look through the sources that runs on a thread of its own.

#pragma once

#include "preflight.h"
#include "tarvanetransfer.h"

#include <atomic>
#include <memory>
#include <string>

// Starts when it is made. Letting go of it asks the thread to stop but does not wait for it: a file
// system that does not answer may hold it for ever.
//
// Threads: one thread uses it; the look is inside.
class PreflightRun {
public:
    explicit PreflightRun(TarvaneTransferPlan Plan);
    ~PreflightRun() { RequestStop(); }
    PreflightRun(const PreflightRun&) = delete;
    PreflightRun& operator=(const PreflightRun&) = delete;

    void RequestStop() { Shared->Control.bStopRequested = true; }
    std::uint64_t EntriesSeen() const { return Shared->Control.EntriesSeen; }
    bool IsOver() const { return Shared->bOver; }
    // Becomes readable when the look is over; for poll.
    int OverFd() const { return Shared->OverEvent; }

    // Requires, for both: it is over. The second is the reason when the look has broken off.
    const PreflightResult& Result() const { return Shared->Result; }
    const std::string& Failure() const { return Shared->Failure; }

private:
    struct State {
        ~State();

        TarvaneTransferPlan Plan;
        PreflightControl Control;
        PreflightResult Result;
        std::string Failure;
        int OverEvent = -1;
        std::atomic<bool> bOver{false};
    };

    static void Look(State& Shared) noexcept;

    std::shared_ptr<State> Shared;
};
