#include "terminal_modes.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <termios.h>
#include <unistd.h>

#include "signals_blocked.h"

namespace {

// The terminal and its modes from before. Written only while gModesChanged is false, so that a
// signal handler never reads half of it.
int gTerminal = -1;
termios gModesBefore{};
std::atomic<bool> gModesChanged{false};
static_assert(std::atomic<bool>::is_always_lock_free);

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
    termios modes = gModesBefore;
    modes.c_lflag &= static_cast<tcflag_t>(~(ICANON | ECHO | IEXTEN));
    modes.c_cc[VMIN] = 1;
    modes.c_cc[VTIME] = 0;
    gModesChanged = true;
    return SetModes(Descriptor, modes);
}

int TerminalInKeyModes() {
    return gModesChanged ? gTerminal : -1;
}

void RestoreTerminalNow() {
    if (gModesChanged && OwnsTerminal(gTerminal)) {
        SetModes(gTerminal, gModesBefore);
    }
    gModesChanged = false;
}
