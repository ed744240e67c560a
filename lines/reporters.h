// The styles of progress: a live block, plain lines, JSON Lines.

#pragma once

#include <memory>

#include "prompt.h"
#include "prompt_request.h"
#include "reporter.h"
#include "terminal.h"

// A block that is redrawn in place. Requires: the terminal can redraw.
std::unique_ptr<Reporter> MakeLiveReporter(Terminal& Screen, Prompt& Shown);
// Lines at the prompt, the first after an interval.
std::unique_ptr<Reporter> MakeLinesReporter(Terminal& Screen, Prompt& Shown,
                                            double IntervalSeconds);
// Records on standard output, one after every interval.
std::unique_ptr<Reporter> MakeJsonReporter(Terminal& Screen, double IntervalSeconds);

bool CanRedrawProgress(const Terminal& Screen);
// Reports in the style that is asked for or suits the terminal.
std::unique_ptr<Reporter> MakeReporter(const PromptRequest& Request, Terminal& Screen,
                                       Prompt& Shown);
