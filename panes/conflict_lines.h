// What the question about a taken name says in a dialog, line by line.

#pragma once

#include <string>
#include <vector>

#include "conflict_question.h"
#include "screen.h"

struct DialogLine {
    enum class Kind {
        Text,
        // Where the new name is typed.
        NewName,
        // One of the lines that the buttons need.
        Buttons,
    };
    std::string CleanText = {};
    CellRole Role = CellRole::Dialog;
    Kind What = Kind::Text;
};

using DialogLines = std::vector<DialogLine>;

// What is shown below the question.
struct BelowConflict {
    // What the job is at, and how far; not cleaned for a screen.
    const std::string& JobStage;
    const std::string& JobDone;
    int ButtonRows = 1;
};

// "File already exists".
std::string ConflictDialogTitle(const TakenName& Name);

// As many as no path needs to be shortened for, and never fewer than usual.
int WantedColumns(const TakenName& Name);

// At most Size.Rows lines of at most Size.Columns columns. Where they are too few, paths are
// shortened, and then what matters least is left out.
DialogLines LinesOfConflict(const ConflictQuestion& Question, const BelowConflict& Below,
                            TerminalSize Size);
