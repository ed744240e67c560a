// Keeping signals away from the calling thread for a while.

#pragma once

#include <csignal>

// Blocks signals in the calling thread while it lives.
class SignalsBlocked {
public:
    // Blocks all but those of faults: a fault whose signal is blocked ends the program without the
    // handler that gives the terminal its modes back. Threads that are started meanwhile have them
    // blocked for good, so that signals keep going to the thread that takes them.
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        for (const int fault : {SIGSEGV, SIGBUS, SIGILL, SIGFPE}) {
            sigdelset(&all, fault);
        }
        pthread_sigmask(SIG_SETMASK, &all, &Before);
    }
    // Blocks one more: SIGTTOU or SIGTTIN, so that the system does not stop the program for
    // touching the terminal from the background.
    explicit SignalsBlocked(int Signal) {
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, Signal);
        pthread_sigmask(SIG_BLOCK, &one, &Before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &Before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t Before{};
};
