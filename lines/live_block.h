// The block of lines that shows a running job.

#pragma once

#include <string>
#include <vector>

#include "block_layout.h"
#include "progress_bar.h"
#include "progress_watch.h"
#include "tarvanetransfer.h"

// Lays out the frames of one job.
class LiveBlock {
public:
    explicit LiveBlock(BarCells CellsToUse) : Cells(CellsToUse) {}

    // The engine's texts as they are, cleaned and wrapped, with a bar for the whole and one for the
    // file, and what Claims adds. No percentage reaches 100 before the job has succeeded. The hint,
    // which names the key to cancel, is left out once the job has finished. At most Size.Rows
    // lines.
    std::vector<ScreenLine> Lines(const TarvaneTransferUiSnapshot& Snapshot,
                                  const ProgressClaims& Claims, TerminalSize Size);

private:
    BlockPart SteadyPathPart(int Importance, const std::string& PathText, int Width);

    const BarCells Cells;
    // In columns, of all paths so far.
    int WidestPath = 0;
};
