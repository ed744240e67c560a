// How fast a transfer was during the last minute, as a small graph.

#pragma once

#include "screen.h"
#include "surface.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

// The rate of every whole second of the last minute. It goes on while nobody looks, so it lives as
// long as the transfer and not as long as a dialog.
class RateHistory {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr std::size_t kSeconds = 60;

    // Requires: Now is not before that of the call before.
    void Add(std::uint64_t BytesPerSecond, TimePoint Now);

    // The oldest first, each the mean of what was added in it. The second that runs is not among
    // them: a graph that changes once a second costs little even over a slow line.
    const std::deque<std::uint64_t>& Seconds() const { return Whole; }

private:
    void EndSecond(std::uint64_t SecondsLater);

    std::deque<std::uint64_t> Whole;
    std::optional<TimePoint> Begin;
    // The one that runs, from Begin on, and what was added in it.
    std::uint64_t Current = 0;
    std::uint64_t Sum = 0;
    std::uint64_t Count = 0;
};

// One column a second, the latest to the right; the highest rate that is drawn reaches the top and
// stands behind it. Where there is less room than a minute takes, the latest seconds are drawn.
void DrawRateGraph(Screen& On, const Area& Where, const RateHistory& Rates);
