// Lines for a pipe or a file whose reader may be slow.

#pragma once

#include "output_queue.h"

#include <csignal>
#include <string>
#include <string_view>

// Lets a write to a pipe that nobody reads fail with EPIPE instead of ending the program, while it
// lives.
class SigpipeIgnored {
public:
    SigpipeIgnored() {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &ignore, &Before);
    }
    ~SigpipeIgnored() { sigaction(SIGPIPE, &Before, nullptr); }
    SigpipeIgnored(const SigpipeIgnored&) = delete;
    SigpipeIgnored& operator=(const SigpipeIgnored&) = delete;

private:
    struct sigaction Before {};
};

// Never makes the interface wait; see OutputQueue.
//
// Requires: a SigpipeIgnored lives where a closed pipe is not to end the program. Threads: one at a
// time.
class LineQueue {
public:
    explicit LineQueue(int Descriptor) : Output(Descriptor) {}

    // Line comes without its line end and is written sooner or later.
    void Add(std::string_view Line);
    // The same for a line that is worthless when it is late: it is left out while others wait.
    void Offer(std::string_view Line);
    // Writes what can be written without waiting.
    void Pump() { Output.Pump(); }
    // Waits until everything is written or writing fails.
    void Finish() { Output.Finish(); }

    // The errno of the write that failed, after which nothing more is written; 0 while all is well.
    int Error() const { return Output.Error(); }

private:
    OutputQueue Output;
};
