// What kind of storage holds a path.

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

struct StorageTraits {
    // These two are about the whole disk, or one of several, when the file system is on a
    // partition, an encrypted volume or an array.
    bool bRemovable = false;
    bool bUsb = false;
    bool bNetwork = false;
};

// All false when Path does not exist or nothing is known.
StorageTraits StorageOf(const std::filesystem::path& Path);

// Where sysfs describes the block device that holds Path; empty when none does.
std::filesystem::path BlockDeviceDirectoryOf(const std::filesystem::path& Path);

// How much has been written to a block device since the machine started; nothing when its
// directory does not tell.
std::optional<std::uint64_t> BytesWrittenTo(const std::filesystem::path& DeviceDirectory);
