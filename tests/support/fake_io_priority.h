// The I/O-priority calls of a worker, recorded and answered by the test.
//
// Requires: the executable wraps syscall and links fake_io_priority.cpp.

#pragma once

#include <vector>

// Replaces ioprio_get and ioprio_set for its lifetime; one object at a time. Without one the kernel
// answers.
class FakeIoPriority {
public:
    FakeIoPriority();
    ~FakeIoPriority();
    FakeIoPriority(const FakeIoPriority&) = delete;
    FakeIoPriority& operator=(const FakeIoPriority&) = delete;

    // The priority that the kernel has for the thread, -1 when it would not say.
    long Current = 0;
    // What setting a priority returns.
    long SetResult = 0;
    // Every priority that was set, also where that failed.
    std::vector<long> Set;
    // "Who" and id of every call.
    std::vector<std::vector<long>> Targets;
};

// What the kernel really has for the calling thread.
long RealIoPriority();
void SetRealIoPriority(int Priority);
