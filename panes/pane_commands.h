// What the keys of the panes stand for beyond the panes themselves.

#pragma once

#include "dialog_stack.h"
#include "entry_commands.h"
#include "file_panes.h"
#include "plan_task.h"
#include "run_dialogs.h"
#include "run_list.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

struct FileProgram {
    const char* Variable = "";
    const char* Otherwise = "";
    std::filesystem::path File;
};

// Threads: one.
class PaneCommands {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // All of them outlive this.
    PaneCommands(FilePanes& PanesToUse, EntryCommands& CommandsForEntries, RunList& RunsToStart,
                 RunDialogs& DialogsOfRuns, DialogStack& StackToUse)
        : Panes(PanesToUse), Entries(CommandsForEntries), Runs(RunsToStart),
          RunsShown(DialogsOfRuns), Stack(StackToUse) {}

    // False for a key that is no command.
    bool TakeKey(const KeyPress& Key);
    // Goes on with what was begun.
    void Attend();
    // Whether something goes on, so that Attend is to be called soon.
    bool IsBusy() const { return Planning.has_value(); }
    // Gives up a plan that waits for a drive. False where there is none.
    bool StopPlanning();

    // What goes on, in one line; empty for nothing.
    std::string StatusText() const;
    // What is to have the terminal, once: the name of the environment's variable that names the
    // program, what takes its place where that is empty, and the file.
    std::optional<FileProgram> TakeProgram() { return std::exchange(Program, std::nullopt); }
    void Say(std::string Title, std::vector<std::string> Sentences);
    // Whether the user wants to leave, and has confirmed that where transfers run.
    bool WantsToLeave() const { return bLeaves; }

private:
    bool TakeLetter(char Letter);
    bool TakeFunctionKey(int Number);
    void Transfer(bool bMove);
    void BeginTransfer(TransferRequest Request, bool bOutOfSight);
    void StartPlanned();
    void UnmarkBegun();
    void Mark(bool bMark);
    void GoToPlace();
    void Open(const char* Variable, const char* Otherwise);
    void Leave();

    FilePanes& Panes;
    EntryCommands& Entries;
    RunList& Runs;
    RunDialogs& RunsShown;
    DialogStack& Stack;
    std::optional<PlanTask> Planning;
    // The pane that the plan was made in.
    Browser* PlannedIn = nullptr;
    bool bInBackground = false;
    // Of runs that have not begun to copy, by their numbers. The marks stay until then, for whoever
    // answers No to what a look has found.
    struct Marked {
        Browser* In;
        std::vector<std::filesystem::path> Entries;
    };
    std::map<std::uint64_t, Marked> MarkedFor;
    std::optional<FileProgram> Program;
    bool bLeaves = false;
};
