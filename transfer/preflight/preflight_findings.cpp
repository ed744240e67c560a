#include "preflight_findings.h"

#include <numeric>
#include <utility>

namespace {

std::size_t IndexOf(PreflightFindingKind Kind) {
    return static_cast<std::size_t>(Kind);
}

} // namespace

void PreflightFindings::Add(PreflightFinding Finding) {
    if (Scope == PreflightScope::GuardsOnly && !IsGuard(Finding.Kind)) {
        return;
    }
    All.bAnyStopsJob = All.bAnyStopsJob || Finding.bStopsJob;
    if (All.Counts.at(IndexOf(Finding.Kind))++ < kKeptPerKind) {
        KeptFindings.push_back(std::move(Finding));
    }
}

void PreflightFindings::AddStop(PreflightFindingKind Kind, const std::filesystem::path& Path,
                                const std::string& Reason) {
    Add({.Kind = Kind, .Path = Path, .bStopsJob = true, .Reason = Reason});
}

std::uint64_t PreflightFindings::Count(PreflightFindingKind Kind) const {
    return All.Counts.at(IndexOf(Kind));
}

std::uint64_t PreflightFindings::Count() const {
    return std::accumulate(All.Counts.begin(), All.Counts.end(), std::uint64_t{0});
}

std::uint64_t PreflightFindings::CountIf(bool (*Belongs)(PreflightFindingKind)) const {
    std::uint64_t count = 0;
    for (std::size_t kind = 0; kind < kPreflightFindingKinds; ++kind) {
        count += Belongs(static_cast<PreflightFindingKind>(kind)) ? All.Counts.at(kind) : 0;
    }
    return count;
}

std::string_view PreflightFindingName(PreflightFindingKind Kind) {
    switch (Kind) {
    case PreflightFindingKind::DanglingLink:
        return "dangling-link";
    case PreflightFindingKind::LinkToDirectory:
        return "link-to-directory";
    case PreflightFindingKind::LinkToDirectoryOnMove:
        return "link-to-directory-on-move";
    case PreflightFindingKind::LinkCycle:
        return "link-cycle";
    case PreflightFindingKind::SpecialEntry:
        return "special-entry";
    case PreflightFindingKind::UnreadableFile:
        return "unreadable-file";
    case PreflightFindingKind::UnreadableDirectory:
        return "unreadable-directory";
    case PreflightFindingKind::UnreadableDirectoryOnMove:
        return "unreadable-directory-on-move";
    case PreflightFindingKind::UninspectableEntry:
        return "uninspectable-entry";
    case PreflightFindingKind::UnwritableSourceDirectory:
        return "unwritable-source-directory";
    case PreflightFindingKind::DestinationInsideSource:
        return "destination-inside-source";
    case PreflightFindingKind::SourceIsDestination:
        return "source-is-destination";
    case PreflightFindingKind::UnwritableDestination:
        return "unwritable-destination";
    case PreflightFindingKind::UnwritableFile:
        return "unwritable-file";
    case PreflightFindingKind::MadeDirectory:
        return "made-directory";
    case PreflightFindingKind::TooLittleSpace:
        return "too-little-space";
    case PreflightFindingKind::FileTooLarge:
        return "file-too-large";
    case PreflightFindingKind::NameTooLong:
        return "name-too-long";
    case PreflightFindingKind::PathTooLong:
        return "path-too-long";
    case PreflightFindingKind::MissingDrive:
        return "missing-drive";
    case PreflightFindingKind::MissingTrack:
        return "missing-track";
    case PreflightFindingKind::EmptyTrack:
        return "empty-track";
    case PreflightFindingKind::DataTrack:
        return "data-track";
    case PreflightFindingKind::TakenName:
        return "taken-name";
    case PreflightFindingKind::UnequalKinds:
        return "unequal-kinds";
    case PreflightFindingKind::DanglingDestination:
        return "dangling-destination";
    case PreflightFindingKind::LinkAtDestination:
        return "link-at-destination";
    case PreflightFindingKind::SpecialDestination:
        return "special-destination";
    case PreflightFindingKind::DestinationHoldsSource:
        return "destination-holds-source";
    }
    return "";
}
