#include "followed_links.h"

void FollowedLinks::AddSelected(const FileIdentity& Directory) {
    if (bMove) {
        Selected.push_back(Directory);
    }
}

void FollowedLinks::AddLink(const std::string& Path, const FileIdentity& Target) {
    Result.Findings.Add({.Kind = bMove ? PreflightFindingKind::LinkToDirectoryOnMove
                                       : PreflightFindingKind::LinkToDirectory,
                         .Path = Path});
    if (bMove) {
        Targets.insert(Target);
    }
}

void FollowedLinks::AddKnown(const FileIdentity& Target, const DestinationFacts& Destination) {
    const Totals& totals = Known.at(Target);
    Result.CopiedEntries += totals.Entries;
    Result.CopiedBytes += totals.Bytes;
    Result.FollowedEntries += totals.Entries;
    Result.FollowedBytes += totals.Bytes;
    Demand.Add(Destination, totals.Space);
}

FollowedLinks::Totals FollowedLinks::Copied(const DestinationFacts& Destination) const {
    return {Result.CopiedEntries, Result.CopiedBytes, Demand.Of(Destination)};
}

void FollowedLinks::Remember(const FileIdentity& Target, const DestinationFacts& Destination,
                             const Totals& Before) {
    const Totals after = Copied(Destination);
    Known[Target] = {after.Entries - Before.Entries,
                     after.Bytes - Before.Bytes,
                     {LimitedSum(after.Space.MostBytes, -Before.Space.MostBytes),
                      LimitedSum(after.Space.LeastBytes, -Before.Space.LeastBytes)}};
}

bool FollowedLinks::RemovesUnselected() const {
    std::set<FileIdentity> unselected = Targets;
    for (const FileIdentity& directory : Selected) {
        unselected.erase(directory);
    }
    return !unselected.empty();
}
