#include "prompt.h"

#include <cerrno>
#include <new>
#include <unistd.h>
#include <utility>

#include "screen_text.h"

Prompt::Prompt(Terminal& TerminalToUse, ExitStatusFunction ExitStatusForOutcome)
    : Screen(TerminalToUse), ExitStatusOf(ExitStatusForOutcome), Errors(STDERR_FILENO) {}

Prompt::~Prompt() {
    try {
        Clear();
    } catch (const std::bad_alloc&) {
        // Without memory for a few bytes the message comes behind the block.
    }
}

void Prompt::Show(const std::vector<ScreenLine>& Lines, TerminalSize LaidOutFor,
                  const std::optional<BlockCursor>& Cursor) {
    if (!Screen.CanDraw()) {
        return;
    }
    if (Screen.CanRedraw()) {
        Screen.Write(Drawer.Draw(Lines, LaidOutFor, Cursor));
    } else {
        ShowPlain(Lines);
    }
}

void Prompt::ShowParts(std::vector<BlockPart> Parts) {
    const TerminalSize size = Screen.Size();
    Show(FitToRows(std::move(Parts), size.Rows), size);
}

// A line that stands already is not repeated.
void Prompt::ShowPlain(const std::vector<ScreenLine>& Lines) {
    for (std::size_t i = 0; i < Lines.size(); ++i) {
        if (i >= PlainShown.size() || PlainShown[i] != Lines[i]) {
            Screen.Write(Lines[i].Text + "\n");
        }
    }
    PlainShown = Lines;
}

void Prompt::PrintLine(const std::string& Text) {
    PrintLine(Text, TextStyle::Plain);
}

void Prompt::PrintLine(const std::string& Text, TextStyle Style) {
    if (Screen.IsOutputTerminal()) {
        PrintOnTerminal(Text, Style);
    } else {
        Errors.Add(CleanForScreen(Text));
    }
}

void Prompt::PrintBesideQuestions(const std::string& Text, TextStyle Style) {
    PrintLine(Text, Style);
    if (!Screen.IsOutputTerminal() && Screen.CanAsk()) {
        PrintOnTerminal(Text, Style);
    }
}

void Prompt::PrintOnTerminal(const std::string& Text, TextStyle Style) {
    // The block is taken away only once there is memory for what stands in its place.
    const std::string line = StyleOn(Style) + CleanForScreen(Text) + StyleOff(Style) + "\n";
    Screen.Write(Drawer.Erase(Screen.Size()));
    Screen.Write(line);
    bWantsFrame = true;
}

void Prompt::PrintSentence(const std::string& Text) {
    if (!Screen.IsOutputTerminal()) {
        PrintLine(Text);
        return;
    }
    for (const std::string& line :
         WrapWholeWords(CleanForScreen(Text), LayoutWidth(Screen.Size()))) {
        PrintLine(line);
    }
}

void Prompt::RingBell() {
    if (Screen.IsOutputTerminal()) {
        Screen.Write("\a");
    }
}

void Prompt::Close(const EndRequest& Requests) {
    Clear();
    Screen.Close();
    if (Requests.IsAsked()) {
        Screen.SendSignalAfter(EndRequest::kCleanUpTime, Requests.Signal());
    }
}

void Prompt::Finish() {
    Errors.Finish();
    Screen.FinishWriting();
}

bool Prompt::Pump() {
    Errors.Pump();
    return Errors.Error() != EPIPE;
}

void Prompt::Clear() {
    PlainShown.clear();
    Screen.Write(Drawer.Erase(Screen.Size()));
}

void Prompt::Abandon() {
    PlainShown.clear();
    Drawer.Abandon();
}

bool Prompt::TakeFrameRequest() {
    return std::exchange(bWantsFrame, false);
}

void Prompt::Leave(int Signal) {
    if (Screen.CanDraw()) {
        Screen.Write(Drawer.Abandon());
    }
    Screen.Close();
    if (PartingSentence) {
        PrintMessage(PartingSentence());
    }
    Screen.Exit(ExitStatusOf({.Result = RunResult::Canceled, .EndSignal = Signal}));
}
