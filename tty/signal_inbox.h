// The signals that a front end acts on, taken in its loop and not in a handler.

#pragma once

#include <chrono>
#include <csignal>
#include <optional>

// Receives SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGCONT, SIGWINCH and SIGUSR1 through a file
// descriptor while it lives. A signal that the program was started to ignore, as nohup and shells
// without job control do, stays ignored.
//
// Threads: the one that made it. Make it before other threads are started: they inherit the mask.
class SignalInbox {
public:
    SignalInbox();
    // Lets the signals act by themselves again. One that ends the program and came too late to be
    // taken comes once more after the time for the clean-up: a program with its work done prints
    // its last line, and one that cannot print it ends all the same.
    ~SignalInbox();
    SignalInbox(const SignalInbox&) = delete;
    SignalInbox& operator=(const SignalInbox&) = delete;

    // Whether it takes this signal, which is one of the above and was not ignored.
    bool Receives(int Signal) const { return sigismember(&Signals, Signal) == 1; }

    // Readable while a signal waits; for poll.
    int Fd() const { return Descriptor; }
    // The number of a signal that has arrived, each once.
    std::optional<int> Take();
    // Lets StopSignal (SIGTSTP, SIGTTIN) stop the process as the system does by itself, and comes
    // back when it runs again: false at once where there is nobody to continue it. The SIGCONT that
    // has continued it is not taken for one that came by itself.
    bool StopBy(int StopSignal);

private:
    sigset_t Signals{};
    sigset_t MaskBefore{};
    int Descriptor = -1;
};

// Sends the program Signal once, after Delay, unless it has ended by then: for an end that was
// asked for and must not take longer.
void SendSignalAfter(std::chrono::seconds Delay, int Signal);
