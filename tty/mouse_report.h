// What a terminal reports of its mouse.

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "key_press.h"

// How a report starts behind Escape in the habit that we ask for, and in the one of terminals that
// do not know it: three bytes of any value come after that one.
constexpr std::string_view kMouseReport = "[<";
constexpr std::string_view kOldMouseReport = "[M";
constexpr std::size_t kOldMouseReportLength = 5;

bool IsMouseReport(std::string_view BehindEscape);

// Requires: IsMouseReport. Errors: nothing where no button of MousePress went down: for releases,
// moves, other buttons, and reports that are broken.
std::optional<KeyPress> KeyOfMouseReport(std::string_view BehindEscape);
