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

// At most Size.Rows lines, laid out for the window. Where the list of answers does not fit, the
// keys alone are shown and `?` shows the list.
QuestionScreen LayOutQuestion(const ConflictQuestion& Question, TerminalSize Size);
