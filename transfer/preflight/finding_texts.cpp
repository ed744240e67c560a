// The findings in words: one by one, and as paragraphs.

#include "preflight_findings.h"

#include "quoted.h"
#include "size_text.h"

#include <algorithm>
#include <climits>

using Kind = PreflightFindingKind;

namespace {

// Two sizes side by side, in bytes too where they would read the same.
struct SizePair {
    std::string Needed;
    std::string Available;
};

SizePair SizesOf(const PreflightFinding& Finding) {
    const SizePair sizes{SizeText(Finding.NeededBytes), SizeText(Finding.AvailableBytes)};
    if (sizes.Needed != sizes.Available) {
        return sizes;
    }
    return {SizeTextWithBytes(Finding.NeededBytes), SizeTextWithBytes(Finding.AvailableBytes)};
}

std::string SpaceText(const PreflightFinding& Finding) {
    const SizePair sizes = SizesOf(Finding);
    return (Finding.bStopsJob ? "" : "at most ") + sizes.Needed + " are needed";
}

const char* WhatTheTrackIs(Kind Found) {
    if (Found == Kind::MissingTrack) {
        return "is not on the disc";
    }
    return Found == Kind::EmptyTrack ? "has no length" : "is a data track";
}

struct KindTexts {
    Kind Wanted = Kind::DanglingLink;
    std::string_view Name;
    // What is said of all findings of the kind together.
    const char* Sentence = "";
};

constexpr KindTexts kTexts[] = {
    {Kind::DanglingLink, "dangling-link", "The job will stop at links that lead nowhere"},
    {Kind::OvertakenLink, "overtaken-link",
     "The move will stop at links to what it has moved before them"},
    {Kind::LinkToDirectory, "link-to-directory",
     "Links lead to directories, which will be copied with their contents"},
    {Kind::LinkToDirectoryOnMove, "link-to-directory-on-move",
     "Links lead to directories, the contents of which will be copied and removed there"},
    {Kind::LinkCycle, "link-cycle",
     "The job will go round in circles and stop at links that lead back to a directory "
     "above them"},
    {Kind::SpecialEntry, "special-entry", "The job will stop at pipes, sockets and devices"},
    {Kind::UnreadableFile, "unreadable-file", "The job will stop at files that cannot be read"},
    {Kind::UnreadableDirectory, "unreadable-directory",
     "Directories cannot be read, and their copies will be empty"},
    {Kind::UnreadableDirectoryOnMove, "unreadable-directory-on-move",
     "Directories cannot be read: their copies will be empty, and the move will leave "
     "them behind"},
    {Kind::UninspectableEntry, "uninspectable-entry",
     "The job will stop at entries that cannot be looked at"},
    {Kind::UnwritableSourceDirectory, "unwritable-source-directory",
     "The move will stop at directories from which nothing can be removed"},
    {Kind::UnremovableEntry, "unremovable-entry",
     "The move will stop at entries that cannot be removed"},
    {Kind::DestinationInsideSource, "destination-inside-source",
     "The job will stop at directories that hold the destination"},
    {Kind::SourceIsDestination, "source-is-destination",
     "The job will stop at entries that are their own destination"},
    {Kind::UnwritableDestination, "unwritable-destination",
     "Nothing can be created in directories of the destination"},
    {Kind::UnwritableFile, "unwritable-file", "Files at the destination cannot be overwritten"},
    {Kind::MadeDirectory, "made-directory", "The job makes directories that do not exist"},
    {Kind::TooLittleSpace, "too-little-space", "There is not enough room at the destination"},
    {Kind::FileTooLarge, "file-too-large",
     "The job will stop at files that are larger than the destination can hold"},
    {Kind::NameTooLong, "name-too-long",
     "The job will stop at names that are longer than the destination can hold"},
    {Kind::PathTooLong, "path-too-long",
     "The job will stop at paths that are longer than the system takes"},
    {Kind::MissingDrive, "missing-drive", "The job will stop at tracks that cannot be read"},
    {Kind::MissingTrack, "missing-track", "The job will stop at tracks that are not on the disc"},
    {Kind::EmptyTrack, "empty-track", "The job will stop at tracks that have no length"},
    {Kind::DataTrack, "data-track", "The job will stop at data tracks"},
    {Kind::TakenName, "taken-name", "Names at the destination are taken"},
    {Kind::UnequalKinds, "unequal-kinds",
     "A file would take the place of a directory, or a directory that of a file"},
    {Kind::DanglingDestination, "dangling-destination",
     "Links at the destination lead nowhere; only --follow-links writes through them"},
    {Kind::LinkAtDestination, "link-at-destination",
     "Links at the destination lead to directories; only --follow-links enters them"},
    {Kind::SpecialDestination, "special-destination",
     "Pipes, sockets and devices at the destination are neither written to nor removed"},
    {Kind::DestinationHoldsSource, "destination-holds-source",
     "Directories at the destination hold what would take their place"},
};

constexpr bool HasEveryKindInItsPlace() {
    std::size_t place = 0;
    for (const KindTexts& texts : kTexts) {
        if (static_cast<std::size_t>(texts.Wanted) != place++) {
            return false;
        }
    }
    return place == kPreflightFindingKinds;
}
static_assert(HasEveryKindInItsPlace());

const KindTexts& TextsOf(Kind Wanted) {
    return kTexts[static_cast<std::size_t>(Wanted)];
}

std::string LineFor(const PreflightFinding& Finding) {
    const std::string& path = Finding.Path.native();
    const SizePair sizes = SizesOf(Finding);
    if (Finding.Kind == Kind::TooLittleSpace) {
        return path + ": " + SpaceText(Finding) + ", " + sizes.Available + " are free";
    }
    if (Finding.Kind == Kind::FileTooLarge) {
        return path + ": " + sizes.Needed + " of at most " + sizes.Available;
    }
    // A refusal's reason is a sentence of its own.
    const bool bBare = Finding.Reason.empty() || IsRefusal(Finding.Kind);
    return path + (bBare ? "" : ": " + Finding.Reason);
}

std::string DescribeLimit(const PreflightFinding& Finding) {
    const std::string path = Quoted(Finding.Path.native());
    const SizePair sizes = SizesOf(Finding);
    if (Finding.Kind == Kind::TooLittleSpace) {
        return SpaceText(Finding) + " in " + path + ", where " + sizes.Available + " are free";
    }
    if (Finding.Kind == Kind::FileTooLarge) {
        return "the job will stop at the file " + path + ": its " + sizes.Needed +
               " are more than the destination can hold in one file (" + sizes.Available + ")";
    }
    if (Finding.Kind == Kind::NameTooLong) {
        return "the job will stop at " + path + ": the destination can hold names of at most " +
               std::to_string(Finding.AvailableBytes) + " bytes";
    }
    return "the job will stop at " + path + ": its path or that of its copy has more than " +
           std::to_string(PATH_MAX - 1) + " bytes";
}

std::string MoveStopsAt(const std::string& What, const char* Why) {
    return "the move will stop at " + What + Why;
}

int RankOf(const FindingGroup& Group) {
    if (Group.Kind == Kind::LinkToDirectoryOnMove) {
        return 0;
    }
    return IsRefusal(Group.Kind) ? 1 : 2;
}

} // namespace

std::string_view PreflightFindingName(Kind Wanted) {
    return TextsOf(Wanted).Name;
}

std::string DescribeFinding(const PreflightFinding& Finding) {
    const std::string path = Quoted(Finding.Path.native());
    switch (Finding.Kind) {
    case Kind::DanglingLink:
        return "the job will stop at the link " + path + ", which leads nowhere";
    case Kind::LinkToDirectory:
        return "the directory that the link " + path + " leads to will be copied with its contents";
    case Kind::LinkToDirectoryOnMove:
        return "what is in the directory that the link " + path +
               " leads to will be copied and removed there";
    case Kind::LinkCycle:
        return "the job will go round in circles and stop at the link " + path +
               ", which leads back to a directory above it";
    case Kind::SpecialEntry:
        return "the job will stop at " + path + ", which is a pipe, a socket or a device";
    case Kind::UnreadableFile:
        return "the job will stop at the file " + path + ", which cannot be read";
    case Kind::UnreadableDirectory:
        return "the directory " + path + " cannot be read: its copy will be empty";
    case Kind::UnreadableDirectoryOnMove:
        return "the directory " + path +
               " cannot be read: its copy will be empty, and the move will leave it behind";
    case Kind::UninspectableEntry:
    case Kind::MissingDrive:
        return "the job will stop at " + path + ": " + Finding.Reason;
    case Kind::OvertakenLink:
        return MoveStopsAt("the link " + path, ", which leads to what has been moved before it");
    case Kind::UnwritableSourceDirectory:
        return MoveStopsAt("the directory " + path, ", from which nothing can be removed");
    case Kind::UnremovableEntry:
        return MoveStopsAt(path, ", which cannot be removed");
    case Kind::DestinationInsideSource:
        return "the job will stop at the directory " + path +
               ", because the destination is inside it";
    case Kind::SourceIsDestination:
        return "the job will stop at " + path + ", because the destination is the same";
    case Kind::UnwritableDestination:
        return "nothing can be created in the directory " + path + ": " + Finding.Reason;
    case Kind::UnwritableFile:
        return "the file " + path + " cannot be overwritten: " + Finding.Reason;
    case Kind::MadeDirectory:
        return "the job makes the directory " + path + ", which does not exist";
    case Kind::TooLittleSpace:
    case Kind::FileTooLarge:
    case Kind::NameTooLong:
    case Kind::PathTooLong:
        return DescribeLimit(Finding);
    case Kind::MissingTrack:
    case Kind::EmptyTrack:
    case Kind::DataTrack:
        return "the job will stop at " + path + ", which " + WhatTheTrackIs(Finding.Kind);
    case Kind::TakenName:
    case Kind::UnequalKinds:
    case Kind::DanglingDestination:
    case Kind::LinkAtDestination:
    case Kind::SpecialDestination:
    case Kind::DestinationHoldsSource:
        return Finding.Reason;
    }
    return "";
}

std::vector<FindingGroup> GroupFindings(const PreflightFindings& Findings,
                                        std::size_t LinesPerGroup) {
    std::vector<FindingGroup> groups;
    for (const PreflightFinding& finding : Findings.Kept()) {
        auto group = std::ranges::find(groups, finding.Kind, &FindingGroup::Kind);
        if (group == groups.end()) {
            groups.push_back({finding.Kind, TextsOf(finding.Kind).Sentence, {}, 0});
            group = std::prev(groups.end());
        }
        if (group->Lines.size() < LinesPerGroup) {
            group->Lines.push_back(LineFor(finding));
        }
        group->More = Findings.Count(finding.Kind) - group->Lines.size();
    }
    std::ranges::stable_sort(groups, {}, RankOf);
    return groups;
}
