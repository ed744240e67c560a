// `tarvane [LEFT [RIGHT]]`: the file manager on a full screen.

#pragma once

#include "panes_request.h"
#include "run_outcome.h"
#include "terminal.h"

#include <string>

// Why there cannot be panes here, as a sentence like that of a usage error; empty when there can.
std::string WhyNoPanes();

// Shows the panes until somebody leaves, or a signal ends the program: then all transfers are
// canceled first. Returns how it has ended. Requires: EnsureUtf8Locale was called, and WhyNoPanes
// is empty.
RunOutcome RunPanes(const PanesRequest& Request, Terminal& Device, ExitStatusFunction ExitStatusOf);
