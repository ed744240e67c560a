// Progress as plain lines, for logs and for terminals that cannot redraw.

#pragma once

#include <string>

#include "progress_watch.h"
#include "tarvanetransfer.h"

// One line with the engine's texts: how much is done and how fast, or the stage while nothing is
// counted yet, followed by the claims. It is not cleaned for a screen.
std::string ProgressLine(const TarvaneTransferUiSnapshot& Snapshot, const ProgressClaims& Claims);
