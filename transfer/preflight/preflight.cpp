#include "preflight.h"

#include "destination_facts.h"
#include "full_path.h"
#include "preflight_tracks.h"
#include "preflight_walk.h"
#include "tarvanepane.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

namespace fs = std::filesystem;

namespace {

class Preflight {
public:
    Preflight(const TarvaneTransferPlan& PlanToLookAt, PreflightControl& ControlToUse,
              const KnownDiscs& Discs)
        : Plan(PlanToLookAt), Control(ControlToUse), Tracks(Result, Discs) {}

    PreflightResult Run();

private:
    // What is going to be written to one file system.
    struct Demand {
        const DestinationFacts* Destination = nullptr;
        std::uint64_t BlockBytes = 0;
        // Nothing is there yet that would be skipped or overwritten.
        bool bAllNew = true;
    };

    void LookAtItem(const TarvaneTransferItemPlan& Item);
    WalkRules RulesFor(const TarvaneTransferItemPlan& Item, bool bNew,
                       const DestinationFacts& Facts);
    const DestinationFacts& FactsFor(const fs::path& Directory, bool bNew);
    void CheckRemoval(const fs::path& Source);
    void CheckSpace();

    const TarvaneTransferPlan& Plan;
    PreflightControl& Control;
    PreflightResult Result;
    SourceWalk Sources{Result, Control};
    TrackLook Tracks;
    // By the directory that is written to, which need not exist yet.
    std::map<fs::path, DestinationFacts> KnownFacts;
    std::set<fs::path> CheckedParents;
    // By the device of the file system.
    std::map<std::uint64_t, Demand> Demands;
};

PreflightResult Preflight::Run() {
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        Result.bCanceled = Result.bCanceled || Control.bStopRequested;
        if (Result.bCanceled) {
            break;
        }
        LookAtItem(item);
    }
    Result.bRemovesUnselected = Sources.RemovesUnselected();
    CheckSpace();
    return std::move(Result);
}

void Preflight::LookAtItem(const TarvaneTransferItemPlan& Item) {
    struct stat status {};
    const bool bNew = ::stat(Item.DestinationPath.c_str(), &status) != 0;
    const bool bMerged = !bNew && S_ISDIR(status.st_mode);
    const DestinationFacts& facts =
        FactsFor(bMerged ? Item.DestinationPath : Item.DestinationPath.parent_path(), bNew);
    Demand& demand = Demands[facts.Device];
    demand.Destination = &facts;
    demand.bAllNew = demand.bAllNew && bNew;
    const std::string sourceText = Item.SourcePath.string();
    if (TarvaneIsCddaPath(sourceText)) {
        ++Control.EntriesSeen;
        demand.BlockBytes += Tracks.LookAt(sourceText);
        return;
    }
    WalkRules rules = RulesFor(Item, bNew, facts);
    if (!bNew) {
        rules.Destination = IdentityOf(status);
    }
    demand.BlockBytes += Sources.Walk(Item.SourcePath, rules);
}

WalkRules Preflight::RulesFor(const TarvaneTransferItemPlan& Item, bool bNew,
                              const DestinationFacts& Facts) {
    WalkRules rules;
    rules.bRenamed = Plan.bMove && bNew && CanBeRenamed(Item.SourcePath, Facts);
    rules.bRemoved = Plan.bMove && !rules.bRenamed;
    rules.MaxFileBytes = Facts.MaxFileBytes;
    rules.BlockBytes = Facts.BlockBytes;
    rules.DestinationDevice = Facts.Device;
    rules.DestinationLineage = Facts.Lineage;
    if (rules.bRemoved) {
        CheckRemoval(Item.SourcePath);
    }
    return rules;
}

// Looks at the same directory only once.
const DestinationFacts& Preflight::FactsFor(const fs::path& Directory, bool bNew) {
    const auto known = KnownFacts.find(Directory);
    if (known != KnownFacts.end()) {
        return known->second;
    }
    DestinationFacts& facts = KnownFacts[Directory] = FactsOf(NearestExistingDirectory(Directory));
    if (bNew && !facts.bWritable) {
        Result.Findings.AddStop(PreflightFindingKind::UnwritableDestination, facts.Directory);
    }
    return facts;
}

void Preflight::CheckRemoval(const fs::path& Source) {
    const fs::path parent = ParentOf(Source);
    if (CheckedParents.insert(parent).second && !MayChangeDirectory(parent)) {
        Result.Findings.AddStop(PreflightFindingKind::UnwritableSourceDirectory, parent);
    }
}

void Preflight::CheckSpace() {
    for (const auto& [device, demand] : Demands) {
        const std::optional<std::uint64_t> freeBytes = demand.Destination->FreeBytes;
        if (freeBytes && demand.BlockBytes > *freeBytes) {
            Result.Findings.Add({.Kind = PreflightFindingKind::TooLittleSpace,
                                 .Path = demand.Destination->Directory,
                                 .bStopsJob = demand.bAllNew,
                                 .NeededBytes = demand.BlockBytes,
                                 .AvailableBytes = *freeBytes});
        }
    }
}

} // namespace

PreflightResult RunPreflight(const TarvaneTransferPlan& Plan, PreflightControl& Control,
                             const KnownDiscs& Discs) {
    return Preflight(Plan, Control, Discs).Run();
}
