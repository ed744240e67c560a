// The end of a look, as bytes that pass from its process to ours.

#pragma once

#include "preflight_result.h"

#include <string>
#include <string_view>

struct PreflightEnd {
    PreflightResult Result;
    // Why the look has broken off; empty when it has not.
    std::string Failure;
};

std::string ReplyFrom(PreflightEnd End);

// A reply that is not whole, as that of a process that was killed, is the end of an interrupted
// look.
PreflightEnd EndFrom(std::string_view Reply);
