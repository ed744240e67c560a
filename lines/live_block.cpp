#include "live_block.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "progress_texts.h"
#include "screen_text.h"

std::vector<ScreenLine> LiveBlock::Lines(const TarvaneTransferUiSnapshot& Snapshot,
                                         const ProgressClaims& Claims, TerminalSize Size) {
    const int width = LayoutWidth(Size);
    const std::string hint = Snapshot.bFinished ? std::string() : Snapshot.HintText;
    const ProgressBar all{"All  ", Claims.Percent, Snapshot.OverallProgress01};
    const ProgressBar file{"File ", FilePercent(Snapshot, Claims), Snapshot.FileProgress01};
    // The file bar goes first, then the hint; the bar of the whole stays even in one row.
    std::vector<BlockPart> parts = {
        WordsPart(4, Snapshot.StageText, width),
        SteadyPathPart(3, Snapshot.PathText, width),
        WordsPart(5, Snapshot.OverallText, width),
        {9, {BarLine(all, Cells, width)}},
        {1, {BarLine(file, Cells, width)}},
        WordsPart(8, Snapshot.IoText, width),
        InStyle(WordsPart(7, StalledText(Claims), width), TextStyle::Warning),
        WordsPart(6, WrongTotalsText(Claims), width),
        WordsPart(2, hint, width),
    };
    return FitToRows(std::move(parts), Size.Rows);
}

// As high as the widest path so far: a block that grew and shrank from file to file would have to
// be drawn whole every time.
BlockPart LiveBlock::SteadyPathPart(int Importance, const std::string& PathText, int Width) {
    BlockPart part = PathPart(Importance, PathText, Width);
    WidestPath = std::max(WidestPath, DisplayWidth(CleanForScreen(PathText)));
    const auto rows = static_cast<std::size_t>((WidestPath + Width - 1) / Width);
    part.Lines.resize(std::max(part.Lines.size(), rows));
    return part;
}
