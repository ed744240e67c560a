#include "preflight_findings.h"

#include "quoted.h"
#include "size_text.h"

#include <map>
#include <numeric>
#include <utility>

namespace {

std::size_t IndexOf(PreflightFindingKind Kind) {
    return static_cast<std::size_t>(Kind);
}

} // namespace

void PreflightFindings::Add(PreflightFinding Finding) {
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
    case PreflightFindingKind::TooLittleSpace:
        return "too-little-space";
    case PreflightFindingKind::FileTooLarge:
        return "file-too-large";
    case PreflightFindingKind::MissingDrive:
        return "missing-drive";
    case PreflightFindingKind::MissingTrack:
        return "missing-track";
    case PreflightFindingKind::EmptyTrack:
        return "empty-track";
    case PreflightFindingKind::DataTrack:
        return "data-track";
    }
    return "";
}

std::string DescribeFinding(const PreflightFinding& Finding) {
    const std::string path = Quoted(Finding.Path.native());
    const std::string needed = SizeText(Finding.NeededBytes);
    const std::string available = SizeText(Finding.AvailableBytes);
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
        return "the directory " + path +
               " cannot be read: its copy will be empty, and a move will leave it behind";
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
        return "nothing can be created in the directory " + path;
    case PreflightFindingKind::TooLittleSpace:
        return needed + " are needed in " + path + ", where " + available + " are free" +
               (Finding.bStopsJob ? "" : "; less when part of it is already there");
    case PreflightFindingKind::FileTooLarge:
        return "the job will stop at the file " + path + ": its " + needed +
               " are more than the destination can hold in one file (" + available + ")";
    case PreflightFindingKind::MissingDrive:
        return "the job will stop at " + path + ": " + Finding.Reason;
    case PreflightFindingKind::MissingTrack:
        return "the job will stop at " + path + ", which is not on the disc";
    case PreflightFindingKind::EmptyTrack:
        return "the job will stop at " + path + ", which has no length";
    case PreflightFindingKind::DataTrack:
        return "the job will stop at " + path + ", which is a data track";
    }
    return "";
}

std::vector<std::string> DescribeFindings(const PreflightFindings& Findings,
                                          std::uint64_t KeptPerKind) {
    std::vector<std::string> sentences;
    std::map<PreflightFindingKind, std::uint64_t> seen;
    for (const PreflightFinding& finding : Findings.Kept()) {
        if (seen[finding.Kind]++ < KeptPerKind) {
            sentences.push_back(DescribeFinding(finding));
        }
    }
    const std::uint64_t more = Findings.Count() - sentences.size();
    if (more > 0) {
        sentences.push_back("and " + std::to_string(more) + " more of these");
    }
    return sentences;
}
