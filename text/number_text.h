// Numbers and times as people read them, whatever the locale.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// "12,345".
std::string NumberText(std::uint64_t Number);

// "1 entry", "12,345 entries".
std::string EntriesText(std::uint64_t Entries);

// Adds "; 3 replaced" to a list, or ", 2 skipped" when something is in it; nothing for 0.
void AppendCount(std::string& InOutList, std::uint64_t Count, std::string_view What);

// "03:12", "1:03:12": as the engine writes a time in its own texts. Requires: it is not negative.
std::string DurationText(double Seconds);
