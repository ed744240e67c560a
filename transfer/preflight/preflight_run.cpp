#include "preflight_run.h"

#include "signals_blocked.h"

#include <cstdint>
#include <exception>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

PreflightRun::State::~State() {
    if (OverEvent >= 0) {
        close(OverEvent);
    }
}

PreflightRun::PreflightRun(TarvaneTransferPlan Plan) : Shared(std::make_shared<State>()) {
    Shared->Plan = std::move(Plan);
    Shared->OverEvent = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const SignalsBlocked blocked;
    try {
        std::thread([shared = Shared] { Look(*shared); }).detach();
    } catch (const std::system_error& error) {
        Shared->Failure = error.what();
        Shared->bOver = true;
    }
}

void PreflightRun::Look(State& Shared) noexcept {
    try {
        Shared.Result = RunPreflight(Shared.Plan, Shared.Control);
    } catch (const std::exception& error) {
        Shared.Failure = error.what();
    }
    Shared.bOver = true;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(Shared.OverEvent, &one, sizeof(one));
}
