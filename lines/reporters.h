// The styles of progress: a live block, plain lines, JSON Lines.

#pragma once

#include "prompt.h"
#include "reporter.h"

#include <chrono>
#include <memory>

// Says when the next of a row of lines is due: at once, then after every interval.
class LineClock {
public:
    using Clock = std::chrono::steady_clock;

    explicit LineClock(double IntervalSeconds)
        : Interval(std::chrono::duration_cast<Clock::duration>(
              std::chrono::duration<double>(IntervalSeconds))) {}

    // True once for each line.
    bool TakeDue();

private:
    Clock::duration Interval;
    Clock::time_point Next;
};

// A block that is redrawn in place. Requires: the console can redraw.
std::unique_ptr<Reporter> MakeLiveOutput(Prompt& Console);
// Lines on the console.
std::unique_ptr<Reporter> MakeLinesOutput(Prompt& Console, double IntervalSeconds);
// Records on standard output.
std::unique_ptr<Reporter> MakeJsonOutput(double IntervalSeconds);
