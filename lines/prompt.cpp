#include "prompt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <unistd.h>
#include <utility>

#include "screen_text.h"
#include "terminal_modes.h"

namespace {

constexpr std::chrono::milliseconds kFrameTime{100};
// A job that is over by then shows nothing but its last line.
constexpr std::chrono::milliseconds kFirstFrameAfter{40};

timespec ToTimespec(std::chrono::microseconds Time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Time);
    return {seconds.count(), std::chrono::nanoseconds(Time - seconds).count()};
}

} // namespace

bool CanRedrawHere() {
    return isatty(STDERR_FILENO) != 0 && TerminalCanRedraw();
}

bool CanAskHere() {
    return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

Prompt::Prompt(ExitStatusFunction ExitStatusForOutcome)
    : ExitStatusOf(ExitStatusForOutcome), Signals(std::in_place), Errors(STDERR_FILENO),
      NextFrame(Clock::now() + kFirstFrameAfter), bOutputTerminal(Device.IsOutputTerminal()),
      bCanRedraw(CanRedrawHere()), bCanAsk(CanAskHere()) {}

void Prompt::TakeKeys(bool bTake) {
    if (bTakesKeys == bTake) {
        return;
    }
    bTakesKeys = bTake;
    if (bTake) {
        Device.EnterKeyMode();
    } else {
        Device.LeaveKeyMode();
    }
}

std::vector<KeyPress> Prompt::Wait(std::chrono::microseconds Timeout, int Descriptor) {
    std::array<pollfd, 3> events{{{Signals->Fd(), POLLIN, 0},
                                  {bTerminalClosed ? -1 : Device.KeyFd(), POLLIN, 0},
                                  {Descriptor, POLLIN, 0}}};
    const timespec timeout = ToTimespec(Timeout);
    ppoll(events.data(), events.size(), &timeout, nullptr);
    Errors.Pump();
    TakeSignals();
    NoticeClosedTerminal();
    std::vector<KeyPress> keys;
    if (events[1].revents != 0) {
        while (std::optional<KeyPress> key = Device.TakeKey()) {
            keys.push_back(std::move(*key));
        }
    }
    if (Ending.MustLeave(Clock::now())) {
        LeaveNow();
    }
    return keys;
}

bool Prompt::TakeFrame() {
    const Clock::time_point now = Clock::now();
    if (now < NextFrame) {
        return false;
    }
    NextFrame = now + kFrameTime;
    return true;
}

std::chrono::microseconds Prompt::UntilFrame() const {
    const auto left = std::chrono::ceil<std::chrono::microseconds>(NextFrame - Clock::now());
    return std::max(left, std::chrono::microseconds(0));
}

bool Prompt::TakeStatusRequest() {
    return std::exchange(bStatusRequested, false);
}

void Prompt::Show(const std::vector<ScreenLine>& Lines, TerminalSize LaidOutFor,
                  const std::optional<BlockCursor>& Cursor) {
    if (bTerminalClosed || !bOutputTerminal || !Device.CanDraw()) {
        return;
    }
    if (bTakesKeys && Device.KeyFd() < 0) {
        // It was in the background before.
        Device.EnterKeyMode();
    }
    if (bCanRedraw) {
        Write(Drawer.Draw(Lines, LaidOutFor, Cursor));
    } else {
        ShowPlain(Lines);
    }
}

// A line that stands already is not repeated.
void Prompt::ShowPlain(const std::vector<ScreenLine>& Lines) {
    for (std::size_t i = 0; i < Lines.size(); ++i) {
        if (i >= PlainShown.size() || PlainShown[i] != Lines[i]) {
            Write(Lines[i].Text + "\n");
        }
    }
    PlainShown = Lines;
}

void Prompt::Clear() {
    PlainShown.clear();
    Write(Drawer.Erase(Device.Size()));
}

void Prompt::CallForAnswer() {
    if (bTerminalClosed) {
        Ending.Terminate(SIGHUP, Clock::now());
    } else if (!Device.IsForeground()) {
        Stop(SIGTTIN);
        // The signal that has continued it must not come after the next frame.
        TakeSignals();
    }
}

void Prompt::PrintLine(const std::string& Text, bool bWarning) {
    std::string line = CleanForScreen(Text);
    if (!bOutputTerminal) {
        Errors.Add(line);
        return;
    }
    line = bWarning ? EmphasizeWarning(line) : line;
    Write(Drawer.Erase(Device.Size()) + line + "\n");
    HurryFrame();
}

void Prompt::Close() {
    Clear();
    TakeKeys(false);
    Signals.reset();
}

void Prompt::RingBell() {
    if (bOutputTerminal) {
        Write("\a");
    }
}

void Prompt::TakeSignals() {
    while (const std::optional<int> signal = Signals->Take()) {
        Act(*signal);
    }
}

void Prompt::Act(int Signal) {
    switch (Signal) {
    case SIGINT:
        Ending.Interrupt();
        break;
    case SIGTERM:
    case SIGHUP:
        Ending.Terminate(Signal, Clock::now());
        break;
    case SIGQUIT:
        Ending.Quit(Signal);
        break;
    case SIGTSTP:
        Stop(SIGTSTP);
        break;
    case SIGCONT:
        Resume();
        break;
    case SIGUSR1:
        bStatusRequested = true;
        break;
    default:
        // SIGWINCH: the block is laid out anew.
        break;
    }
    HurryFrame();
}

void Prompt::Stop(int StopSignal) {
    if (Device.IsForeground()) {
        Write(Drawer.Erase(Device.Size()));
    }
    Device.LeaveKeyMode();
    Signals->StopBy(StopSignal);
    Resume();
}

// Whatever stood on the screen, the shell has written below it since.
void Prompt::Resume() {
    Drawer.Abandon();
    PlainShown.clear();
    if (bTakesKeys) {
        Device.EnterKeyMode();
    }
}

void Prompt::NoticeClosedTerminal() {
    const bool bGone = Errors.Error() == EPIPE || (bOutputTerminal && Device.IsClosed());
    if (bTerminalClosed || !bGone) {
        return;
    }
    bTerminalClosed = true;
    if (!bOutputTerminal) {
        Ending.Terminate(SIGPIPE, Clock::now());
    } else if (Signals->Receives(SIGHUP)) {
        Ending.Terminate(SIGHUP, Clock::now());
    }
}

void Prompt::Write(const std::string& Bytes) {
    if (!bTerminalClosed && !Bytes.empty()) {
        Device.Write(Bytes);
    }
}

void Prompt::LeaveNow() {
    if (bOutputTerminal && Device.CanDraw()) {
        Write(Drawer.Abandon());
    }
    RestoreTerminalNow();
    Signals.reset();
    if (!PartingSentence.empty()) {
        PrintMessage(PartingSentence);
    }
    _exit(ExitStatusOf({.Result = RunResult::Canceled, .EndSignal = Ending.Signal()}));
}
