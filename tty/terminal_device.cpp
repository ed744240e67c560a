#include "terminal_device.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include "restore_on_end.h"
#include "signals_blocked.h"
#include "terminal_modes.h"

namespace {

std::string_view Environment(const char* Name) {
    const char* value = std::getenv(Name);
    return value == nullptr ? std::string_view() : value;
}

std::chrono::milliseconds ChosenEscapeDelay() {
    constexpr int kUsual = 25;
    constexpr int kLongest = 2000;
    const std::string_view text = Environment("ESCDELAY");
    int delay = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), delay);
    const bool bUsable =
        error == std::errc() && end == text.data() + text.size() && delay > 0 && delay <= kLongest;
    return std::chrono::milliseconds(bUsable ? delay : kUsual);
}

// The old terminals without colors have names of their own, and so have variants of newer ones.
bool HasColors() {
    const std::string_view name = Environment("TERM");
    const bool bColorless =
        name.starts_with("vt") || name.ends_with("-m") || name.ends_with("-mono");
    return !bColorless && Environment("NO_COLOR").empty();
}

// Standard error, which may be sent away later, is used only where it is another terminal.
int ScreenDescriptor(int ControllingFd) {
    const bool bControlling = ControllingFd >= 0 && tcgetpgrp(STDERR_FILENO) >= 0;
    const bool bElsewhere = isatty(STDERR_FILENO) != 0 && !bControlling;
    return bElsewhere ? STDERR_FILENO : ControllingFd;
}

} // namespace

bool TerminalCanRedraw() {
    const std::string_view name = Environment("TERM");
    return !name.empty() && name != "dumb";
}

std::string StyleOn(TextStyle Style) {
    if (!TerminalCanRedraw()) {
        return {};
    }
    switch (Style) {
    case TextStyle::Plain:
        return {};
    case TextStyle::Key:
        return "\x1B[1m";
    case TextStyle::Warning:
        return HasColors() ? "\x1B[1;31m" : "\x1B[1m";
    case TextStyle::Bar:
        return HasColors() ? "\x1B[36m" : "";
    }
    return {};
}

std::string StyleOff(TextStyle Style) {
    return StyleOn(Style).empty() ? "" : "\x1B[m";
}

TerminalDevice::TerminalDevice()
    : ControllingFd(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)),
      ScreenFd(ScreenDescriptor(ControllingFd)), EscapeDelay(ChosenEscapeDelay()),
      Output(ScreenFd) {}

TerminalDevice::~TerminalDevice() {
    LeaveKeyMode();
    if (ControllingFd >= 0) {
        close(ControllingFd);
    }
}

bool TerminalDevice::IsOutputTerminal() const {
    return isatty(STDERR_FILENO) != 0;
}

bool TerminalDevice::CanAsk() const {
    return OwnsTerminal(ControllingFd);
}

bool TerminalDevice::IsForeground() const {
    return OwnsTerminal(ScreenFd);
}

bool TerminalDevice::IsClosed() const {
    pollfd output{ScreenFd, 0, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & POLLHUP) != 0;
}

bool TerminalDevice::CanDraw() const {
    return IsForeground() && !IsClosed() && Output.IsEmpty() && Output.IsReady();
}

TerminalSize TerminalDevice::Size() const {
    winsize window{};
    TerminalSize size;
    if (ioctl(ScreenFd, TIOCGWINSZ, &window) == 0 && window.ws_col > 0 && window.ws_row > 0) {
        size.Columns = window.ws_col;
        size.Rows = window.ws_row;
    }
    return size;
}

bool TerminalDevice::EnterKeyMode() {
    if (ControllingFd < 0) {
        return false;
    }
    RestoreOnEveryEnd();
    if (!EnterKeyModes(ControllingFd)) {
        return false;
    }
    bKeyMode = true;
    return true;
}

void TerminalDevice::LeaveKeyMode() {
    if (bKeyMode) {
        RestoreTerminalNow();
        Decoder.Clear();
        bKeyMode = false;
    }
}

int TerminalDevice::KeyFd() const {
    return bKeyMode && OwnsTerminal(ControllingFd) ? ControllingFd : -1;
}

std::optional<KeyPress> TerminalDevice::TakeKey() {
    while (KeyFd() >= 0) {
        if (std::optional<KeyPress> key = Decoder.Next()) {
            return key;
        }
        if (ReadMore(std::chrono::milliseconds(0))) {
            continue;
        }
        if (!Decoder.IsAmbiguous()) {
            return std::nullopt;
        }
        if (!ReadMore(EscapeDelay)) {
            return Decoder.NextAfterSilence();
        }
    }
    return std::nullopt;
}

// False when nothing has come in time.
bool TerminalDevice::ReadMore(std::chrono::milliseconds Timeout) {
    pollfd input{ControllingFd, POLLIN, 0};
    if (poll(&input, 1, static_cast<int>(Timeout.count())) <= 0) {
        return false;
    }
    // Reading in the background is then an error instead of a stop.
    const SignalsBlocked noStop(SIGTTIN);
    std::array<char, 256> bytes;
    const ssize_t count = read(ControllingFd, bytes.data(), bytes.size());
    if (count <= 0) {
        return false;
    }
    Decoder.Feed({bytes.data(), static_cast<std::size_t>(count)});
    return true;
}

bool TerminalDevice::Write(std::string_view Bytes) {
    Output.Write(Bytes);
    return Output.Error() == 0;
}
