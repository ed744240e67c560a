// Why a file could not be read or written, told from how things are now.

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

// All are empty when the reason does not show any more. Opening is tried, but only of regular files
// and without waiting, reading or writing, and of directories that are read.

std::string WhyUnreadable(const std::filesystem::path& Source);
std::string WhyNotOpenedForWriting(const std::filesystem::path& Destination);
// The file has been removed again; it would need this many bytes.
std::string WhyNotWritten(const std::filesystem::path& Destination, std::uint64_t NeededBytes);
