// How the question about a taken name is laid out.

#pragma once

#include <vector>

#include "block_drawer.h"
#include "block_layout.h"
#include "conflict_question.h"

struct QuestionScreen {
    std::vector<ScreenLine> Lines;
    BlockCursor Cursor;
};

// At most Size.Rows lines, laid out for the window. Where there is no room for all, the paths
// become shorter, then the list of answers becomes denser, then `?` shows what had to go: what
// stands at the paths, or, in a very small window, the list.
QuestionScreen LayOutQuestion(const ConflictQuestion& Question, TerminalSize Size);
