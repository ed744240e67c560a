// What -v prints.

#pragma once

#include "conflict_tally.h"
#include "tarvanetransfer.h"

#include <string>
#include <string_view>

// "'a' -> 'b/a'": where an entry goes, as a line that is safe on a terminal and that a shell can
// read.
std::string VerboseLine(const TarvaneTransferItemPlan& Item);
// "'a' -> 'b/a': renamed to 'b/a-2'": the same for a taken name, with what became of it.
std::string VerboseLine(const SettledConflict& Settled);

// Text as one word for a shell: in single quotes, with what is not printable in $'...'.
std::string QuotedForShell(std::string_view Text);
