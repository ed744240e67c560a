// Making files for a test and describing what is on disk afterwards, so that whole trees compare.

#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// Everything below a directory: relative path -> "dir", "file CONTENTS", "link TARGET", "fifo",
// "socket" or "device". Contents longer than 64 bytes are shown as size and checksum.
using Tree = std::map<std::string, std::string>;

// Links are described, not followed. Throws when something below Root cannot be read.
Tree TreeOf(const std::filesystem::path& Root);

// Creates missing parents and replaces what the file held.
void WriteFile(const std::filesystem::path& Path, std::string_view Bytes);

std::string ReadFile(const std::filesystem::path& Path);

// Bytes without a short period, so that a misplaced block does not go unnoticed.
std::string PatternBytes(std::size_t Size);

// Sets the time of the last write, in seconds and nanoseconds since 1970.
void SetModifiedTime(const std::filesystem::path& Path, std::int64_t Seconds,
                     std::int64_t Nanoseconds = 0);

void MakeFifo(const std::filesystem::path& Path);

// Leaves a socket's name in the file system. Path must have at most 107 bytes.
void MakeSocket(const std::filesystem::path& Path);

// The entries of a directory in the order in which the system lists them, which is the order in
// which the engine meets them.
std::vector<std::filesystem::path> ListingOf(const std::filesystem::path& Directory);
