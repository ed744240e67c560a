// What stands at the names of a destination directory, asked for one by one.

#pragma once

#include "destination_facts.h"
#include "owned_descriptor.h"
#include "status_record.h"
#include "taken_name.h"

#include <cstdint>
#include <optional>
#include <string>

// What one name of the destination is at the moment.
struct DestinationEntry {
    // Why that cannot be found out: an errno, or 0.
    int Error = 0;
    // Nothing when the name is free.
    std::optional<TakenEntry> Taken = {};

    // The members below follow links.
    std::optional<FileIdentity> Identity = {};
    std::uint64_t MountId = 0;
    bool bAppendOnly = false;
    mode_t Mode = 0;
    uid_t Owner = 0;
    gid_t Group = 0;
    timespec Modified{};
    // Of a regular file.
    std::optional<std::uint64_t> SizeBytes = {};
    std::uint64_t OccupiedBytes = 0;

    bool IsFree() const { return Error == 0 && !Taken; }
    bool IsDangling() const { return Taken && !Taken->LeadsTo; }
    std::optional<std::int64_t> ModifiedTicks() const;
    bool IsDirectory() const { return Taken && ::IsDirectory(*Taken); }
};

// Whether a link, the status of which cannot be found out for this reason, leads nowhere.
bool LeadsNowhere(int Error);

// Name is relative to the open directory Parent. Asks the system once, and twice more about a link:
// by name, so that it decides which names are equal, and so that nothing has to be kept of a
// directory of any size.
DestinationEntry LookAtDestination(int Parent, const char* Name);

// Nothing for a free name, and of a link that leads nowhere only that it is one.
std::optional<RecordedTarget> RecordedTargetOf(const DestinationEntry& There);

// A directory at the destination that the contents of a source directory go into.
struct DestinationPlace {
    std::string Path;
    const DestinationFacts* Facts = nullptr;
    // Otherwise it is made, and every name in it is free.
    bool bExists = false;
    std::optional<FileIdentity> Identity = {};

    // For LookAtDestination; -1 when it cannot be opened.
    OwnedDescriptor Open() const;
};

// A time as the engine's records have it; nothing when that cannot express it.
std::optional<std::int64_t> TicksOf(std::int64_t Seconds, std::int64_t Nanoseconds);
