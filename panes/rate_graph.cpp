#include "rate_graph.h"

#include "size_text.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace {

// "1024.0 KB/s" and the blank before it.
constexpr int kLabelColumns = 12;
// A second without a sample of its own may be one that a frame came too late for.
constexpr std::uint64_t kLongestGapToFill = 2;

// What fills a cell from below, from nothing to all of it.
const std::vector<std::string>& CellSteps(bool bUtf8) {
    static const std::vector<std::string> blocks = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    static const std::vector<std::string> ascii = {" ", ".", ":", "#"};
    return bUtf8 ? blocks : ascii;
}

// In steps of cells; more than nothing is at least one step.
std::uint64_t Height(std::uint64_t Rate, std::uint64_t Highest, std::uint64_t StepsInAll) {
    const double part = static_cast<double>(Rate) / static_cast<double>(Highest);
    const auto steps =
        static_cast<std::uint64_t>(std::lround(part * static_cast<double>(StepsInAll)));
    return Rate == 0 ? 0 : std::max<std::uint64_t>(steps, 1);
}

} // namespace

void RateHistory::Add(std::uint64_t BytesPerSecond, TimePoint Now) {
    if (!Begin) {
        Begin = Now;
    }
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(Now - *Begin);
    const auto second = static_cast<std::uint64_t>(whole.count());
    if (second > Current) {
        EndSecond(second - Current);
        Current = second;
    }
    Sum += BytesPerSecond;
    ++Count;
}

void RateHistory::EndSecond(std::uint64_t SecondsLater) {
    const std::uint64_t rate = Sum / std::max<std::uint64_t>(Count, 1);
    // In a longer gap the program was stopped, and the transfer with it.
    const std::uint64_t inGap = SecondsLater <= kLongestGapToFill ? rate : 0;
    Whole.push_back(rate);
    const std::uint64_t missing = std::min<std::uint64_t>(SecondsLater - 1, kSeconds);
    Whole.insert(Whole.end(), missing, inGap);
    while (Whole.size() > kSeconds) {
        Whole.pop_front();
    }
    Sum = 0;
    Count = 0;
}

void DrawRateGraph(Screen& On, const Area& Where, const RateHistory& Rates) {
    const auto room = static_cast<std::size_t>(std::max(0, Where.Columns - kLabelColumns));
    const std::size_t columns = std::min(room, RateHistory::kSeconds);
    const std::deque<std::uint64_t>& seconds = Rates.Seconds();
    const std::size_t shown = std::min(columns, seconds.size());
    const auto begin = seconds.end() - static_cast<std::ptrdiff_t>(shown);
    const std::uint64_t highest = shown == 0 ? 0 : *std::max_element(begin, seconds.end());
    if (highest == 0) {
        return;
    }
    const std::vector<std::string>& steps = CellSteps(On.IsUtf8());
    const std::uint64_t stepsInCell = steps.size() - 1;
    const auto rows = static_cast<std::uint64_t>(Where.Rows);
    for (std::uint64_t row = 0; row < rows; ++row) {
        const std::uint64_t below = (rows - 1 - row) * stepsInCell;
        std::string line(columns - shown, ' ');
        for (auto second = begin; second != seconds.end(); ++second) {
            const std::uint64_t height = Height(*second, highest, rows * stepsInCell);
            line += steps[std::min(height - std::min(height, below), stepsInCell)];
        }
        On.Put(Where.Column, Where.Row + static_cast<int>(row), line, CellRole::BarDone);
    }
    On.Put(Where.Column + static_cast<int>(columns) + 1, Where.Row, SizeText(highest) + "/s",
           CellRole::Dialog);
}
