// The prompt that a front end without full screen works at: a block that is redrawn in place, and
// lines that stay above it.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "block_drawer.h"
#include "interface_loop.h"
#include "line_queue.h"
#include "run_outcome.h"
#include "terminal.h"
#include "terminal_device.h"

// Shows on standard error, through the terminal or, where that is a pipe or a file, as plain lines;
// the block then still stands on the terminal that the program was started from.
//
// Threads: one, the interface's.
class Prompt : public LoopSurface {
public:
    // The terminal must outlive the prompt. ExitStatusForOutcome tells what the program is to exit
    // with when it has to leave at once.
    Prompt(Terminal& TerminalToUse, ExitStatusFunction ExitStatusForOutcome);
    // Takes away a block that an exception has left, so that its message stands in place of it.
    ~Prompt() override;

    // Shows Lines, laid out for LaidOutFor, in place of the ones before, if that can be done now.
    void Show(const std::vector<ScreenLine>& Lines, TerminalSize LaidOutFor,
              const std::optional<BlockCursor>& Cursor = std::nullopt);
    // Shows Parts as far as there is room.
    void ShowParts(std::vector<BlockPart> Parts);

    // Prints one line that stays, above the block, after cleaning it.
    void PrintLine(const std::string& Text) override;
    // The same with a style, where it goes to the terminal.
    void PrintLine(const std::string& Text, TextStyle Style);
    // The same in as many lines as it takes to leave words whole on a narrow terminal.
    void PrintSentence(const std::string& Text);
    // The same with the program's name before it.
    void PrintMessage(const std::string& Sentence) { PrintSentence("tarvane: " + Sentence); }
    // The same as PrintLine, and also on the terminal where messages go elsewhere: for what
    // somebody has to read before an answer, and for the answer itself.
    void PrintBesideQuestions(const std::string& Text, TextStyle Style = TextStyle::Plain);
    void RingBell();

    // Tells what is to be said when there is no time to wait for the end of what runs; none for
    // nothing.
    void SetPartingSentence(std::function<std::string()> Sentence) {
        PartingSentence = std::move(Sentence);
    }

    // Takes the block away and gives back keys and signals, which act by themselves from then on.
    // Printing goes on. Whoever has asked for the end does not wait for an output that stands
    // still: their signal comes once more after the time for the clean-up.
    void Close(const EndRequest& Requests);
    // Waits until everything is out.
    void Finish();

    bool Pump() override;
    void Clear() override;
    void Abandon() override;
    bool TakeFrameRequest() override;
    void Leave(int Signal) override;

private:
    void PrintOnTerminal(const std::string& Text, TextStyle Style);
    void ShowPlain(const std::vector<ScreenLine>& Lines);

    Terminal& Screen;
    ExitStatusFunction ExitStatusOf;
    BlockDrawer Drawer;
    LineQueue Errors;
    std::function<std::string()> PartingSentence;
    // What a terminal that cannot redraw has been shown last.
    std::vector<ScreenLine> PlainShown;
    bool bWantsFrame = false;
};
