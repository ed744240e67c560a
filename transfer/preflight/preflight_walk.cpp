#include "preflight_walk.h"

#include "full_path.h"

#include <fcntl.h>

#include <algorithm>
#include <utility>

using Kind = PreflightFindingKind;

namespace {

bool Contains(const std::vector<FileIdentity>& Identities, const FileIdentity& Wanted) {
    return std::find(Identities.begin(), Identities.end(), Wanted) != Identities.end();
}

} // namespace

SourceWalk::SourceWalk(const Parts& PartsToFill, const TarvaneTransferPlan& Plan,
                       PreflightScope Wanted)
    : Result(PartsToFill.Result), Control(PartsToFill.Control),
      Destinations(PartsToFill.Destinations), Names(PartsToFill.Names), bMove(Plan.bMove),
      Scope(Wanted), Record(PartsToFill.Record),
      Files(Result, Names, PartsToFill.Demand, Record, bMove),
      Links(Result, PartsToFill.Demand, bMove), Overtaken(Result, Plan, Names.Chosen()) {}

void SourceWalk::Walk(const std::filesystem::path& Source,
                      const std::filesystem::path& Destination) {
    const DestinationFacts& facts = Destinations.At(Destination.parent_path());
    const DestinationPlace parent{.Path = facts.Directory, .Facts = &facts, .bExists = true};
    WalkListing top{
        .Path = {}, .Destination = parent, .ItemDestination = Destination, .Descriptor = AT_FDCWD};
    const DestinationEntry there = top.LookThere(Source.c_str());
    if (bMove && there.IsFree() &&
        CanBeRenamed(Source, SourceDirectories.At(ParentOf(Source)), facts)) {
        top.Fate = Treatment::Renamed;
    }
    DestinationChain = facts.Lineage;
    Overtaken.EnterItem(Source);
    ++Control.EntriesSeen;
    ++Result.Entries;
    QueryEntry(top, Source.c_str(), IsLinkIn(AT_FDCWD, Source.c_str()), there);
    WalkSubdirectories(top);
    if (bMove && top.Copied > 0) {
        CheckRemoval(Source);
    }
}

void SourceWalk::CheckRemoval(const std::filesystem::path& Source) {
    const std::filesystem::path parent = ParentOf(Source);
    const SourceDirectoryFacts& facts = SourceDirectories.At(parent);
    if (!facts.bWritable) {
        if (UnwritableParents.insert(parent).second) {
            Result.Findings.AddStop(Kind::UnwritableSourceDirectory, parent);
        }
    } else if (!CanBeRemoved(Source, facts)) {
        Result.Findings.AddStop(Kind::UnremovableEntry, Source);
    }
}

void SourceWalk::WalkSubdirectories(WalkListing& Directory) {
    while (!Directory.Subdirectories.IsEmpty()) {
        const Subdirectory subdirectory = Directory.Subdirectories.Pop();
        const DestinationEntry there = subdirectory.There
                                           ? *subdirectory.There
                                           : Directory.LookThere(subdirectory.Name.c_str());
        if (there.Error == 0) {
            WalkSubdirectory(Directory, subdirectory, there);
        } else {
            AddUnseenDestination(Directory, subdirectory.Name.c_str(), there.Error);
        }
    }
}

void SourceWalk::WalkSubdirectory(WalkListing& Directory, const Subdirectory& Entered,
                                  const DestinationEntry& There) {
    WalkListing target = Enter(Directory, Entered, There);
    if (Entered.bLink && target.Fate == Treatment::Copied) {
        Overtaken.LookAt(target.Path);
    }
    if (target.Fate != Treatment::Copied) {
        Files.CountSkipped(Directory, 0);
        if (Entered.bLink) {
            return;
        }
    } else {
        Files.CountCopied(Directory, 0);
        if (!Files.FitsItsNames(Directory, Entered.Name.c_str())) {
            return;
        }
    }
    if (!IsWorthALook(target)) {
        return;
    }
    const std::vector<FileIdentity> chainBefore = DestinationChain;
    ExtendDestinationChain(target.Destination);
    if (Entered.bLink) {
        FollowLink(target, *Entered.Status);
    } else {
        WalkDirectory(target, Entered.Status);
    }
    DestinationChain = chainBefore;
}

void SourceWalk::ExtendDestinationChain(const DestinationPlace& Place) {
    if (!Place.bExists) {
        return;
    }
    if (Place.Facts->Directory == Place.Path) {
        DestinationChain = Place.Facts->Lineage;
    } else {
        DestinationChain.push_back(*Place.Identity);
    }
}

// The directory as it is going to be listed, with what becomes of it.
WalkListing SourceWalk::Enter(WalkListing& Directory, const Subdirectory& Entered,
                              const DestinationEntry& There) {
    const DestinationFacts* const facts = Directory.Destination.Facts;
    WalkListing target{.Path = Directory.PathOf(Entered.Name.c_str()),
                       .Destination = {.Path = Directory.DestinationPathOf(Entered.Name.c_str()),
                                       .Facts = facts,
                                       .Identity = There.Identity},
                       .bSelected = Directory.bSelected && !Entered.bLink,
                       .Fate = Directory.Fate,
                       .RecordedName = Directory.RecordedNameOf(Entered.Name.c_str()),
                       .There = RecordedTargetOf(There),
                       .Above = std::move(Directory.Kept)};
    if (Directory.Fate != Treatment::Copied) {
        return target;
    }
    const SourceSide source{.Path = target.Path, .bDirectory = true};
    const NameFate fate = Names.Decide(source, target.Destination.Path, There);
    if (fate == NameFate::Merged && !Directory.bSelected) {
        ++Result.Taken.MergedBehindLinks;
    }
    if (fate == NameFate::Skipped || fate == NameFate::Refused) {
        target.Fate = Treatment::Skipped;
    } else if (fate == NameFate::Free) {
        Files.CheckCreation(Directory);
    } else if (There.IsDirectory()) {
        target.Destination.bExists = true;
        const bool bElsewhere = There.Taken->bLink || There.Identity->Device != facts->Device ||
                                There.MountId != facts->MountId;
        target.Destination.Facts = bElsewhere ? &Destinations.At(target.Destination.Path) : facts;
    }
    return target;
}

void SourceWalk::FollowLink(WalkListing& Target, const DirectoryStatus& Status) {
    if (IsDestination(Target, Status.Identity)) {
        return;
    }
    if (Contains(Chain, Status.Identity)) {
        Result.Findings.AddStop(Kind::LinkCycle, Target.Path);
        Record.Enter(Target, Status.Recorded);
        Record.Leave(Target);
        return;
    }
    Links.AddLink(Target.Path, Status.Identity);
    const DestinationFacts& facts = *Target.Destination.Facts;
    const bool bNew = !Target.Destination.bExists;
    if (bNew && Links.IsKnown(Status.Identity)) {
        if (Record.IsKept()) {
            WalkForRecord(Target, Status);
        } else {
            Links.AddKnown(Status.Identity, facts);
        }
        return;
    }
    const FollowedLinks::Totals before = Links.Copied(facts);
    WalkDirectory(Target, Status);
    if (bNew) {
        Links.Remember(Status.Identity, facts, before);
    }
}

// What is behind a second link is copied once more, but there is nothing new to find.
void SourceWalk::WalkForRecord(WalkListing& Target, const DirectoryStatus& Status) {
    PreflightFindings findings = Result.Findings;
    WalkDirectory(Target, Status);
    Result.Findings = std::move(findings);
}

// Lists the whole directory before it goes deeper, so that few are open at a time however deep the
// walk is.
void SourceWalk::WalkDirectory(WalkListing& Directory,
                               const std::optional<DirectoryStatus>& KnownStatus) {
    const std::optional<DirectoryStatus> status = ListDirectory(Directory, KnownStatus);
    if (!status) {
        return;
    }
    Chain.push_back(status->Identity);
    WalkSubdirectories(Directory);
    Chain.pop_back();
    Record.Leave(Directory);
    if (!status->bWritable && Directory.Copied > 0) {
        Result.Findings.AddStop(Kind::UnwritableSourceDirectory, Directory.Path);
    }
}

// Nothing when there is nothing to go into.
std::optional<DirectoryStatus>
SourceWalk::ListDirectory(WalkListing& InOutListing,
                          const std::optional<DirectoryStatus>& KnownStatus) {
    DirectoryReader reader(InOutListing.Open(), ListingBuffer);
    if (reader.Error() != 0) {
        AddUnopenable(InOutListing, reader.Error());
        return std::nullopt;
    }
    const OwnedDescriptor there = InOutListing.Destination.Open();
    InOutListing.Descriptor = reader.Descriptor();
    InOutListing.DestinationDescriptor = there.Get();
    const std::optional<DirectoryStatus> status =
        KnownStatus ? KnownStatus : StatusOfOpen(InOutListing);
    if (!status) {
        AddUninspectable(InOutListing.Path, errno);
        return std::nullopt;
    }
    if (IsDestination(InOutListing, status->Identity)) {
        return std::nullopt;
    }
    Record.Enter(InOutListing, status->Recorded);
    if (InOutListing.Fate == Treatment::Copied && InOutListing.bSelected) {
        Links.AddSelected(status->Identity);
    }
    while (const dirent64* entry = reader.Next()) {
        LookAtEntry(InOutListing, *entry);
    }
    if (reader.Error() != 0) {
        AddUninspectable(InOutListing.Path, reader.Error());
    }
    InOutListing.DestinationDescriptor = -1;
    if (InOutListing.Subdirectories.IsSingle()) {
        InOutListing.Kept = reader.Release();
    }
    return status;
}

// Whether the directory is the one that its contents go into, or holds that.
bool SourceWalk::IsDestination(const WalkListing& Directory, const FileIdentity& Identity) {
    if (Directory.Destination.Identity == Identity) {
        Result.Findings.AddStop(Kind::SourceIsDestination, Directory.Path);
        return true;
    }
    if (Contains(DestinationChain, Identity)) {
        Result.Findings.AddStop(Kind::DestinationInsideSource, Directory.Path);
        return true;
    }
    return false;
}
