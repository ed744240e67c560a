#include "preflight_walk.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace {

std::string Join(const std::string& Directory, const std::string& Name) {
    return Directory.empty() || Directory.ends_with('/') ? Directory + Name
                                                         : Directory + "/" + Name;
}

bool IsLink(int Parent, const char* Name) {
    char target = 0;
    return ::readlinkat(Parent, Name, &target, sizeof(target)) >= 0;
}

bool Contains(const std::vector<FileIdentity>& Identities, const FileIdentity& Wanted) {
    return std::find(Identities.begin(), Identities.end(), Wanted) != Identities.end();
}

std::uint64_t RoundUp(std::uint64_t Bytes, std::uint64_t BlockBytes) {
    const std::uint64_t rest = Bytes % BlockBytes;
    return rest == 0 ? Bytes : Bytes + (BlockBytes - rest);
}

} // namespace

SourceWalk::SourceWalk(PreflightResult& ResultToFill, PreflightControl& ControlToUse)
    : Result(ResultToFill), Control(ControlToUse) {}

std::uint64_t SourceWalk::Walk(const std::filesystem::path& Source, const WalkRules& ItemRules) {
    Rules = ItemRules;
    const CopyTotals before = Copied;
    const std::string noDirectory;
    Listing top{.Path = noDirectory, .Descriptor = AT_FDCWD, .bSelected = true};
    LookAtEntry(top, Source.c_str(), DT_UNKNOWN);
    WalkSubdirectories(top);
    Result.CopiedEntries += Copied.Entries - before.Entries;
    Result.CopiedBytes += Copied.Bytes - before.Bytes;
    return Copied.BlockBytes - before.BlockBytes;
}

bool SourceWalk::RemovesUnselected() const {
    return !std::includes(SelectedDirectories.begin(), SelectedDirectories.end(),
                          RemovedTargets.begin(), RemovedTargets.end());
}

// Lists the whole directory before it goes deeper, so that only one directory is open at a time.
void SourceWalk::WalkDirectory(const std::string& Path,
                               const std::optional<DirectoryStatus>& KnownStatus, bool bSelected) {
    Listing listing{.Path = Path, .bSelected = bSelected};
    if (ListDirectory(listing, KnownStatus)) {
        WalkSubdirectories(listing);
        Chain.pop_back();
    }
}

// False when there is nothing to go into; otherwise the directory has been added to Chain.
bool SourceWalk::ListDirectory(Listing& InOutListing,
                               const std::optional<DirectoryStatus>& KnownStatus) {
    DirectoryReader reader(InOutListing.Path, ListingBuffer);
    if (reader.Error() != 0) {
        AddUnopenable(InOutListing.Path, reader.Error());
        return false;
    }
    InOutListing.Descriptor = reader.Descriptor();
    const DirectoryStatus directory = KnownStatus ? *KnownStatus : StatusOfOpen(InOutListing);
    Chain.push_back(directory.Identity);
    if (Rules.bRemoved && InOutListing.bSelected) {
        SelectedDirectories.insert(directory.Identity);
    }
    while (const dirent64* entry = IsStopped() ? nullptr : reader.Next()) {
        LookAtEntry(InOutListing, entry->d_name, entry->d_type);
    }
    if (reader.Error() != 0) {
        AddUninspectable(InOutListing.Path, reader.Error());
    }
    if (!directory.bWritable && InOutListing.Entries > 0) {
        Result.Findings.AddStop(PreflightFindingKind::UnwritableSourceDirectory, InOutListing.Path);
    }
    return true;
}

void SourceWalk::WalkSubdirectories(const Listing& Directory) {
    for (const Subdirectory& subdirectory : Directory.Subdirectories) {
        if (IsStopped()) {
            return;
        }
        const std::string path = Join(Directory.Path, subdirectory.Name);
        if (subdirectory.Status &&
            Contains(Rules.DestinationLineage, subdirectory.Status->Identity)) {
            Result.Findings.AddStop(PreflightFindingKind::DestinationInsideSource, path);
        } else if (!subdirectory.bLink) {
            WalkDirectory(path, subdirectory.Status, Directory.bSelected);
        } else if (!Rules.bRenamed) {
            FollowLink(path, *subdirectory.Status);
        }
    }
}

void SourceWalk::FollowLink(const std::string& Path, const DirectoryStatus& Target) {
    if (Contains(Chain, Target.Identity)) {
        Result.Findings.AddStop(PreflightFindingKind::LinkCycle, Path);
        return;
    }
    if (Rules.bRemoved) {
        Result.Findings.Add({.Kind = PreflightFindingKind::LinkToDirectoryOnMove, .Path = Path});
        RemovedTargets.insert(Target.Identity);
    } else {
        Result.Findings.Add({.Kind = PreflightFindingKind::LinkToDirectory, .Path = Path});
    }
    const auto known = Followed.find(Target.Identity);
    if (known != Followed.end()) {
        Copied.Entries += known->second.Entries;
        Copied.Bytes += known->second.Bytes;
        Copied.BlockBytes += known->second.BlockBytes;
        return;
    }
    const CopyTotals before = Copied;
    constexpr bool bSelected = false;
    WalkDirectory(Path, Target, bSelected);
    Followed[Target.Identity] = {Copied.Entries - before.Entries, Copied.Bytes - before.Bytes,
                                 Copied.BlockBytes - before.BlockBytes};
}

// At most one status query: none where the listing tells enough, and a directory's is made when it
// is open.
void SourceWalk::LookAtEntry(Listing& InOutListing, const char* Name, unsigned char Type) {
    ++Control.EntriesSeen;
    ++InOutListing.Entries;
    Result.Entries += InOutListing.bSelected ? 1 : 0;
    Copied.Entries += Rules.bRenamed ? 0 : 1;
    if (Type == DT_DIR) {
        InOutListing.Subdirectories.push_back({Name, std::nullopt, false});
    } else if (Type == DT_REG || Type == DT_LNK || Type == DT_UNKNOWN) {
        const bool bLink =
            Type == DT_LNK || (Type == DT_UNKNOWN && IsLink(InOutListing.Descriptor, Name));
        QueryEntry(InOutListing, Name, bLink);
    } else {
        AddSpecial(Join(InOutListing.Path, Name));
    }
}

void SourceWalk::QueryEntry(Listing& InOutListing, const char* Name, bool bLink) {
    struct stat status {};
    const int error = ::fstatat(InOutListing.Descriptor, Name, &status, 0) == 0 ? 0 : errno;
    if (bLink && (error == ENOENT || error == ENOTDIR || error == ELOOP)) {
        Result.Findings.AddStop(PreflightFindingKind::DanglingLink, Join(InOutListing.Path, Name));
    } else if (error != 0) {
        AddUninspectable(Join(InOutListing.Path, Name), error);
    } else if (InOutListing.Path.empty() && IdentityOf(status) == Rules.Destination) {
        Result.Findings.AddStop(PreflightFindingKind::SourceIsDestination, Name);
    } else if (S_ISREG(status.st_mode)) {
        LookAtFile(InOutListing, Name, status, bLink);
    } else if (S_ISDIR(status.st_mode)) {
        InOutListing.Subdirectories.push_back(
            {Name, StatusOf(InOutListing.Descriptor, Name, status), bLink});
    } else if (!bLink) {
        AddSpecial(Join(InOutListing.Path, Name));
    }
}

void SourceWalk::LookAtFile(const Listing& Directory, const char* Name, const struct stat& Status,
                            bool bLink) {
    const auto size = static_cast<std::uint64_t>(Status.st_size);
    // The engine counts no bytes of a link that is an item of its own.
    const bool bLinkAsItem = bLink && Directory.Path.empty();
    Result.Bytes += Directory.bSelected && !bLinkAsItem ? size : 0;
    if (Rules.bRenamed) {
        return;
    }
    Copied.Bytes += size;
    // Moved within one file system, a file takes no more room than it leaves.
    const bool bMakesRoom = Rules.bRemoved && !bLink && Status.st_dev == Rules.DestinationDevice;
    Copied.BlockBytes += bMakesRoom ? 0 : RoundUp(size, Rules.BlockBytes);
    if (!Rights.MayAccess(Directory.Descriptor, Name, Status, R_OK)) {
        Result.Findings.AddStop(PreflightFindingKind::UnreadableFile, Join(Directory.Path, Name));
    }
    if (size > Rules.MaxFileBytes) {
        Result.Findings.Add({.Kind = PreflightFindingKind::FileTooLarge,
                             .Path = Join(Directory.Path, Name),
                             .bStopsJob = true,
                             .NeededBytes = size,
                             .AvailableBytes = Rules.MaxFileBytes});
    }
}

SourceWalk::DirectoryStatus SourceWalk::StatusOfOpen(const Listing& Directory) const {
    struct stat status {};
    ::fstat(Directory.Descriptor, &status);
    return StatusOf(AT_FDCWD, Directory.Path.c_str(), status);
}

SourceWalk::DirectoryStatus SourceWalk::StatusOf(int Parent, const char* Name,
                                                 const struct stat& Status) const {
    const bool bWritable = !Rules.bRemoved || Rights.MayAccess(Parent, Name, Status, W_OK | X_OK);
    return {IdentityOf(Status), bWritable};
}

bool SourceWalk::IsStopped() {
    Result.bCanceled = Result.bCanceled || Control.bStopRequested;
    return Result.bCanceled;
}

// Only a copy refuses them.
void SourceWalk::AddSpecial(const std::string& Path) {
    if (!Rules.bRenamed) {
        Result.Findings.AddStop(PreflightFindingKind::SpecialEntry, Path);
    }
}

// Ends even a job that would only rename, as its scan queries every entry.
void SourceWalk::AddUninspectable(const std::string& Path, int Error) {
    Result.Findings.AddStop(PreflightFindingKind::UninspectableEntry, Path,
                            std::generic_category().message(Error));
}

// A directory that must not be opened is passed over, but the copy has to see that it is there.
void SourceWalk::AddUnopenable(const std::string& Path, int Error) {
    struct stat status {};
    if (Error != EACCES) {
        AddUninspectable(Path, Error);
    } else if (Rules.bRenamed) {
        return;
    } else if (::stat(Path.c_str(), &status) == 0) {
        Result.Findings.Add({.Kind = PreflightFindingKind::UnreadableDirectory, .Path = Path});
    } else {
        AddUninspectable(Path, errno);
    }
}
