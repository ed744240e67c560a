// One entry of a directory that is walked through, and what cannot be seen of it.

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

// Of a file that goes the way of its directory, nothing could be learned but the size, and that a
// disk cannot read the status, which the job's own scan finds before anything is touched.
bool SourceWalk::NeedsStatus(const WalkListing& Directory, unsigned char Type,
                             const DestinationEntry& There) const {
    if (Type != DT_REG || Scope == PreflightScope::Everything) {
        return true;
    }
    return Scope == PreflightScope::GuardsOnly
               ? !There.IsFree()
               : Directory.Fate == Treatment::Copied || !Directory.bSearchable;
}

// At most one status query on either side: none where the listing tells enough, and a directory's
// are made when it is entered.
void SourceWalk::LookAtEntry(WalkListing& InOutListing, const char* Name, unsigned char Type) {
    ++Control.EntriesSeen;
    Result.Entries += InOutListing.bSelected ? 1 : 0;
    if (Type == DT_DIR) {
        InOutListing.Subdirectories.Push(Name);
        return;
    }
    const bool bLink =
        Type == DT_LNK || (Type == DT_UNKNOWN && IsLinkIn(InOutListing.Descriptor, Name));
    const DestinationEntry there = InOutListing.LookThere(Name);
    const bool bKnown = Type != DT_REG && Type != DT_LNK && Type != DT_UNKNOWN;
    if (there.IsFree() && bKnown) {
        Files.AddSpecial(InOutListing, Name);
    } else if (NeedsStatus(InOutListing, Type, there)) {
        QueryEntry(InOutListing, Name, bLink, there);
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
        Result.Findings.AddStop(Kind::DanglingLink, InOutListing.PathOf(Name));
    } else if (error != 0) {
        Files.Count(InOutListing);
        AddUninspectable(InOutListing.PathOf(Name), error);
    } else if (S_ISDIR(status.st_mode)) {
        InOutListing.Subdirectories.PushQueried(
            {Name, StatusOf(InOutListing.Descriptor, Name, status), bLink, There});
    } else if (There.Error == 0) {
        Files.LookAt(InOutListing, Name, status, bLink, There);
    } else {
        Files.Count(InOutListing);
        AddUnseenDestination(InOutListing, Name, There.Error);
    }
}

DirectoryStatus SourceWalk::StatusOfOpen(const WalkListing& Directory) const {
    struct stat status {};
    ::fstat(Directory.Descriptor, &status);
    return StatusOf(AT_FDCWD, Directory.Path.c_str(), status);
}

DirectoryStatus SourceWalk::StatusOf(int Parent, const char* Name,
                                     const struct stat& Status) const {
    const bool bWritable = !bMove || Rights.MayAccess(Parent, Name, Status, W_OK | X_OK);
    return {IdentityOf(Status), bWritable};
}

// Ends even a job that would only rename, as its scan queries every entry.
void SourceWalk::AddUninspectable(const std::string& Path, int Error) {
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
    } else {
        AddUninspectable(Directory.Path, errno);
    }
}
