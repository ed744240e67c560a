// Where a front end without full screen waits, shows and prints.

#pragma once

#include "block_drawer.h"
#include "end_request.h"
#include "exit_status_function.h"
#include "key_press.h"
#include "output_queue.h"
#include "signal_inbox.h"
#include "terminal_device.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Whether a block can be redrawn in place on standard error.
bool CanRedrawHere();
// Whether somebody can be asked: standard input and standard error are terminals.
bool CanAskHere();

// The terminal, or the pipe or file in its place, and the signals. It takes care of stops, resizing
// and the background by itself: in the background nothing is drawn and no key is taken.
//
// Threads: one, the interface thread. Make it before other threads are started.
class Prompt {
public:
    using Clock = std::chrono::steady_clock;

    // ExitStatusForOutcome tells what the program is to exit with when it has to leave at once.
    explicit Prompt(ExitStatusFunction ExitStatusForOutcome);

    bool CanAsk() const { return bCanAsk; }
    bool CanRedraw() const { return bCanRedraw; }
    // Whether standard error is a terminal, one that can redraw or not.
    bool IsTerminal() const { return bOutputTerminal; }

    // Takes keys from now on, or leaves the terminal's modes alone from now on.
    void TakeKeys(bool bTake);
    bool TakesKeys() const { return bTakesKeys; }

    // Returns the keys that have come when there are any, when a signal was taken, when Descriptor
    // is readable, or when Timeout is over. Ends the program when there is no more time.
    std::vector<KeyPress> Wait(std::chrono::microseconds Timeout, int Descriptor);

    // Whether it is time to draw, which it is ten times a second and after whatever changes the
    // screen. True once for each time.
    bool TakeFrame();
    void HurryFrame() { NextFrame = Clock::now(); }
    std::chrono::microseconds UntilFrame() const;
    // Whether SIGUSR1 came, which asks for a line. True once.
    bool TakeStatusRequest();

    // What is to be said when there is no time to wait for the end of what runs; empty for nothing.
    void SetPartingSentence(std::string Sentence) { PartingSentence = std::move(Sentence); }
    // What the user and the system want.
    EndRequest& End() { return Ending; }

    TerminalSize Size() const { return Device.Size(); }
    // Shows Lines, laid out for LaidOutFor, in place of the ones before, if that can be done now.
    void Show(const std::vector<ScreenLine>& Lines, TerminalSize LaidOutFor,
              const std::optional<BlockCursor>& Cursor = std::nullopt);
    // Takes the block away.
    void Clear();
    // Call it while somebody is asked: in the background it stops the process, as shells expect of
    // a program that wants an answer, and where nobody is left to answer it ends the program.
    void CallForAnswer();

    // Prints one line that stays, above the block, after cleaning it.
    void PrintLine(const std::string& Text, bool bWarning = false);
    // The same with the program's name before it.
    void PrintMessage(const std::string& Sentence) { PrintLine("tarvane: " + Sentence); }

    // Takes the block away and gives back keys and signals, which act by themselves from then on.
    // Printing goes on.
    void Close();
    void RingBell();
    // Waits until everything is out.
    void Finish() { Errors.Finish(); }

private:
    void TakeSignals();
    void Act(int Signal);
    void Stop(int StopSignal);
    void Resume();
    void NoticeClosedTerminal();
    void Write(const std::string& Bytes);
    void ShowPlain(const std::vector<ScreenLine>& Lines);
    [[noreturn]] void LeaveNow();

    ExitStatusFunction ExitStatusOf;
    std::optional<SignalInbox> Signals;
    TerminalDevice Device;
    BlockDrawer Drawer;
    OutputQueue Errors;
    EndRequest Ending;
    std::string PartingSentence;
    std::vector<ScreenLine> PlainShown;
    Clock::time_point NextFrame;
    bool bOutputTerminal = false;
    bool bCanRedraw = false;
    bool bCanAsk = false;
    bool bTakesKeys = false;
    bool bStatusRequested = false;
    bool bTerminalClosed = false;
};
