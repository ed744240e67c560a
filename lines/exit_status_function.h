// The program's exit status for an outcome; the numbers are the program's own.

#pragma once

#include "run_outcome.h"

using ExitStatusFunction = int (*)(const RunOutcome& Outcome);
