// What is known of the directory that entries are to be put into.

#pragma once

#include "file_identity.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <vector>

struct DestinationFacts {
    std::filesystem::path Directory;
    bool bWritable = false;
    std::uint64_t Device = 0;
    // Entries can be renamed within one mount only.
    std::uint64_t MountId = 0;
    // False where renaming a directory may fail although source and destination share a mount.
    bool bRenamesDirectories = true;
    std::uint64_t BlockBytes = 1;
    // For users without privileges; none when the file system does not tell.
    std::optional<std::uint64_t> FreeBytes;
    std::uint64_t MaxFileBytes = std::numeric_limits<std::uint64_t>::max();
    // The directory and those above it, up to the root.
    std::vector<FileIdentity> Lineage;
};

// Requires: Directory exists.
DestinationFacts FactsOf(const std::filesystem::path& Directory);

// Whether entries can be created in a directory and removed from it.
bool MayChangeDirectory(const std::filesystem::path& Directory);

// Whether a move of Source to a free name in a destination can be a rename. When in doubt it
// cannot: then files are copied and removed one by one.
bool CanBeRenamed(const std::filesystem::path& Source, const DestinationFacts& Destination);
