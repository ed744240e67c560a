// What a flush does to one file system, in a process of its own.

#pragma once

#include "owned_descriptor.h"
#include "worker_process.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

// What a path leads to: which mount of which file system.
struct MountIdentity {
    std::uint64_t Device = 0;
    std::uint64_t MountId = 0;

    bool operator==(const MountIdentity&) const = default;
};

// Nothing when the path does not exist.
std::optional<MountIdentity> MountIdentityOf(const std::filesystem::path& Path);

// For the input of a flush. A directory that must not be read is opened just far enough to be
// recognised.
OwnedDescriptor OpenForFlush(const std::filesystem::path& Directory);

struct FlushReply {
    // The errno of the failure, or 0.
    int Error = 0;
    // The device was told to empty its cache.
    bool bDevice = false;
    // The first path that leads to another mount than the one that was opened.
    std::optional<std::size_t> Displaced;
};

// Flushes the file system of the process's input, which is the first of Paths, opened before, and
// replies with a FlushReply. The other paths need not exist.
WorkerProcess::Work FlushOf(const std::vector<std::filesystem::path>& Paths);
