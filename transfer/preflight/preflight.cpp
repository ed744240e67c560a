#include "preflight.h"

#include "preflight_tracks.h"
#include "preflight_walk.h"
#include "tarvanepane.h"

#include <fcntl.h>

#include <set>
#include <utility>

namespace fs = std::filesystem;

namespace {

class Preflight {
public:
    Preflight(const PreflightTask& Task, PreflightControl& ControlToUse)
        : Plan(Task.Plan), Scope(Task.Scope), Control(ControlToUse),
          Names(Task.Rules, Result, Task.Record != nullptr),
          Record(Task.Record, Task.RecordDescriptor),
          Sources({Result, Control, Destinations, Names, Demand, Record}, Plan, Scope),
          Tracks(Result, Task.Discs) {
        Result.Findings = PreflightFindings(Scope);
        Result.bComplete = Scope == PreflightScope::Everything;
    }

    PreflightResult Run();

private:
    bool TakesOnlyFiles() const;
    void LookAtParent(const fs::path& Destination);
    void LookAtTrack(const std::string& Track, const fs::path& Destination);

    const TarvaneTransferPlan& Plan;
    const PreflightScope Scope;
    PreflightControl& Control;
    PreflightResult Result;
    KnownDestinations Destinations;
    SpaceDemand Demand;
    TakenNames Names;
    WalkRecord Record;
    SourceWalk Sources;
    TrackLook Tracks;
    std::set<fs::path> MadeDirectories;
};

PreflightResult Preflight::Run() {
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        LookAtParent(item.DestinationPath);
        const std::string source = item.SourcePath.string();
        if (TarvaneIsCddaPath(source)) {
            LookAtTrack(source, item.DestinationPath);
        } else {
            Names.Enter(Destinations.At(item.DestinationPath.parent_path()));
            Sources.Walk(item.SourcePath, item.DestinationPath);
        }
    }
    Result.bRemovesUnselected = Sources.RemovesUnselected();
    Demand.Check(Result.Findings);
    Result.bTakesOnlyFiles = TakesOnlyFiles();
    Record.Finish();
    return std::move(Result);
}

// Items may meet at one name, and so may what links to directories lead to.
bool Preflight::TakesOnlyFiles() const {
    const bool bLinks = Result.Findings.Count(PreflightFindingKind::LinkToDirectory) > 0 ||
                        Result.Findings.Count(PreflightFindingKind::LinkToDirectoryOnMove) > 0;
    return Scope != PreflightScope::GuardsOnly && !Result.Findings.AnyStopsJob() &&
           Plan.Items.size() == 1 && !bLinks && Names.AreOnlyFiles();
}

void Preflight::LookAtParent(const fs::path& Destination) {
    const fs::path parent = Destination.parent_path();
    if (Destinations.At(parent).bMissing && MadeDirectories.insert(parent).second) {
        Result.Findings.Add({.Kind = PreflightFindingKind::MadeDirectory, .Path = parent});
    }
}

void Preflight::LookAtTrack(const std::string& Track, const fs::path& Destination) {
    ++Control.EntriesSeen;
    const DestinationEntry there = LookAtDestination(AT_FDCWD, Destination.c_str());
    const NameFate fate = Names.Decide({.Path = Track}, Destination, there);
    if (Scope == PreflightScope::GuardsOnly) {
        return;
    }
    const std::uint64_t entriesBefore = Result.CopiedEntries;
    const std::uint64_t bytesBefore = Result.CopiedBytes;
    const std::uint64_t wavBytes = Tracks.LookAt(Track);
    if (fate == NameFate::Skipped || fate == NameFate::Refused) {
        Result.SkippedEntries += Result.CopiedEntries - entriesBefore;
        Result.SkippedBytes += Result.CopiedBytes - bytesBefore;
        Result.CopiedEntries = entriesBefore;
        Result.CopiedBytes = bytesBefore;
        return;
    }
    const DestinationFacts& facts = Destinations.At(Destination.parent_path());
    Demand.Add(facts, SpaceDemand::NeedOf(wavBytes, fate, there, facts));
}

} // namespace

PreflightResult RunPreflight(const PreflightTask& Task, PreflightControl& Control) {
    return Preflight(Task, Control).Run();
}
