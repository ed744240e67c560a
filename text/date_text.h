// Dates as people read them.

#pragma once

#include <cstdint>
#include <string>

// "2024-03-07 14:05" in local time; SecondsSince1970 may be negative. Errors: empty for a moment
// that the calendar does not reach.
std::string DateText(std::int64_t SecondsSince1970);
// "2024-03-07 14:05:09".
std::string DateTextWithSeconds(std::int64_t SecondsSince1970);
