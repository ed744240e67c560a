#include "taken_name.h"

#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "tarvaneops.h"
#include "tarvanepane.h"

namespace fs = std::filesystem;

TakenEntry::Kind KindByMode(mode_t Mode) {
    if (S_ISDIR(Mode)) {
        return TakenEntry::Kind::Directory;
    }
    return S_ISREG(Mode) ? TakenEntry::Kind::File : TakenEntry::Kind::Special;
}

std::optional<TakenEntry> LookAtTakenEntry(const fs::path& Path) {
    struct stat status;
    if (lstat(Path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    TakenEntry entry;
    entry.bLink = S_ISLNK(status.st_mode);
    if (!entry.bLink) {
        entry.LeadsTo = KindByMode(status.st_mode);
        entry.bHasOtherNames = S_ISREG(status.st_mode) && status.st_nlink > 1;
        return entry;
    }
    std::error_code ec;
    entry.LinkTarget = fs::read_symlink(Path, ec).native();
    if (stat(Path.c_str(), &status) == 0) {
        entry.LeadsTo = KindByMode(status.st_mode);
    }
    return entry;
}

namespace {

// Of the entry itself: a link to a device is copied as a link.
bool IsSpecial(const std::string& Path) {
    struct stat status;
    return lstat(Path.c_str(), &status) == 0 && !S_ISLNK(status.st_mode) &&
           KindByMode(status.st_mode) == TakenEntry::Kind::Special;
}

} // namespace

TakenName MakeTakenName(TarvaneTransferConflict Conflict, TakenEntry Entry, bool bFollowLinks) {
    // A track's path is no path of the file system.
    const bool bFile = Conflict.Kind == TarvaneTransferConflictKind::File &&
                       !TarvaneIsCddaPath(Conflict.SourcePath);
    const bool bHoldsSource = bFile && IsDirectory(Entry) &&
                              TarvanePathIsInside(Conflict.DestinationPath, Conflict.SourcePath);
    const bool bSourceIsSpecial =
        bFile && !Conflict.bSourceHasSize && IsSpecial(Conflict.SourcePath);
    return {std::move(Conflict), std::move(Entry), bHoldsSource, bFollowLinks, bSourceIsSpecial};
}
