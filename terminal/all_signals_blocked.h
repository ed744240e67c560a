// Starting a thread that takes no signals.

#pragma once

#include <csignal>

// Blocks every signal in the calling thread while it lives, so that threads started meanwhile have
// them blocked for good and signals keep going to the interface's thread.
class AllSignalsBlocked {
public:
    AllSignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &Before);
    }
    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &Before, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

private:
    sigset_t Before{};
};
