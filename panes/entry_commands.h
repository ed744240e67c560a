// What is done to the entries of a pane where they are: made, renamed, deleted.

#pragma once

#include "dialog_stack.h"
#include "entry_work.h"
#include "file_panes.h"

#include <filesystem>
#include <optional>
#include <string>

// One piece of work at a time.
//
// Threads: one.
class EntryCommands {
public:
    // Both outlive this.
    EntryCommands(FilePanes& PanesToUse, DialogStack& StackToUse)
        : Panes(PanesToUse), Stack(StackToUse) {}

    // Each opens the dialog that asks for it, where it can be done.
    void MakeDirectory();
    void Rename();
    void Delete();

    // Goes on with what was begun.
    void Attend();
    bool IsBusy() const { return Work.has_value(); }
    // How far that is; empty for nothing.
    std::string StatusText() const;

private:
    void Begin(EntryWork NewWork, std::string Doing);
    void ShowWorkDone();

    FilePanes& Panes;
    DialogStack& Stack;
    std::optional<EntryWork> Work;
    // "Delete".
    std::string WorkText;
    // Where the cursor goes when it is done: an entry, and the directory that holds it.
    std::string CursorOn;
    std::filesystem::path CursorIn;
};
