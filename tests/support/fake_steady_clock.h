// A steady clock that stands still until a test moves it.
//
// Requires: the executable wraps SteadyClockNow and links fake_steady_clock.cpp. Without an object
// of this class the real clock answers.

#pragma once

#include <chrono>
#include <cstddef>

// Holds the clock for its lifetime; one object at a time.
//
// Threads: any may read the clock meanwhile.
class FakeSteadyClock {
public:
    FakeSteadyClock();
    FakeSteadyClock(const FakeSteadyClock&) = delete;
    FakeSteadyClock& operator=(const FakeSteadyClock&) = delete;
    ~FakeSteadyClock();

    void Advance(std::chrono::nanoseconds By);
    std::chrono::steady_clock::time_point Now() const;

    // How often the clock was read since this object was made.
    std::size_t Reads() const;
};
