// Numbers and times as people read them, whatever the locale.

#pragma once

#include <cstdint>
#include <string>

// "12,345".
std::string NumberText(std::uint64_t Number);

// "1 entry", "12,345 entries".
std::string EntriesText(std::uint64_t Entries);

// "03:12", "1:03:12": as the engine writes a time in its own texts. Requires: it is not negative.
std::string DurationText(double Seconds);
