#include "restore_on_end.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "crash_stack.h"
#include "terminal_modes.h"

namespace {

std::array<struct sigaction, NSIG> gActionsBefore{};

struct sigaction& ActionBefore(int Signal) {
    return gActionsBefore[static_cast<std::size_t>(Signal)];
}

bool IsCrash(int Signal) {
    return Signal == SIGSEGV || Signal == SIGBUS || Signal == SIGILL || Signal == SIGFPE ||
           Signal == SIGABRT;
}

// Whether a program that does nothing about it is ended by it and could do something.
bool EndsProgramsByItself(int Signal) {
    switch (Signal) {
    case SIGCHLD:
    case SIGCONT:
    case SIGURG:
    case SIGWINCH:
    case SIGTSTP:
    case SIGTTIN:
    case SIGTTOU:
    case SIGSTOP:
    case SIGKILL:
        return false;
    default:
        return true;
    }
}

// What the system says about the end comes out in place of the block, at whose start the cursor
// rests. A frame that was broken off may have turned wrapping off.
void TakeBlockAway(int Terminal) {
    constexpr std::string_view kEraseBelowAndWrap = "\r\x1B[J\x1B[?7h";
    WriteWithoutWaiting(Terminal, kEraseBelowAndWrap);
}

// Everything in here is safe in a signal handler.
void RestoreAndEnd(int Signal, siginfo_t* Info, void*) {
    if (const int terminal = TerminalInKeyModes(); terminal >= 0) {
        TakeBlockAway(terminal);
        RestoreTerminalNow();
    }
    sigaction(Signal, &ActionBefore(Signal), nullptr);
    // A fault happens again on return, which leaves a core of the place where it happened; any
    // other signal has to be sent again.
    const bool bHappensAgain = IsCrash(Signal) && Info->si_code > 0;
    if (!bHappensAgain) {
        raise(Signal);
    }
}

// Signals that are ignored stay so, and those that somebody else acts on do not end the program,
// but for crashes: a sanitizer reports them first.
void TakeOver(int Signal) {
    struct sigaction& before = ActionBefore(Signal);
    if (sigaction(Signal, nullptr, &before) != 0) {
        return;
    }
    const bool bEnds =
        before.sa_handler == SIG_DFL || (before.sa_handler != SIG_IGN && IsCrash(Signal));
    if (bEnds) {
        struct sigaction action {};
        action.sa_sigaction = RestoreAndEnd;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        sigemptyset(&action.sa_mask);
        sigaction(Signal, &action, nullptr);
    }
}

} // namespace

void RestoreOnEveryEnd() {
    ArmCrashStack();
    static bool bInstalled = false;
    if (std::exchange(bInstalled, true)) {
        return;
    }
    std::atexit(RestoreTerminalNow);
    for (int signal = 1; signal < NSIG; ++signal) {
        if (EndsProgramsByItself(signal)) {
            TakeOver(signal);
        }
    }
}
