#include "terminal_modes.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

#include "crash_stack.h"
#include "signals_blocked.h"

namespace {

constexpr std::array kCrashSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

// The terminal and its modes from before. Written only while gModesChanged is false, so that a
// signal handler never reads half of it.
int gTerminal = -1;
termios gModesBefore{};
std::atomic<bool> gModesChanged{false};
static_assert(std::atomic<bool>::is_always_lock_free);

std::array<struct sigaction, kCrashSignals.size()> gActionsBefore{};

bool SetModes(int Descriptor, const termios& Modes) {
    const SignalsBlocked noStop(SIGTTOU);
    // Without draining: output that Ctrl-S has stopped would keep us here.
    while (tcsetattr(Descriptor, TCSANOW, &Modes) != 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

// What the system says about the crash comes out below the block, not over its last line.
void LeaveBlock() {
    pollfd output{STDERR_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) > 0 && (output.revents & POLLOUT) != 0) {
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\r\n", 2);
    }
}

void RestoreAfterCrash(int Signal, siginfo_t* Info, void*) {
    if (gModesChanged) {
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

void RestoreOnEveryEnd() {
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

} // namespace

bool OwnsTerminal(int Descriptor) {
    const pid_t foreground = tcgetpgrp(Descriptor);
    return foreground < 0 ? errno == ENOTTY : foreground == getpgrp();
}

bool EnterKeyModes(int Descriptor) {
    if (!OwnsTerminal(Descriptor)) {
        return false;
    }
    if (!gModesChanged) {
        if (tcgetattr(Descriptor, &gModesBefore) != 0) {
            return false;
        }
        gTerminal = Descriptor;
    }
    RestoreOnEveryEnd();
    ArmCrashStack();
    termios modes = gModesBefore;
    modes.c_lflag &= static_cast<tcflag_t>(~(ICANON | ECHO | IEXTEN));
    modes.c_cc[VMIN] = 1;
    modes.c_cc[VTIME] = 0;
    gModesChanged = true;
    return SetModes(Descriptor, modes);
}

void RestoreTerminalNow() {
    if (gModesChanged && OwnsTerminal(gTerminal)) {
        SetModes(gTerminal, gModesBefore);
    }
    gModesChanged = false;
}
