#include "restore_on_end.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <poll.h>
#include <unistd.h>
#include <utility>

#include "crash_stack.h"
#include "terminal_modes.h"

namespace {

constexpr std::array kCrashSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

std::array<struct sigaction, kCrashSignals.size()> gActionsBefore{};

// What the system says about the crash comes out below the block, not over its last line.
void LeaveBlock() {
    pollfd output{STDERR_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) > 0 && (output.revents & POLLOUT) != 0) {
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\r\n", 2);
    }
}

// Everything in here is safe in a signal handler.
void RestoreAfterCrash(int Signal, siginfo_t* Info, void*) {
    if (HasKeyModes()) {
        LeaveBlock();
        RestoreTerminalNow();
    }
    for (std::size_t i = 0; i < kCrashSignals.size(); ++i) {
        if (kCrashSignals[i] == Signal) {
            sigaction(Signal, &gActionsBefore[i], nullptr);
        }
    }
    // A fault happens again on return and ends the program as it would have; a signal that was sent
    // has to be sent again.
    if (Info->si_code <= 0) {
        raise(Signal);
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
    struct sigaction action {};
    action.sa_sigaction = RestoreAfterCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kCrashSignals.size(); ++i) {
        sigaction(kCrashSignals[i], &action, &gActionsBefore[i]);
    }
}
