#include "interface_loop.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace {

constexpr std::chrono::milliseconds kFrameTime{100};
// What is over by then shows nothing but its last line.
constexpr std::chrono::milliseconds kFirstFrameAfter{40};
// What sends SIGINT to the process and to its group, as timeout does, has asked once. Nobody
// presses Ctrl-C twice so fast.
constexpr std::chrono::milliseconds kSameInterrupt{100};

} // namespace

InterfaceLoop::InterfaceLoop(Terminal& TerminalToUse, LoopSurface& SurfaceToUse)
    : Screen(TerminalToUse), Surface(SurfaceToUse), NextFrame(Screen.Now() + kFirstFrameAfter) {}

void InterfaceLoop::Run(Activity& Current) {
    EnsureKeyMode(Current);
    while (!Current.IsOver()) {
        if (!Current.NeedsAnswer() || End.IsAsked() || !CallForAnswer()) {
            DrawWhenDue(Current);
        }
        TakeEvents(Current);
    }
}

void InterfaceLoop::TakeEvents(Activity& Current) {
    const auto timeout = std::min(UntilFrame(), Current.LongestWait());
    const Terminal::Events events = Screen.Wait(timeout, Current.Descriptor());
    const bool bReaderGone = !Surface.Pump();
    for (const int signal : events.Signals) {
        TakeSignal(signal);
    }
    NoticeClosedTerminal(bReaderGone);
    for (const KeyPress& key : events.Keys) {
        Current.TakeKey(key);
        HurryFrame();
    }
    if (std::exchange(bStatusRequested, false)) {
        Surface.PrintLine(Current.StatusText());
    }
    if (End.MustLeave(Screen.Now())) {
        Surface.Leave(End.Signal());
    }
}

void InterfaceLoop::TakeSignal(int Signal) {
    switch (Signal) {
    case SIGINT:
        TakeInterrupt();
        break;
    case SIGTERM:
    case SIGHUP:
        End.Terminate(Signal, Screen.Now());
        break;
    case SIGQUIT:
        End.Quit(Signal);
        break;
    case SIGTSTP:
        bStoppedByRequest = Stop(SIGTSTP);
        break;
    case SIGCONT:
        Resume();
        break;
    case SIGUSR1:
        bStatusRequested = true;
        break;
    default:
        // SIGWINCH: what is shown is laid out anew.
        break;
    }
    HurryFrame();
}

void InterfaceLoop::TakeInterrupt() {
    const Terminal::TimePoint now = Screen.Now();
    if (!LastInterrupt || now - *LastInterrupt >= kSameInterrupt) {
        LastInterrupt = now;
        End.Interrupt();
    }
}

// False when nobody could continue the process, which has therefore not stopped.
bool InterfaceLoop::Stop(int StopSignal) {
    if (Screen.IsForeground()) {
        Surface.Clear();
    }
    Screen.LeaveKeyMode();
    const bool bStopped = Screen.StopBy(StopSignal);
    Resume();
    HurryFrame();
    return bStopped;
}

// Whatever stood on the screen, the shell has written below it since. The next frame, which comes
// at once, takes the keys anew.
void InterfaceLoop::Resume() {
    Surface.Abandon();
    Screen.LeaveKeyMode();
}

void InterfaceLoop::EnsureKeyMode(const Activity& Current) {
    const bool bWanted = Screen.IsOutputTerminal() || Current.NeedsAnswer();
    if (!bWanted) {
        Screen.LeaveKeyMode();
    } else if (!Screen.TakesKeys()) {
        Screen.EnterKeyMode();
    }
}

void InterfaceLoop::NoticeClosedTerminal(bool bReaderGone) {
    if (bClosed || !(bReaderGone || Screen.IsClosed())) {
        return;
    }
    bClosed = true;
    if (!Screen.IsOutputTerminal()) {
        End.Terminate(SIGPIPE, Screen.Now());
    } else if (Screen.Receives(SIGHUP)) {
        End.Terminate(SIGHUP, Screen.Now());
    }
}

// True when the process was stopped: the screen is drawn, and the process stopped again, only after
// what has come meanwhile.
bool InterfaceLoop::CallForAnswer() {
    if (std::exchange(bStoppedByRequest, false)) {
        return true;
    }
    if (!bClosed && Screen.IsForeground()) {
        return false;
    }
    if (!bClosed && Stop(SIGTTIN)) {
        return true;
    }
    End.Terminate(SIGHUP, Screen.Now());
    return false;
}

void InterfaceLoop::DrawWhenDue(Activity& Current) {
    const Terminal::TimePoint now = Screen.Now();
    if (!Surface.TakeFrameRequest() && now < NextFrame) {
        return;
    }
    NextFrame = now + kFrameTime;
    // It was stopped or in the background before.
    EnsureKeyMode(Current);
    Current.Draw();
}

std::chrono::microseconds InterfaceLoop::UntilFrame() const {
    const auto left = std::chrono::ceil<std::chrono::microseconds>(NextFrame - Screen.Now());
    return std::max(left, std::chrono::microseconds(0));
}
