// What is known of the directories that entries are put into, or moved out of.

#pragma once

#include "file_identity.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <vector>

struct DestinationFacts {
    // The nearest one that exists.
    std::filesystem::path Directory;
    // The directory itself is not there yet.
    bool bMissing = false;
    // Why nothing can be created in Directory: an errno, or 0.
    int WriteError = 0;
    std::uint64_t Device = 0;
    // Entries can be renamed within one mount only.
    std::uint64_t MountId = 0;
    // False where renaming a directory may fail although source and destination share a mount.
    bool bRenamesDirectories = true;
    std::uint64_t BlockBytes = 1;
    // For this user; none when the file system does not tell.
    std::optional<std::uint64_t> FreeBytes;
    std::uint64_t MaxFileBytes = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t MaxNameBytes = std::numeric_limits<std::uint64_t>::max();
    // Directory and those above it, up to the root.
    std::vector<FileIdentity> Lineage;
};

DestinationFacts FactsOf(const std::filesystem::path& Wanted);

// The directory that an item is moved out of.
struct SourceDirectoryFacts {
    std::optional<FileIdentity> Identity;
    // Entries can be removed from it.
    bool bWritable = false;
    // Many share it, so that each entry is only its owner's, and that of the directory's Owner.
    bool bShared = false;
    std::uint64_t Owner = 0;
};

SourceDirectoryFacts SourceDirectoryFactsOf(const std::filesystem::path& Directory);

// Looks at each directory only once.
template <typename Facts, Facts (*Look)(const std::filesystem::path&)>
class KnownDirectories {
public:
    // The reference stays good.
    const Facts& At(const std::filesystem::path& Directory) {
        const auto known = Known.find(Directory);
        return known != Known.end() ? known->second
                                    : Known.emplace(Directory, Look(Directory)).first->second;
    }

private:
    std::map<std::filesystem::path, Facts> Known;
};

using KnownDestinations = KnownDirectories<DestinationFacts, FactsOf>;

// 0 when entries can be created in a directory and removed from it, otherwise the errno.
int WhyUnchangeable(const std::filesystem::path& Directory);

// Whether Source can be removed from its directory; an operand that has gone meanwhile can.
bool CanBeRemoved(const std::filesystem::path& Source, const SourceDirectoryFacts& SourceDirectory);

// Whether a move of Source out of SourceDirectory to a free name in a destination can be a rename.
// When in doubt it cannot: then files are copied and removed one by one.
bool CanBeRenamed(const std::filesystem::path& Source, const SourceDirectoryFacts& SourceDirectory,
                  const DestinationFacts& Destination);
