#include "system_terminal.h"

#include <array>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "screen_text.h"
#include "terminal_modes.h"

namespace {

timespec ToTimespec(std::chrono::microseconds Time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Time);
    return {seconds.count(), std::chrono::nanoseconds(Time - seconds).count()};
}

} // namespace

SystemTerminal::SystemTerminal()
    : Signals(std::in_place), bOutputTerminal(Device.IsOutputTerminal()),
      bCanRedraw(TerminalCanRedraw()), bCanAsk(Device.CanAsk()), bUtf8(IsUserLocaleUtf8()) {
    // Otherwise each short wait may take 50 microseconds longer, to save power.
    constexpr unsigned long kOneNanosecond = 1;
    prctl(PR_SET_TIMERSLACK, kOneNanosecond);
}

Terminal::Events SystemTerminal::Wait(std::chrono::microseconds Timeout, int Descriptor) {
    std::array<pollfd, 4> ready{{{Signals->Fd(), POLLIN, 0},
                                 {Device.KeyFd(), POLLIN, 0},
                                 {Descriptor, POLLIN, 0},
                                 {Device.RestFd(), POLLOUT, 0}}};
    const timespec timeout = ToTimespec(Timeout);
    ppoll(ready.data(), ready.size(), &timeout, nullptr);
    Device.WriteRest();
    Events events;
    while (const std::optional<int> signal = Signals->Take()) {
        events.Signals.push_back(*signal);
    }
    if (ready[1].revents != 0) {
        while (std::optional<KeyPress> key = Device.TakeKey()) {
            events.Keys.push_back(std::move(*key));
        }
    }
    return events;
}

void SystemTerminal::Write(std::string_view Bytes) {
    if (!Bytes.empty() && !IsClosed()) {
        Device.Write(Bytes);
    }
}

void SystemTerminal::Close() {
    Device.LeaveKeyMode();
    Signals.reset();
}

void SystemTerminal::Exit(int Status) {
    RestoreTerminalNow();
    _exit(Status);
}
