#include "panes_front_end.h"

#include "completion_bell.h"
#include "curses_screen.h"
#include "entry_commands.h"
#include "file_panes.h"
#include "foreground_program.h"
#include "interface_loop.h"
#include "key_bar.h"
#include "pane_commands.h"
#include "panes_layout.h"
#include "quoted.h"
#include "run_dialogs.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::chrono::milliseconds kSoon{20};
// What the shell ends with.
constexpr int kNotExecutable = 126;
constexpr int kNotFound = 127;

class PanesFrontEnd : public Activity, public LoopSurface {
public:
    PanesFrontEnd(const PanesRequest& Request, Terminal& TerminalToUse,
                  ExitStatusFunction ExitStatusForOutcome)
        : Device(TerminalToUse), ExitStatusOf(ExitStatusForOutcome), Shown(Device),
          Loop(Device, *this), Panes(Request) {}

    RunOutcome Run();

    void TakeKey(const KeyPress& Key) override;
    bool IsOver() override;
    void Draw() override;
    std::string StatusText() override { return RunsShown.StatusText(); }
    std::chrono::microseconds LongestWait() const override;
    // Keys are for the other program while there is one.
    bool NeedsAnswer() const override { return !Program; }

    bool Pump() override { return true; }
    void Clear() override { Shown.Leave(); }
    void Abandon() override { Shown.Abandon(); }
    void PrintLine(const std::string& Text) override { Answered = Text; }
    bool TakeFrameRequest() override { return false; }
    void Leave(int Signal) override;

private:
    void TakePaneKey(const KeyPress& Key);
    void FollowRequests();
    void FollowProgram();
    void StartProgram(const FileProgram& Wanted);
    std::string StatusLine() const;

    Terminal& Device;
    ExitStatusFunction ExitStatusOf;
    CursesScreen Shown;
    InterfaceLoop Loop;
    KeyGuard Guard;
    DialogStack Stack;
    FilePanes Panes;
    EntryCommands Entries{Panes, Stack, Guard};
    RunList Runs;
    RunDialogs RunsShown{Runs, Stack, Guard};
    PaneCommands Commands{Panes, Entries, Runs, RunsShown, Stack};
    // A pager or an editor, which has the terminal.
    std::optional<ForegroundProgram> Program;
    std::string ProgramCommand;
    std::string ProgramVariable;
    // What SIGUSR1 was answered with.
    std::string Answered;
    // The window has no room for the dialogs.
    bool bHidden = false;
    std::optional<int> EndSignal;
};

RunOutcome PanesFrontEnd::Run() {
    Loop.Run(*this);
    Shown.Leave();
    Device.Close();
    if (EndSignal) {
        Device.SendSignalAfter(EndRequest::kCleanUpTime, *EndSignal);
    }
    Device.FinishWriting();
    return {.Result = RunResult::Succeeded, .EndSignal = EndSignal};
}

void PanesFrontEnd::TakeKey(const KeyPress& Key) {
    Answered.clear();
    if (Key.Code == KeyCode::Control && Key.Text == "l") {
        Shown.RedrawWhole();
        return;
    }
    if (bHidden || !Stack.IsGuarded()) {
        Guard.KeyIsDead(Loop.Now());
    }
    if (bHidden || !LayOutPanes(Shown.Size())) {
        return;
    }
    if (!Stack.IsEmpty()) {
        Stack.TakeKey(Key, Loop.Now());
    } else if (!Commands.WantsToLeave()) {
        TakePaneKey(Key);
    }
}

void PanesFrontEnd::TakePaneKey(const KeyPress& Key) {
    const std::optional<PanesLayout> layout = LayOutPanes(Shown.Size());
    if (Key.Code == KeyCode::Mouse && Key.Mouse.Row == layout->KeyRow) {
        if (const auto number = FunctionKeyAt(Key.Mouse.Column, Shown.Size().Columns)) {
            Commands.TakeKey({.Code = KeyCode::Function, .Number = *number});
        }
        return;
    }
    if (!Panes.TakeKey(Key, Loop.Now())) {
        Commands.TakeKey(Key);
    }
}

bool PanesFrontEnd::IsOver() {
    FollowRequests();
    FollowProgram();
    Panes.Attend(Loop.Now());
    RunsShown.Attend(Loop.Now());
    Commands.Attend();
    Entries.Attend(Loop.Now());
    Stack.Attend();
    if (RunsShown.TakeEnd()) {
        Panes.ReadAgain();
    }
    const bool bCompleted = TakeTarvaneCompletionBell();
    if (RunsShown.TakeBell() || bCompleted) {
        Device.Write("\a");
    }
    const bool bLeaves = EndSignal.has_value() || Commands.WantsToLeave();
    return bLeaves && Runs.CountRunning() == 0 && !Program;
}

// Ctrl-C is no end here, but what Esc is to a transfer that is shown.
void PanesFrontEnd::FollowRequests() {
    EndRequest& requests = Loop.Requests();
    if (!requests.IsAsked() || EndSignal) {
        return;
    }
    if (requests.Signal() == SIGINT) {
        requests.FulfillInterrupt();
        if (!Program) {
            RunsShown.CancelInFront();
        }
        return;
    }
    EndSignal = requests.Signal();
    Commands.StopPlanning();
    Runs.EndAll(*EndSignal);
    if (Program) {
        Program->Terminate();
    }
}

void PanesFrontEnd::FollowProgram() {
    if (Program) {
        if (const std::optional<int> status = Program->TakeExitStatus()) {
            Program.reset();
            if (*status == kNotExecutable || *status == kNotFound) {
                Commands.Say("No program",
                             {Quoted(ProgramCommand) + " cannot be run; the variable " +
                              ProgramVariable + " says which one to use."});
            }
            Panes.ReadAgain();
            Loop.HurryFrame();
        }
    } else if (const std::optional<FileProgram> wanted = Commands.TakeProgram()) {
        StartProgram(*wanted);
    }
}

void PanesFrontEnd::StartProgram(const FileProgram& Wanted) {
    const char* const chosen = std::getenv(Wanted.Variable);
    const std::string command =
        chosen != nullptr && *chosen != '\0' ? chosen : std::string(Wanted.Otherwise);
    ProgramCommand = command;
    ProgramVariable = Wanted.Variable;
    Shown.Leave();
    Device.LeaveKeyMode();
    try {
        Program.emplace(ShellArguments(command, Wanted.File));
    } catch (const std::runtime_error& error) {
        Commands.Say(command, {error.what()});
    }
}

std::chrono::microseconds PanesFrontEnd::LongestWait() const {
    const bool bSoon = Panes.IsReading() || Commands.IsBusy() || Entries.IsBusy() || Program;
    return bSoon ? std::min<std::chrono::microseconds>(kSoon, Runs.LongestWait())
                 : Runs.LongestWait();
}

std::string PanesFrontEnd::StatusLine() const {
    if (RunsShown.NeedsSomebody() && !RunsShown.IsAsking()) {
        return RunsShown.StatusText();
    }
    for (std::string text : {Answered, Commands.StatusText(), Entries.StatusText()}) {
        if (!text.empty()) {
            return text;
        }
    }
    return RunsShown.StatusText();
}

void PanesFrontEnd::Draw() {
    if (Program) {
        return;
    }
    Shown.Erase();
    const bool bWasHidden = std::exchange(bHidden, !LayOutPanes(Shown.Size()));
    if (bWasHidden && !bHidden && Stack.IsGuarded()) {
        Guard.QuestionAppears(Loop.Now());
    }
    if (const std::optional<PanesLayout> layout = LayOutPanes(Shown.Size())) {
        Panes.Draw(Shown, *layout, Loop.Now());
        const bool bNeedsSomebody = RunsShown.NeedsSomebody() && !RunsShown.IsAsking();
        DrawStatusLine(Shown, layout->StatusRow, StatusLine(), bNeedsSomebody);
        DrawKeyBar(Shown, layout->KeyRow);
        Stack.Draw(Shown, Loop.Now());
    } else {
        DrawTooSmall(Shown);
    }
    Shown.Flush();
}

void PanesFrontEnd::Leave(int Signal) {
    Shown.Leave();
    Device.Close();
    Device.Exit(ExitStatusOf({.Result = RunResult::Canceled, .EndSignal = Signal}));
}

} // namespace

std::string WhyNoPanes() {
    if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDOUT_FILENO) == 0) {
        return "the panes need a terminal";
    }
    return CursesScreen::WhyNoFullScreen();
}

RunOutcome RunPanes(const PanesRequest& Request, Terminal& Device,
                    ExitStatusFunction ExitStatusOf) {
    return PanesFrontEnd(Request, Device, ExitStatusOf).Run();
}
