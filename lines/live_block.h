// The block of lines that shows a running job.

#pragma once

#include <string>
#include <vector>

#include "block_layout.h"
#include "progress_watch.h"
#include "tarvanetransfer.h"

// The lines for a running job: the engine's texts as they are, cleaned and wrapped, with a bar for
// the whole and one for the file, and what Claims adds. No percentage reaches 100 before the job
// has succeeded. The hint, which names the key to cancel, is left out once the job has finished. At
// most Size.Rows lines.
std::vector<ScreenLine> LiveBlockLines(const TarvaneTransferUiSnapshot& Snapshot,
                                       const ProgressClaims& Claims, TerminalSize Size);

// "[######....] 13%", at most Width columns; only the percentage where there is no room for a bar.
std::string BarText(int Percent, int Width);
