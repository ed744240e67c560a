#include "file_look.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

using Kind = PreflightFindingKind;

struct FileLook::File {
    WalkListing& Directory;
    const char* Name;
    const struct stat& Status;
    bool bLink = false;
    const DestinationEntry& There;

    std::uint64_t SizeBytes() const { return static_cast<std::uint64_t>(Status.st_size); }
};

bool FileLook::LookAt(WalkListing& Directory, const char* Name, const struct stat& Status,
                      bool bLink, const DestinationEntry& There) {
    const bool bRegular = S_ISREG(Status.st_mode);
    const std::uint64_t bytes = bRegular ? static_cast<std::uint64_t>(Status.st_size) : 0;
    // The engine counts no bytes of a link that is an item of its own.
    const bool bLinkAsItem = bLink && Directory.IsAboveItem();
    const std::uint64_t countedBytes = Directory.bSelected && !bLinkAsItem ? bytes : 0;
    const std::uint64_t skippedBytes = Directory.bSelected ? countedBytes : bytes;
    Result.Bytes += countedBytes;
    if (Directory.Fate != Treatment::Copied) {
        CountSkipped(Directory, skippedBytes);
        return false;
    }
    if (There.Identity == IdentityOf(Status)) {
        CountCopied(Directory, bytes);
        Result.Findings.AddStop(Kind::SourceIsDestination, Directory.PathOf(Name));
        return false;
    }
    const File source{Directory, Name, Status, bLink, There};
    const NameFate fate = FateOf(source);
    if (fate == NameFate::Skipped || fate == NameFate::Refused) {
        CountSkipped(Directory, skippedBytes);
        return false;
    }
    CountCopied(Directory, bytes);
    Result.FollowedBytes += Directory.bSelected ? bytes - countedBytes : 0;
    if (bRegular) {
        LookAtCopy(source, fate);
    } else if (!bLink) {
        Result.Findings.AddStop(Kind::SpecialEntry, Directory.PathOf(Name));
    }
    return true;
}

// Makes no texts for a free name, as most are.
NameFate FileLook::FateOf(const File& Source) {
    if (Source.There.IsFree()) {
        return NameFate::Free;
    }
    return Names.Decide(SourceSideOf(Source.Directory.PathOf(Source.Name), Source.Status),
                        Source.Directory.DestinationPathOf(Source.Name), Source.There);
}

void FileLook::Skip(WalkListing& Directory) {
    Names.Skip();
    CountSkipped(Directory, 0);
}

void FileLook::AddSpecial(WalkListing& Directory, const char* Name) {
    Count(Directory);
    if (Directory.Fate == Treatment::Copied) {
        Result.Findings.AddStop(Kind::SpecialEntry, Directory.PathOf(Name));
    }
}

void FileLook::Count(WalkListing& Directory) {
    constexpr std::uint64_t kNoBytes = 0;
    if (Directory.Fate == Treatment::Copied) {
        CountCopied(Directory, kNoBytes);
    } else {
        CountSkipped(Directory, kNoBytes);
    }
}

void FileLook::CountCopied(WalkListing& Directory, std::uint64_t Bytes) {
    ++Directory.Copied;
    ++Result.CopiedEntries;
    Result.CopiedBytes += Bytes;
    Result.FollowedEntries += Directory.bSelected ? 0 : 1;
    Result.FollowedBytes += Directory.bSelected ? 0 : Bytes;
}

void FileLook::CountSkipped(const WalkListing& Directory, std::uint64_t Bytes) {
    if (Directory.Fate == Treatment::Renamed) {
        return;
    }
    (Directory.bSelected ? Result.SkippedEntries : Result.FollowedEntries) += 1;
    (Directory.bSelected ? Result.SkippedBytes : Result.FollowedBytes) += Bytes;
}

bool FileLook::FitsItsNames(const WalkListing& Directory, const char* Name) {
    if (Directory.PathLengthOf(Name) >= PATH_MAX ||
        Directory.DestinationPathLengthOf(Name) >= PATH_MAX) {
        Result.Findings.AddStop(Kind::PathTooLong, Directory.PathOf(Name));
        return false;
    }
    const std::uint64_t most = Directory.Destination.Facts->MaxNameBytes;
    if (Directory.DestinationNameLengthOf(Name) > most) {
        Result.Findings.Add({.Kind = Kind::NameTooLong,
                             .Path = Directory.PathOf(Name),
                             .bStopsJob = true,
                             .AvailableBytes = most});
        return false;
    }
    return true;
}

void FileLook::CheckCreation(WalkListing& Directory) {
    const DestinationPlace& place = Directory.Destination;
    if (!place.bExists || std::exchange(Directory.bCreationChecked, true)) {
        return;
    }
    const bool bFirst = Directory.IsAboveItem();
    const std::string path = bFirst ? place.Facts->Directory.native() : place.Path;
    const int error = bFirst ? place.Facts->WriteError : WhyUnchangeable(path);
    if (error != 0 && UnwritableDirectories.insert(path).second) {
        Result.Findings.AddStop(Kind::UnwritableDestination, path,
                                std::generic_category().message(error));
    }
}

void FileLook::LookAtCopy(const File& Source, NameFate Fate) {
    const WalkListing& directory = Source.Directory;
    const std::uint64_t most = directory.Destination.Facts->MaxFileBytes;
    if (!FitsItsNames(directory, Source.Name)) {
        return;
    }
    Record.AddFile(directory, Source.Name, Source.Status, Source.There);
    if (!Rights.MayAccess(directory.Descriptor, Source.Name, Source.Status, R_OK)) {
        Result.Findings.AddStop(Kind::UnreadableFile, directory.PathOf(Source.Name));
    }
    if (Source.SizeBytes() > most) {
        Result.Findings.Add({.Kind = Kind::FileTooLarge,
                             .Path = directory.PathOf(Source.Name),
                             .bStopsJob = true,
                             .NeededBytes = Source.SizeBytes(),
                             .AvailableBytes = most});
    }
    CheckOverwriting(Source, Fate);
    AddSpace(Source, Fate);
}

void FileLook::CheckOverwriting(const File& Source, NameFate Fate) {
    if (Fate == NameFate::Free || Fate == NameFate::Renamed || Fate == NameFate::LinkReplaced) {
        CheckCreation(Source.Directory);
        return;
    }
    if (!Source.There.SizeBytes) {
        return;
    }
    const std::string path = Source.Directory.DestinationPathOf(Source.Name);
    int error = Source.There.bAppendOnly ? EPERM : 0;
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        error = errno;
    }
    if (error != 0) {
        Result.Findings.Add({.Kind = Kind::UnwritableFile,
                             .Path = path,
                             .bStopsJob = Fate == NameFate::Replaced,
                             .Reason = std::generic_category().message(error)});
    }
}

void FileLook::AddSpace(const File& Source, NameFate Fate) {
    const DestinationFacts& facts = *Source.Directory.Destination.Facts;
    // Moved within one file system, a file takes no more room than it leaves.
    if (bMove && !Source.bLink && Source.Status.st_dev == facts.Device) {
        return;
    }
    Demand.Add(facts, SpaceDemand::NeedOf(Source.SizeBytes(), Fate, Source.There, facts));
}
