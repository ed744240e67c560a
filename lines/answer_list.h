// The answers to a question, with the keys that give them.

#pragma once

#include <string>
#include <vector>

#include "block_layout.h"

struct ListedAnswer {
    // "s or Enter".
    std::string Keys;
    std::string Label;
};

// One answer a line, the labels below each other; the same as FlowingAnswers where the window is
// too narrow for that. No word is broken that a line has room for.
BlockPart AnswerTable(int Importance, const std::vector<ListedAnswer>& Answers, int Width);

// As many answers in a line as fit.
BlockPart FlowingAnswers(int Importance, const std::vector<ListedAnswer>& Answers, int Width);
