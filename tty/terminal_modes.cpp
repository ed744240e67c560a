#include "terminal_modes.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <poll.h>
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

// Written only while the length is 0, for the same reason.
std::array<char, 512> gBytesOnRestore{};
std::atomic<std::size_t> gBytesOnRestoreLength{0};
static_assert(std::atomic<std::size_t>::is_always_lock_free);

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

void SendOnRestore(std::string_view Bytes) {
    gBytesOnRestoreLength = 0;
    gBytesOnRestoreLength = Bytes.copy(gBytesOnRestore.data(), gBytesOnRestore.size());
}

void WriteWithoutWaiting(int Terminal, std::string_view Bytes) {
    pollfd output{Terminal, POLLOUT, 0};
    if (poll(&output, 1, 0) > 0 && (output.revents & POLLOUT) != 0) {
        [[maybe_unused]] const ssize_t written = write(Terminal, Bytes.data(), Bytes.size());
    }
}

void RestoreTerminalNow() {
    const std::size_t length = gBytesOnRestoreLength.exchange(0);
    if (gModesChanged && OwnsTerminal(gTerminal)) {
        if (length > 0) {
            WriteWithoutWaiting(gTerminal, {gBytesOnRestore.data(), length});
        }
        SetModes(gTerminal, gModesBefore);
    }
    gModesChanged = false;
}
