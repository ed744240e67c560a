// The terminal as an interface loop and what draws on it see it: small, so that a scripted one can
// stand in.

#pragma once

#include <chrono>
#include <string_view>
#include <vector>

#include "key_press.h"

struct TerminalSize {
    int Columns = 80;
    int Rows = 24;

    bool operator==(const TerminalSize&) const = default;
};

// Threads: one, the interface's.
class Terminal {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Events {
        std::vector<int> Signals;
        std::vector<KeyPress> Keys;
    };

    Terminal() = default;
    virtual ~Terminal() = default;
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    virtual TimePoint Now() const = 0;

    // Returns what has come when there is anything, when Descriptor is readable, or when Timeout is
    // over. -1 is no descriptor.
    virtual Events Wait(std::chrono::microseconds Timeout, int Descriptor) = 0;

    // Whether the program owns the terminal now: not after Ctrl-Z and `bg`, and not with `&`.
    virtual bool IsForeground() const = 0;
    // Whether the terminal that is written to has been closed.
    virtual bool IsClosed() const = 0;
    // False for a signal that the program was started to ignore.
    virtual bool Receives(int Signal) const = 0;

    // Delivers keys one by one from now on and shows none of them. Call it again when the program
    // runs on after a stop. Errors: false, with nothing changed, in the background or without keys.
    virtual bool EnterKeyMode() = 0;
    virtual void LeaveKeyMode() = 0;
    // Whether keys are delivered now.
    virtual bool TakesKeys() const = 0;

    // Lets StopSignal (SIGTSTP, SIGTTIN) stop the process as the system does by itself, and comes
    // back when it runs again: false at once where nobody could continue it. The signal that has
    // continued it is no event.
    virtual bool StopBy(int StopSignal) = 0;

    // Whether messages and progress, which go to standard error, come out on a terminal.
    virtual bool IsOutputTerminal() const = 0;
    // Whether somebody could be asked at the start. Questions come out on the terminal even where
    // messages go elsewhere.
    virtual bool CanAsk() const = 0;
    // Whether the terminal's lines can be redrawn.
    virtual bool CanRedraw() const = 0;
    // Whether a frame reaches the screen now without waiting.
    virtual bool CanDraw() const = 0;
    // Whether characters beyond ASCII show as what they are.
    virtual bool IsUtf8() const = 0;
    virtual TerminalSize Size() const = 0;
    // What the terminal does not take now is written by and by, in Wait.
    virtual void Write(std::string_view Bytes) = 0;

    // Gives back modes and signals, which act by themselves from then on. Writing goes on.
    virtual void Close() = 0;
    // Sends the program Signal once, after Delay, unless it has ended by then.
    virtual void SendSignalAfter(std::chrono::seconds Delay, int Signal) = 0;
    // Waits until everything is written or the terminal is gone. Close it before, so that signals
    // act meanwhile.
    virtual void FinishWriting() = 0;
    // Ends the program at once and does not return. A scripted terminal throws.
    virtual void Exit(int Status) = 0;
};
