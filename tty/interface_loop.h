// The loop that every front end runs on: it waits for keys, signals, a descriptor or the next
// frame, stops and resumes with the shell's job control, and leaves when there is no more time.

#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "end_request.h"
#include "key_press.h"
#include "terminal.h"

// What a front end does for a while, until it is over: a wait, a question, a job.
class Activity {
public:
    Activity() = default;
    virtual ~Activity() = default;
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

    virtual void TakeKey(const KeyPress& Key) = 0;
    // Looks at what goes on, after the keys of a round and before anything is drawn. The loop ends
    // when it returns true.
    virtual bool IsOver() = 0;
    virtual void Draw() = 0;
    // Answers SIGUSR1 with one line.
    virtual std::string StatusText() = 0;

    // Wakes the loop when it is readable; -1 for none.
    virtual int Descriptor() const { return -1; }
    // The longest that IsOver may have to wait when nothing else happens.
    virtual std::chrono::microseconds LongestWait() const { return std::chrono::hours(1); }
    // Whether somebody has to answer. In the background that stops the process, as shells expect of
    // a program that wants an answer, and where nobody is left to answer it ends the program.
    virtual bool NeedsAnswer() const { return false; }
};

// What is drawn on and printed to, as far as the loop has to tell it something.
class LoopSurface {
public:
    LoopSurface() = default;
    virtual ~LoopSurface() = default;
    LoopSurface(const LoopSurface&) = delete;
    LoopSurface& operator=(const LoopSurface&) = delete;

    // Writes what waits to be written, without waiting. False when the reader has gone away.
    virtual bool Pump() = 0;
    // Before a stop: takes away what is drawn, where that can still be done.
    virtual void Clear() = 0;
    // After a stop: what stands on the screen is not ours any more.
    virtual void Abandon() = 0;
    virtual void PrintLine(const std::string& Text) = 0;
    // Whether a line has taken the place of what was drawn, so that it has to be drawn again at
    // once. True once.
    virtual bool TakeFrameRequest() = 0;
    // There is no more time: says what there is to say and ends the program by Signal. Does not
    // return.
    virtual void Leave(int Signal) = 0;
};

// Threads: one, the interface's.
class InterfaceLoop {
public:
    // Both must outlive the loop.
    InterfaceLoop(Terminal& TerminalToUse, LoopSurface& SurfaceToUse);

    // Takes keys where messages come out on a terminal, and they stay taken between two activities;
    // elsewhere only for an answer.
    void Run(Activity& Current);

    // What the user and the system want.
    EndRequest& Requests() { return End; }
    Terminal::TimePoint Now() const { return Screen.Now(); }
    // Draws at the next opportunity. Frames come ten times a second otherwise.
    void HurryFrame() { NextFrame = Screen.Now(); }

private:
    void TakeEvents(Activity& Current);
    void TakeSignal(int Signal);
    void TakeInterrupt();
    bool Stop(int StopSignal);
    void Resume();
    void EnsureKeyMode(const Activity& Current);
    void NoticeClosedTerminal(bool bReaderGone);
    bool CallForAnswer();
    void DrawWhenDue(Activity& Current);
    std::chrono::microseconds UntilFrame() const;

    Terminal& Screen;
    LoopSurface& Surface;
    EndRequest End;
    Terminal::TimePoint NextFrame;
    std::optional<Terminal::TimePoint> LastInterrupt;
    bool bStatusRequested = false;
    bool bClosed = false;
    // What has come during the stop is not known yet.
    bool bStoppedByRequest = false;
};
