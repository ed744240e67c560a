// How long a snapshot keeps the worker out, read at the two calls that take and release the lock.
// A thread that loses its processor meanwhile holds it longer, whatever the engine does, so the
// percentiles tell more than the maximum.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

#include <benchmark/benchmark.h>
#include <pthread.h>

#include "running_job.h"

namespace {

using Clock = std::chrono::steady_clock;

// All the times for which a thread has held a lock, one at a time.
struct HeldTimes {
    Clock::time_point LockedAt;
    std::vector<double> Nanoseconds;

    double Percentile(double Percent) {
        const double last = static_cast<double>(Nanoseconds.size() - 1);
        const auto at = static_cast<std::ptrdiff_t>(last * Percent / 100.0);
        std::nth_element(Nanoseconds.begin(), Nanoseconds.begin() + at, Nanoseconds.end());
        return Nanoseconds[static_cast<std::size_t>(at)];
    }
};

// Where the locks of this thread are written down; null where they are not.
thread_local HeldTimes* gHeldTimes = nullptr;

} // namespace

extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t* Mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* Mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* Mutex);
int __wrap_pthread_mutex_unlock(pthread_mutex_t* Mutex);

int __wrap_pthread_mutex_lock(pthread_mutex_t* Mutex) {
    const int result = __real_pthread_mutex_lock(Mutex);
    if (gHeldTimes != nullptr) {
        gHeldTimes->LockedAt = Clock::now();
    }
    return result;
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* Mutex) {
    if (gHeldTimes == nullptr) {
        return __real_pthread_mutex_unlock(Mutex);
    }
    const std::chrono::duration<double, std::nano> held = Clock::now() - gHeldTimes->LockedAt;
    const int result = __real_pthread_mutex_unlock(Mutex);
    gHeldTimes->Nanoseconds.push_back(held.count());
    return result;
}
}

namespace {

void LockHeldBySnapshot(benchmark::State& State) {
    const auto job = MakeRunningJob();
    job->SetCurrentPath(std::string(static_cast<std::size_t>(State.range(0)), 'p'), 1);
    HeldTimes times;
    gHeldTimes = &times;
    for ([[maybe_unused]] auto _ : State) {
        benchmark::DoNotOptimize(job->MakeUiSnapshot());
    }
    gHeldTimes = nullptr;
    State.counters["held_p50_ns"] = times.Percentile(50.0);
    State.counters["held_p99.9_ns"] = times.Percentile(99.9);
    State.counters["held_max_ns"] = times.Percentile(100.0);
}
// A usual path and the longest.
BENCHMARK(LockHeldBySnapshot)->ArgName("PathBytes")->Arg(120)->Arg(4095);

} // namespace
