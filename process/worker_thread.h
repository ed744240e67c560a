// A thread that a loop can wait for.

#pragma once

#include "owned_descriptor.h"

#include <atomic>
#include <functional>
#include <thread>

// Runs Work once on a thread of its own, in which all signals but those of faults are blocked, so
// that they keep going to the thread that takes them. A stack that overflows there ends the program
// like any crash.
//
// Threads: one thread makes, uses and destroys it; Work is inside.
class WorkerThread {
public:
    // Requires: Work lets no exception out.
    // Errors: std::system_error when the thread cannot be started.
    explicit WorkerThread(std::function<void()> Work);

    // Whether Work has returned; what it has written can then be read.
    bool IsOver() const { return bOver; }
    // Becomes readable when it is over, and stays so; for poll.
    int OverFd() const { return OverEvent.Get(); }

private:
    void Run(const std::function<void()>& Work) noexcept;

    std::atomic<bool> bOver{false};
    OwnedDescriptor OverEvent;
    // The last member: the others are there until its destructor has waited for the thread.
    std::jthread Thread;
};
