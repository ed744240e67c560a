// What stands at a taken name, told from the entry itself; the engine's record follows links.

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

#include "tarvanetransfer.h"

struct TakenEntry {
    enum class Kind {
        File,
        Directory,
        // A device, a pipe or a socket.
        Special,
    };
    // Links followed; nothing for a link that leads nowhere, or where nobody may look.
    std::optional<Kind> LeadsTo;
    bool bLink = false;
    // As the link says; empty when it is none.
    std::string LinkTarget = {};
    // A file that is no link and has hard links elsewhere, perhaps among the sources.
    bool bHasOtherNames = false;

    bool operator==(const TakenEntry&) const = default;
};

// Mode is that of a status for which links were followed.
TakenEntry::Kind KindByMode(mode_t Mode);

// Nothing when the name is free, or cannot be looked at. Asks the system once, and twice more about
// a link.
std::optional<TakenEntry> LookAtTakenEntry(const std::filesystem::path& Path);

// All that an answer to a taken name depends on. MakeTakenName fills it.
struct TakenName {
    TarvaneTransferConflict Conflict;
    TakenEntry Entry;
    // A file or special entry would take the place of a directory that contains it.
    bool bHoldsSource;
    // Links at the destination are followed.
    bool bFollowLinks;
    // A device, a pipe or a socket, which the engine refuses only after it has made room for it.
    bool bSourceIsSpecial = false;
};

inline bool IsDirectory(const TakenEntry& Entry) {
    return Entry.LeadsTo == TakenEntry::Kind::Directory;
}

// Whether overwriting removes the link itself, symbolic or hard, and nothing of what it leads to. A
// symbolic one that is followed to a directory is removed too: there is nothing to write through
// it.
inline bool ReplacesLink(const TakenName& Name) {
    if (Name.Entry.bHasOtherNames) {
        return !Name.bFollowLinks;
    }
    return Name.Entry.bLink && (!Name.bFollowLinks || IsDirectory(Name.Entry));
}

// A device, pipe or socket that would be written to or removed.
inline bool IsSpecialInTheWay(const TakenName& Name) {
    return Name.Entry.LeadsTo == TakenEntry::Kind::Special && !ReplacesLink(Name);
}

// Whether room would be made for what then is not copied.
inline bool MakesRoomInVain(const TakenName& Name) {
    return Name.bSourceIsSpecial && (ReplacesLink(Name) || IsDirectory(Name.Entry));
}

// Whether anybody may let something else take the name, a person included.
inline bool MayBeReplaced(const TakenName& Name) {
    return !Name.bHoldsSource && !IsSpecialInTheWay(Name);
}

// Looks at the disk only where something would take the place of a directory, and at a source
// without a size.
TakenName MakeTakenName(TarvaneTransferConflict Conflict, TakenEntry Entry, bool bFollowLinks);
