// What is done to the entries of a pane where they are: made, renamed, deleted.

#pragma once

#include "dialog_stack.h"
#include "entry_work.h"
#include "file_panes.h"
#include "key_guard.h"

#include <filesystem>
#include <optional>
#include <string>

// One piece of work at a time.
//
// Threads: one.
class EntryCommands {
public:
    using TimePoint = DialogStack::TimePoint;

    // All of them outlive this.
    EntryCommands(FilePanes& PanesToUse, DialogStack& StackToUse, KeyGuard& GuardOfNotices)
        : Panes(PanesToUse), Stack(StackToUse), Guard(GuardOfNotices) {}

    // Each opens the dialog that asks for it, where it can be done.
    void MakeDirectory();
    void Rename();
    void Delete();

    // Goes on with what was begun.
    void Attend(TimePoint Now);
    bool IsBusy() const { return Work.has_value(); }
    // Ends it where it is. False where there is none.
    bool Stop();
    // How far it is; empty for nothing.
    std::string StatusText() const;

private:
    void Begin(EntryWork NewWork, std::string Doing);
    void ShowWorkDone();

    FilePanes& Panes;
    DialogStack& Stack;
    KeyGuard& Guard;
    std::optional<EntryWork> Work;
    // "Delete".
    std::string WorkText;
    // Where the cursor goes when it is done: an entry, and the directory that holds it.
    std::string CursorOn;
    std::filesystem::path CursorIn;
};
