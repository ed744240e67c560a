// What a walk has to look at, entry by entry, and what it cannot see.

#include "preflight_walk.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

using Kind = PreflightFindingKind;

bool SourceWalk::IsLinkIn(int Parent, const char* Name) {
    char target = 0;
    return ::readlinkat(Parent, Name, &target, sizeof(target)) >= 0;
}

// There is nothing to guard where all names are free, nothing is removed and all can be read.
bool SourceWalk::IsWorthALook(const WalkListing& Directory) const {
    return Scope != PreflightScope::GuardsOnly ||
           (Directory.Fate == Treatment::Copied &&
            (Record.IsKept() || bMove || Directory.Destination.bExists ||
             !Rights.MayDoEverything()));
}

// Of a file that goes the way of its directory, or is skipped, nothing could be learned but the
// size, and that a disk cannot read the status, which the job's own scan finds before anything is
// touched.
bool SourceWalk::NeedsStatus(const WalkListing& Directory, const dirent64& Entry,
                             const DestinationEntry& There) const {
    if (Entry.d_type != DT_REG || Scope == PreflightScope::Everything) {
        return true;
    }
    const bool bGuardsOnly = Scope == PreflightScope::GuardsOnly;
    const bool bLeftOut = Directory.Fate != Treatment::Copied ||
                          (Names.SkipsFilesAt(There) && There.Identity->Inode != Entry.d_ino);
    return bLeftOut ? !bGuardsOnly && !Directory.bSearchable
                    : !bGuardsOnly || !There.IsFree() || Record.IsKept();
}

// At most one status query on either side: none where the listing tells enough, and a directory's
// are made when it is entered.
void SourceWalk::LookAtEntry(WalkListing& InOutListing, const dirent64& Entry) {
    const char* const name = Entry.d_name;
    const unsigned char type = Entry.d_type;
    ++Control.EntriesSeen;
    Result.Entries += InOutListing.bSelected ? 1 : 0;
    if (type == DT_DIR) {
        InOutListing.Subdirectories.Push(name);
        return;
    }
    const bool bLink =
        type == DT_LNK || (type == DT_UNKNOWN && IsLinkIn(InOutListing.Descriptor, name));
    const DestinationEntry there = InOutListing.LookThere(name);
    const bool bKnown = type != DT_REG && type != DT_LNK && type != DT_UNKNOWN;
    if (there.IsFree() && bKnown) {
        Files.AddSpecial(InOutListing, name);
    } else if (NeedsStatus(InOutListing, Entry, there)) {
        QueryEntry(InOutListing, name, bLink, there);
    } else if (!there.IsFree()) {
        Files.Skip(InOutListing);
    } else if (Scope != PreflightScope::GuardsOnly) {
        Files.Count(InOutListing);
    }
}

void SourceWalk::QueryEntry(WalkListing& InOutListing, const char* Name, bool bLink,
                            const DestinationEntry& There) {
    struct stat status {};
    const int error = ::fstatat(InOutListing.Descriptor, Name, &status, 0) == 0 ? 0 : errno;
    InOutListing.bSearchable = InOutListing.bSearchable || error == 0;
    if (bLink && LeadsNowhere(error)) {
        Files.Count(InOutListing);
        Record.NoteGap();
        Result.Findings.AddStop(Kind::DanglingLink, InOutListing.PathOf(Name));
    } else if (error != 0) {
        Files.Count(InOutListing);
        AddUninspectable(InOutListing.PathOf(Name), error);
    } else if (S_ISDIR(status.st_mode)) {
        InOutListing.Subdirectories.PushQueried(
            {Name, StatusOf(InOutListing.Descriptor, Name, status), bLink, There});
    } else if (There.Error == 0) {
        if (Files.LookAt(InOutListing, Name, status, bLink, There) && bLink) {
            Overtaken.LookAt(InOutListing.PathOf(Name));
        }
    } else {
        Files.Count(InOutListing);
        AddUnseenDestination(InOutListing, Name, There.Error);
    }
}

std::optional<DirectoryStatus> SourceWalk::StatusOfOpen(const WalkListing& Directory) const {
    struct stat status {};
    if (::fstat(Directory.Descriptor, &status) != 0) {
        return std::nullopt;
    }
    return StatusOf(AT_FDCWD, Directory.Path.c_str(), status);
}

DirectoryStatus SourceWalk::StatusOf(int Parent, const char* Name,
                                     const struct stat& Status) const {
    const bool bWritable = !bMove || Rights.MayAccess(Parent, Name, Status, W_OK | X_OK);
    return {IdentityOf(Status), bWritable, RecordedStatusOf(Status)};
}

// Ends even a job that would only rename, as its scan queries every entry.
void SourceWalk::AddUninspectable(const std::string& Path, int Error) {
    Record.NoteGap();
    Result.Findings.AddStop(Kind::UninspectableEntry, Path, std::generic_category().message(Error));
}

void SourceWalk::AddUnseenDestination(const WalkListing& Directory, const char* Name, int Error) {
    if (Files.FitsItsNames(Directory, Name)) {
        AddUninspectable(Directory.DestinationPathOf(Name), Error);
    }
}

// A directory that must not be opened is passed over, but the copy has to see that it is there.
void SourceWalk::AddUnopenable(const WalkListing& Directory, int Error) {
    struct stat status {};
    if (Error != EACCES) {
        AddUninspectable(Directory.Path, Error);
    } else if (Directory.Fate != Treatment::Copied) {
        return;
    } else if (::stat(Directory.Path.c_str(), &status) == 0) {
        Result.Findings.Add(
            {.Kind = bMove ? Kind::UnreadableDirectoryOnMove : Kind::UnreadableDirectory,
             .Path = Directory.Path});
        Record.NoteGap();
        Record.Enter(Directory, RecordedStatusOf(status));
        Record.Leave(Directory);
    } else {
        AddUninspectable(Directory.Path, errno);
    }
}
