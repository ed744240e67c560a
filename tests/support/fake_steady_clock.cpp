#include "fake_steady_clock.h"

#include "link_names.h"

#include <atomic>
#include <cstdint>

namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

std::atomic<bool> gHeld{false};
std::atomic<std::int64_t> gNanoseconds{0};
std::atomic<std::size_t> gReads{0};

SteadyTime HeldTime() {
    return SteadyTime(std::chrono::nanoseconds(gNanoseconds.load()));
}

} // namespace

SteadyTime RealSteadyClockNow() noexcept REAL(SteadyClockNow);
SteadyTime WrappedSteadyClockNow() noexcept WRAPPED(SteadyClockNow);

SteadyTime WrappedSteadyClockNow() noexcept {
    if (!gHeld) {
        return RealSteadyClockNow();
    }
    ++gReads;
    return HeldTime();
}

FakeSteadyClock::FakeSteadyClock() {
    gNanoseconds = RealSteadyClockNow().time_since_epoch().count();
    gReads = 0;
    gHeld = true;
}

FakeSteadyClock::~FakeSteadyClock() {
    gHeld = false;
}

void FakeSteadyClock::Advance(std::chrono::nanoseconds By) {
    gNanoseconds += By.count();
}

std::chrono::steady_clock::time_point FakeSteadyClock::Now() const {
    return HeldTime();
}

std::size_t FakeSteadyClock::Reads() const {
    return gReads;
}
