#include "progress_bar.h"

#include <algorithm>

namespace {

constexpr int kMostCells = 100;
constexpr int kFewestCellsBesideALabel = 10;
// The brackets, a blank and "100%".
constexpr int kRoomForTheRest = 7;
constexpr int kEighths = 8;

std::string Repeated(const std::string& Cell, int Count) {
    std::string cells;
    for (int i = 0; i < Count; ++i) {
        cells += Cell;
    }
    return cells;
}

// The bar and the number beside it say the same.
int FilledEighths(const ProgressBar& Bar, int Cells) {
    constexpr int kWhole = 10000;
    const int least = Bar.Percent * kWhole / 100;
    const int most = std::min(least + kWhole / 100 - 1, kWhole);
    const int filled = std::clamp(static_cast<int>(Bar.Fraction * kWhole), least, most);
    return Cells * kEighths * filled / kWhole;
}

// U+2588 is a full block, U+2589 has seven eighths, U+258F one.
std::string PartialBlock(int Eighths) {
    constexpr int kLastByteOfFullBlock = 0x88;
    return std::string("\xE2\x96") + static_cast<char>(kLastByteOfFullBlock + kEighths - Eighths);
}

} // namespace

ScreenLine BarLine(const ProgressBar& Bar, BarCells Cells, int Width) {
    const std::string percentage = std::to_string(Bar.Percent) + "%";
    const int room = Width - kRoomForTheRest;
    const int roomBesideLabel = room - static_cast<int>(Bar.Label.size());
    const bool bLabel = roomBesideLabel >= kFewestCellsBesideALabel;
    const int cells = std::min(kMostCells, bLabel ? roomBesideLabel : room);
    if (cells < 1) {
        return {percentage};
    }
    const int eighths = FilledEighths(Bar, cells);
    const int full = eighths / kEighths;
    const bool bBlocks = Cells == BarCells::Blocks;
    const int partial = bBlocks ? eighths % kEighths : 0;
    const std::string filled = Repeated(bBlocks ? PartialBlock(kEighths) : "#", full) +
                               (partial > 0 ? PartialBlock(partial) : "");
    const int rest = cells - full - (partial > 0 ? 1 : 0);
    const std::string before = (bLabel ? Bar.Label : "") + "[";
    return {before + filled + Repeated(bBlocks ? " " : ".", rest) + "] " + percentage,
            {{before.size(), before.size() + filled.size(), TextStyle::Bar}}};
}
