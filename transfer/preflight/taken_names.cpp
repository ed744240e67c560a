#include "taken_names.h"

#include "entry_access.h"
#include "owned_descriptor.h"
#include "quoted.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/statfs.h>

namespace {

using Kind = PreflightFindingKind;

NameFate FateOf(const ConflictDecision& Decision) {
    switch (Decision.Outcome) {
    case ConflictDecision::Verdict::AskUser:
        return NameFate::Asked;
    case ConflictDecision::Verdict::Fail:
        return NameFate::Refused;
    case ConflictDecision::Verdict::Answer:
        break;
    }
    switch (Decision.Action) {
    case TarvaneTransferConflictAction::Merge:
        return NameFate::Merged;
    case TarvaneTransferConflictAction::Skip:
        return NameFate::Skipped;
    case TarvaneTransferConflictAction::Rename:
        return NameFate::Renamed;
    case TarvaneTransferConflictAction::CompareByContent:
        return NameFate::Compared;
    case TarvaneTransferConflictAction::Overwrite:
        return Decision.bReplacesLink ? NameFate::LinkReplaced : NameFate::Replaced;
    // The policy answers each name by itself.
    case TarvaneTransferConflictAction::MergeAll:
    case TarvaneTransferConflictAction::SkipAll:
    case TarvaneTransferConflictAction::OverwriteAll:
    case TarvaneTransferConflictAction::OverwriteAllOlder:
    case TarvaneTransferConflictAction::Cancel:
        break;
    }
    return NameFate::Refused;
}

// Which of the reasons for a refusal it is; a choice that refuses every taken name needs none.
Kind KindOfRefusal(const TakenName& Name, bool bRefusesAll) {
    if (!Name.Entry.LeadsTo) {
        return Kind::DanglingDestination;
    }
    if (bRefusesAll) {
        return Kind::TakenName;
    }
    if (Name.bHoldsSource) {
        return Kind::DestinationHoldsSource;
    }
    if (IsSpecialInTheWay(Name)) {
        return Kind::SpecialDestination;
    }
    if (ReplacesLink(Name) && MakesRoomInVain(Name)) {
        return Kind::SpecialEntry;
    }
    const bool bDirectory = Name.Conflict.Kind == TarvaneTransferConflictKind::Directory;
    return bDirectory == IsDirectory(Name.Entry) ? Kind::LinkAtDestination : Kind::UnequalKinds;
}

TarvaneTransferConflict RecordOf(const SourceSide& Source, const std::string& DestinationPath,
                                 const DestinationEntry& There) {
    TarvaneTransferConflict record;
    record.Kind = Source.bDirectory ? TarvaneTransferConflictKind::Directory
                                    : TarvaneTransferConflictKind::File;
    record.SourcePath = Source.Path;
    record.DestinationPath = DestinationPath;
    record.bSourceDirectory = Source.bDirectory;
    record.bDestinationDirectory = There.IsDirectory();
    record.bSourceHasSize = Source.SizeBytes.has_value();
    record.SourceSizeBytes = Source.SizeBytes.value_or(0);
    record.bDestinationHasSize = There.SizeBytes.has_value();
    record.DestinationSizeBytes = There.SizeBytes.value_or(0);
    record.bSourceHasModifiedTime = Source.ModifiedTicks.has_value();
    record.SourceModifiedTicks = Source.ModifiedTicks.value_or(0);
    record.bDestinationHasModifiedTime = There.ModifiedTicks().has_value();
    record.DestinationModifiedTicks = There.ModifiedTicks().value_or(0);
    return record;
}

// Whether names that differ in any byte are different there. Elsewhere two sources may meet at one
// name, which shows only when the second of them comes.
bool KeepsNamesApart(const std::string& Directory) {
    const OwnedDescriptor opened(::open(Directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct statfs fileSystem {};
    if (::fstatfs(opened.Get(), &fileSystem) != 0) {
        return false;
    }
    const auto type = fileSystem.f_type;
    const bool bByBytes = type == EXT4_SUPER_MAGIC || type == TMPFS_MAGIC ||
                          type == BTRFS_SUPER_MAGIC || type == F2FS_SUPER_MAGIC;
    unsigned int flags = 0;
    const bool bFlags = ::ioctl(opened.Get(), FS_IOC_GETFLAGS, &flags) == 0;
    return bByBytes && !(bFlags && (flags & FS_CASEFOLD_FL) != 0);
}

} // namespace

SourceSide SourceSideOf(std::string Path, const struct stat& Status) {
    SourceSide side{.Path = std::move(Path),
                    .bDirectory = S_ISDIR(Status.st_mode),
                    .Mode = Status.st_mode,
                    .Owner = Status.st_uid,
                    .Group = Status.st_gid};
    if (S_ISREG(Status.st_mode)) {
        side.SizeBytes = static_cast<std::uint64_t>(Status.st_size);
    }
    side.ModifiedTicks = TicksOf(Status.st_mtim.tv_sec, Status.st_mtim.tv_nsec);
    return side;
}

NameFate TakenNames::Decide(const SourceSide& Source, const std::string& DestinationPath,
                            const DestinationEntry& There) {
    if (There.IsFree()) {
        return NameFate::Free;
    }
    const NameFate fate = There.IsDangling() && Rules.bFollowLinks
                              ? DecideThroughDangling(Source, DestinationPath)
                              : DecideTaken(Source, DestinationPath, There);
    Count(fate);
    bOnlyFiles = bOnlyFiles && IsOnlyFile(Source, DestinationPath, There, fate);
    return fate;
}

bool TakenNames::SkipsFilesAt(const DestinationEntry& There) const {
    return Rules.ForFiles == FileConflictChoice::Skip && There.Taken && !There.Taken->bLink &&
           There.Taken->LeadsTo == TakenEntry::Kind::File;
}

void TakenNames::Enter(const DestinationFacts& Directory) {
    const bool bReplaces = Rules.ForFiles == FileConflictChoice::Overwrite ||
                           Rules.ForFiles == FileConflictChoice::Older;
    bOnlyFiles = bReplaces && KeepsNamesApart(Directory.Directory);
    MountId = Directory.MountId;
}

bool TakenNames::IsOnlyFile(const SourceSide& Source, const std::string& DestinationPath,
                            const DestinationEntry& There, NameFate Fate) const {
    if (!There.Taken || There.Taken->bLink || There.MountId != MountId) {
        return false;
    }
    if (Source.bDirectory) {
        return Fate == NameFate::Merged && KeepsNamesApart(DestinationPath);
    }
    const bool bMadePrivate =
        bCarriesModes && Fate == NameFate::Replaced &&
        IsMoreOpen({.Mode = There.Mode, .Owner = There.Owner, .Group = There.Group},
                   {.Mode = Source.Mode, .Owner = Source.Owner, .Group = Source.Group});
    return Source.SizeBytes && There.SizeBytes && !There.Taken->bHasOtherNames && !bMadePrivate;
}

// The engine takes the name for free, but no directory can be made through a link.
NameFate TakenNames::DecideThroughDangling(const SourceSide& Source,
                                           const std::string& DestinationPath) {
    if (!Source.bDirectory) {
        return NameFate::Free;
    }
    Result.Findings.AddStop(Kind::DanglingDestination, DestinationPath,
                            "cannot create directory " + Quoted(DestinationPath) +
                                " through dangling symlink");
    return NameFate::Refused;
}

NameFate TakenNames::DecideTaken(const SourceSide& Source, const std::string& DestinationPath,
                                 const DestinationEntry& There) {
    const TakenName name =
        MakeTakenName(RecordOf(Source, DestinationPath, There), *There.Taken, Rules.bFollowLinks);
    const ConflictDecision decision = Policy.Decide(name);
    const NameFate fate = FateOf(decision);
    if (fate == NameFate::Refused) {
        const bool bRefusesAll = Source.bDirectory
                                     ? Rules.ForDirectories == DirectoryConflictChoice::Fail
                                     : Rules.ForFiles == FileConflictChoice::Fail;
        const Kind kind = KindOfRefusal(name, bRefusesAll);
        Result.Findings.AddStop(kind, kind == Kind::SpecialEntry ? Source.Path : DestinationPath,
                                decision.Sentence);
    }
    return fate;
}

void TakenNames::Count(NameFate Fate) {
    TakenNameCounts& counts = Result.Taken;
    switch (Fate) {
    case NameFate::Free:
        break;
    case NameFate::Merged:
        ++counts.Merged;
        break;
    case NameFate::Replaced:
    case NameFate::LinkReplaced:
        ++counts.Replaced;
        break;
    case NameFate::Skipped:
        ++counts.Skipped;
        break;
    case NameFate::Renamed:
        ++counts.Renamed;
        break;
    case NameFate::Compared:
        ++counts.Compared;
        break;
    case NameFate::Asked:
        ++counts.Asked;
        break;
    case NameFate::Refused:
        ++counts.Refused;
        break;
    }
}
