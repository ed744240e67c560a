// The findings in words: one by one, and as paragraphs.

#include "preflight_findings.h"

#include "quoted.h"
#include "size_text.h"

#include <algorithm>
#include <climits>

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

std::string SentenceFor(PreflightFindingKind Kind) {
    switch (Kind) {
    case PreflightFindingKind::DanglingLink:
        return "The job will stop at links that lead nowhere";
    case PreflightFindingKind::LinkToDirectory:
        return "Links lead to directories, which will be copied with their contents";
    case PreflightFindingKind::LinkToDirectoryOnMove:
        return "Links lead to directories, the contents of which will be copied and removed there";
    case PreflightFindingKind::LinkCycle:
        return "The job will go round in circles and stop at links that lead back to a directory "
               "above them";
    case PreflightFindingKind::SpecialEntry:
        return "The job will stop at pipes, sockets and devices";
    case PreflightFindingKind::UnreadableFile:
        return "The job will stop at files that cannot be read";
    case PreflightFindingKind::UnreadableDirectory:
        return "Directories cannot be read, and their copies will be empty";
    case PreflightFindingKind::UnreadableDirectoryOnMove:
        return "Directories cannot be read: their copies will be empty, and the move will leave "
               "them behind";
    case PreflightFindingKind::UninspectableEntry:
        return "The job will stop at entries that cannot be looked at";
    case PreflightFindingKind::UnwritableSourceDirectory:
        return "The move will stop at directories from which nothing can be removed";
    case PreflightFindingKind::DestinationInsideSource:
        return "The job will stop at directories that hold the destination";
    case PreflightFindingKind::SourceIsDestination:
        return "The job will stop at entries that are their own destination";
    case PreflightFindingKind::UnwritableDestination:
        return "Nothing can be created in directories of the destination";
    case PreflightFindingKind::UnwritableFile:
        return "Files at the destination cannot be overwritten";
    case PreflightFindingKind::MadeDirectory:
        return "The job makes directories that do not exist";
    case PreflightFindingKind::TooLittleSpace:
        return "There is not enough room at the destination";
    case PreflightFindingKind::FileTooLarge:
        return "The job will stop at files that are larger than the destination can hold";
    case PreflightFindingKind::NameTooLong:
        return "The job will stop at names that are longer than the destination can hold";
    case PreflightFindingKind::PathTooLong:
        return "The job will stop at paths that are longer than the system takes";
    case PreflightFindingKind::MissingDrive:
        return "The job will stop at tracks that cannot be read";
    case PreflightFindingKind::MissingTrack:
        return "The job will stop at tracks that are not on the disc";
    case PreflightFindingKind::EmptyTrack:
        return "The job will stop at tracks that have no length";
    case PreflightFindingKind::DataTrack:
        return "The job will stop at data tracks";
    case PreflightFindingKind::TakenName:
        return "Names at the destination are taken";
    case PreflightFindingKind::UnequalKinds:
        return "A file would take the place of a directory, or a directory that of a file";
    case PreflightFindingKind::DanglingDestination:
        return "Links at the destination lead nowhere; only --follow-links writes through them";
    case PreflightFindingKind::LinkAtDestination:
        return "Links at the destination lead to directories; only --follow-links enters them";
    case PreflightFindingKind::SpecialDestination:
        return "Pipes, sockets and devices at the destination are neither written to nor removed";
    case PreflightFindingKind::DestinationHoldsSource:
        return "Directories at the destination hold what would take their place";
    }
    return "";
}

std::string LineFor(const PreflightFinding& Finding) {
    const std::string& path = Finding.Path.native();
    const SizePair sizes = SizesOf(Finding);
    if (Finding.Kind == PreflightFindingKind::TooLittleSpace) {
        return path + ": " + SpaceText(Finding) + ", " + sizes.Available + " are free";
    }
    if (Finding.Kind == PreflightFindingKind::FileTooLarge) {
        return path + ": " + sizes.Needed + " of at most " + sizes.Available;
    }
    // A refusal's reason is a sentence of its own.
    const bool bBare = Finding.Reason.empty() || IsRefusal(Finding.Kind);
    return path + (bBare ? "" : ": " + Finding.Reason);
}

int RankOf(const FindingGroup& Group) {
    if (Group.Kind == PreflightFindingKind::LinkToDirectoryOnMove) {
        return 0;
    }
    return IsRefusal(Group.Kind) ? 1 : 2;
}

} // namespace

std::string DescribeFinding(const PreflightFinding& Finding) {
    const std::string path = Quoted(Finding.Path.native());
    const SizePair sizes = SizesOf(Finding);
    switch (Finding.Kind) {
    case PreflightFindingKind::DanglingLink:
        return "the job will stop at the link " + path + ", which leads nowhere";
    case PreflightFindingKind::LinkToDirectory:
        return "the directory that the link " + path + " leads to will be copied with its contents";
    case PreflightFindingKind::LinkToDirectoryOnMove:
        return "what is in the directory that the link " + path +
               " leads to will be copied and removed there";
    case PreflightFindingKind::LinkCycle:
        return "the job will go round in circles and stop at the link " + path +
               ", which leads back to a directory above it";
    case PreflightFindingKind::SpecialEntry:
        return "the job will stop at " + path + ", which is a pipe, a socket or a device";
    case PreflightFindingKind::UnreadableFile:
        return "the job will stop at the file " + path + ", which cannot be read";
    case PreflightFindingKind::UnreadableDirectory:
        return "the directory " + path + " cannot be read: its copy will be empty";
    case PreflightFindingKind::UnreadableDirectoryOnMove:
        return "the directory " + path +
               " cannot be read: its copy will be empty, and the move will leave it behind";
    case PreflightFindingKind::UninspectableEntry:
        return "the job will stop at " + path + ": " + Finding.Reason;
    case PreflightFindingKind::UnwritableSourceDirectory:
        return "the move will stop at the directory " + path +
               ", from which nothing can be removed";
    case PreflightFindingKind::DestinationInsideSource:
        return "the job will stop at the directory " + path +
               ", because the destination is inside it";
    case PreflightFindingKind::SourceIsDestination:
        return "the job will stop at " + path + ", because the destination is the same";
    case PreflightFindingKind::UnwritableDestination:
        return "nothing can be created in the directory " + path + ": " + Finding.Reason;
    case PreflightFindingKind::UnwritableFile:
        return "the file " + path + " cannot be overwritten: " + Finding.Reason;
    case PreflightFindingKind::MadeDirectory:
        return "the job makes the directory " + path + ", which does not exist";
    case PreflightFindingKind::TooLittleSpace:
        return SpaceText(Finding) + " in " + path + ", where " + sizes.Available + " are free";
    case PreflightFindingKind::FileTooLarge:
        return "the job will stop at the file " + path + ": its " + sizes.Needed +
               " are more than the destination can hold in one file (" + sizes.Available + ")";
    case PreflightFindingKind::NameTooLong:
        return "the job will stop at " + path + ": the destination can hold names of at most " +
               std::to_string(Finding.AvailableBytes) + " bytes";
    case PreflightFindingKind::PathTooLong:
        return "the job will stop at " + path + ": its path or that of its copy has more than " +
               std::to_string(PATH_MAX - 1) + " bytes";
    case PreflightFindingKind::MissingDrive:
        return "the job will stop at " + path + ": " + Finding.Reason;
    case PreflightFindingKind::MissingTrack:
        return "the job will stop at " + path + ", which is not on the disc";
    case PreflightFindingKind::EmptyTrack:
        return "the job will stop at " + path + ", which has no length";
    case PreflightFindingKind::DataTrack:
        return "the job will stop at " + path + ", which is a data track";
    case PreflightFindingKind::TakenName:
    case PreflightFindingKind::UnequalKinds:
    case PreflightFindingKind::DanglingDestination:
    case PreflightFindingKind::LinkAtDestination:
    case PreflightFindingKind::SpecialDestination:
    case PreflightFindingKind::DestinationHoldsSource:
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
            groups.push_back({finding.Kind, SentenceFor(finding.Kind), {}, 0});
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
