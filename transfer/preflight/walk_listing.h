// One source directory on the way of a walk, with the directory that its entries go into.

#pragma once

#include "destination_side.h"
#include "file_identity.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <optional>
#include <string>
#include <string_view>

// What is going to happen to entries. Only those that are copied, or removed after that, can end
// the job in another way than its count.
enum class Treatment {
    Copied,
    // With the whole item.
    Renamed,
    Skipped,
};

// What is known of a source directory.
struct DirectoryStatus {
    FileIdentity Identity;
    // Whether entries can be removed from it; only looked at when they are going to be.
    bool bWritable = true;
    RecordedStatus Recorded = {};
};

struct Subdirectory {
    std::string Name;
    // Known when it had to be queried to be recognised as a directory.
    std::optional<DirectoryStatus> Status = {};
    bool bLink = false;
    // Known when it was looked at before.
    std::optional<DestinationEntry> There = {};
};

// The subdirectories of one directory in the order of its listing. There may be very many, so that
// only the names are kept of those that were not queried.
class SubdirectoryQueue {
public:
    void Push(std::string_view Name);
    void PushQueried(Subdirectory Queried);
    bool IsEmpty() const { return Length == 0; }
    bool IsSingle() const { return Length == 1; }
    // Requires: it is not empty.
    Subdirectory Pop();

private:
    std::size_t Length = 0;
    // With a NUL after each; an empty one stands for the next that was queried.
    std::deque<char> Names;
    std::list<Subdirectory> QueriedOnes;
};

struct WalkListing {
    // Empty above an item, the name of which is its full path then.
    std::string Path;
    DestinationPlace Destination;
    // The full destination of an item.
    std::string ItemDestination = {};
    // Reached without following a link.
    bool bSelected = true;
    Treatment Fate = Treatment::Copied;

    // What a record has of it beside its status. The name is in the listing above, or in its entry.
    std::string_view RecordedName = {};
    std::optional<RecordedTarget> There = {};

    // The directory above, where this is the only way down from it.
    OwnedDescriptor Above = OwnedDescriptor();
    // This one after it was listed, for the only way down.
    OwnedDescriptor Kept = OwnedDescriptor();

    // An entry was queried, so that all others can be.
    bool bSearchable = false;

    // Both open while the entries are listed.
    int Descriptor = -1;
    int DestinationDescriptor = -1;

    // Entries that are copied, and then removed on a move.
    std::uint64_t Copied = 0;
    // It is known by now whether anything can be created at the destination.
    bool bCreationChecked = false;
    SubdirectoryQueue Subdirectories = {};

    // For listing; -1 when it cannot be opened, as with a path that is too long. Lets go of Above,
    // the name in which is found sooner than a path through all levels of a deep tree.
    OwnedDescriptor Open();

    bool IsAboveItem() const { return Path.empty(); }
    std::string PathOf(const char* Name) const;
    std::string DestinationPathOf(const char* Name) const;
    std::string_view RecordedNameOf(const char* Name) const;
    // The lengths of both, for which no text has to be made, and of the name at the destination.
    std::size_t PathLengthOf(const char* Name) const;
    std::size_t DestinationPathLengthOf(const char* Name) const;
    std::size_t DestinationNameLengthOf(const char* Name) const;
    // What the copy of an entry would meet; nothing that is skipped or renamed meets anything.
    DestinationEntry LookThere(const char* Name) const;
};
