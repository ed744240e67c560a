// The sleeps of a worker, recorded instead of slept.
//
// Requires: the executable wraps nanosleep and links fake_sleep.cpp.

#pragma once

#include <cstdint>
#include <functional>
#include <vector>

// Replaces nanosleep on the thread that makes this object, for its lifetime; one object a thread at
// a time. Other threads sleep for real.
class FakeSleep {
public:
    // How one sleep ends: after all of its time, or early with an error and some time left.
    struct Ending {
        int Error = 0;
        std::int64_t RemainingNanoseconds = 0;
    };

    // Called with each wait that is asked for. Without it, every sleep is complete at once.
    using Sleeper = std::function<Ending(std::int64_t Nanoseconds)>;

    explicit FakeSleep(Sleeper Behavior = nullptr);
    ~FakeSleep();
    FakeSleep(const FakeSleep&) = delete;
    FakeSleep& operator=(const FakeSleep&) = delete;

    // Every wait that was asked for, in nanoseconds.
    const std::vector<std::int64_t>& Waits() const { return Requested; }

    // Records a wait and ends it; for the replaced nanosleep only.
    Ending Sleep(std::int64_t Nanoseconds);

private:
    Sleeper Behavior;
    std::vector<std::int64_t> Requested;
};
