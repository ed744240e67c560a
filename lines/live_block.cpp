#include "live_block.h"

#include "progress_texts.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kLongestBar = 50;

int FilePercent(const TarvaneTransferUiSnapshot& Snapshot, const ProgressClaims& Claims) {
    // What has no bytes of its own gets the fraction of the whole from the engine.
    const auto percent = static_cast<int>(Snapshot.FileProgress01 * 100.0);
    return Snapshot.CurrentFileTotalBytes > 0
               ? std::clamp(percent, 0, Snapshot.bSucceeded ? 100 : 99)
               : std::clamp(percent, 0, Claims.Percent);
}

} // namespace

std::string BarText(int Percent, int Width) {
    const std::string percentage = std::to_string(Percent) + "%";
    constexpr int kRoomForBrackets = 3;
    constexpr int kRoomForPercentage = 4;
    const int cells = std::min(kLongestBar, Width - kRoomForBrackets - kRoomForPercentage);
    if (cells < 1) {
        return percentage;
    }
    const int filled = cells * Percent / 100;
    return '[' + std::string(static_cast<std::size_t>(filled), '#') +
           std::string(static_cast<std::size_t>(cells - filled), '.') + "] " + percentage;
}

std::vector<ScreenLine> LiveBlockLines(const TarvaneTransferUiSnapshot& Snapshot,
                                       const ProgressClaims& Claims, TerminalSize Size) {
    const int width = LayoutWidth(Size);
    const std::string hint = Snapshot.bFinished ? std::string() : Snapshot.HintText;
    // The file bar goes first, then the hint; the bar of the whole stays even in one row.
    std::vector<BlockPart> parts = {
        WordsPart(4, Snapshot.StageText, width),
        PathPart(3, Snapshot.PathText, width),
        WordsPart(5, Snapshot.OverallText, width),
        {9, {{BarText(Claims.Percent, width)}}},
        {1, {{BarText(FilePercent(Snapshot, Claims), width)}}},
        WordsPart(8, Snapshot.IoText, width),
        WordsPart(7, StalledText(Claims), width),
        WordsPart(6, WrongTotalsText(Claims), width),
        WordsPart(2, hint, width),
    };
    return FitToRows(std::move(parts), Size.Rows);
}
