// What the last line of a run says beside the time that it took.

#pragma once

#include <regex>
#include <string>

// Text without ", in 03:12 (35.7 MB/s)", which only a run of a second or more has.
inline std::string WithoutTime(const std::string& Text) {
    static const std::regex time(R"(, in [0-9:]+( \([0-9.]+ [KMGT]?B/s\))?)");
    return std::regex_replace(Text, time, "");
}
