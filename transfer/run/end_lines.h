// What is to be said at the end of a run, line by line, whoever shows it.

#pragma once

#include "run_outcome.h"
#include "transfer_request.h"

#include <string>
#include <vector>

// Not cleaned for a screen.
struct EndLine {
    enum class Kind {
        // What has gone wrong: a sentence without a capital, a period or a line end.
        Problem,
        // What the line before is about.
        Detail,
        // Whole sentences.
        Done,
    };
    Kind What = Kind::Done;
    std::string Text = {};

    bool operator==(const EndLine&) const = default;
};

// Of a run that has not been flushed yet, or is not to be: what went wrong comes first, and then
// how far it got.
std::vector<EndLine> JobEndLines(const TransferRequest& Request, const RunOutcome& Outcome);

// What has become of its flush; nothing when there was none.
std::vector<EndLine> FlushEndLines(const RunOutcome& Outcome);
