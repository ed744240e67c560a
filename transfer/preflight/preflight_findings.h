// What a look through the sources found that would end a job or surprise its user.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What a look is to find out.
enum class PreflightScope {
    // All findings, and the totals of all entries.
    Everything,
    // All findings. Sizes are left out that only the totals would need.
    Findings,
    // Guards only: what would be lost, or be missing in silence, if it was not found.
    GuardsOnly,
};

enum class PreflightFindingKind {
    // A link that leads nowhere.
    DanglingLink,
    // On a move: it leads to what has been moved before it.
    OvertakenLink,
    // Its contents are copied as a real directory.
    LinkToDirectory,
    // The same on a move that has to copy: what the link leads to is removed.
    LinkToDirectoryOnMove,
    // A link to a directory that the copy is already in.
    LinkCycle,
    // A named pipe, a socket or a device node.
    SpecialEntry,
    UnreadableFile,
    // Its copy comes out empty.
    UnreadableDirectory,
    // The same on a move, which leaves it behind.
    UnreadableDirectoryOnMove,
    // Even its status cannot be found out; Reason says why.
    UninspectableEntry,
    // On a move that has to copy: nothing can be removed from the directory.
    UnwritableSourceDirectory,
    // On the same: an operand that somebody else owns in a directory that many share, or that must
    // not be changed at all.
    UnremovableEntry,
    // A directory that is to be copied into itself, by its own name or through a link.
    DestinationInsideSource,
    SourceIsDestination,
    // Reason says why nothing can be created in the directory.
    UnwritableDestination,
    // A file that is there already and cannot be overwritten; Reason says why.
    UnwritableFile,
    // A directory that is missing above the destination.
    MadeDirectory,
    // Path is the destination directory; NeededBytes and AvailableBytes say how much.
    TooLittleSpace,
    // NeededBytes is the file's size, AvailableBytes the largest that can be stored.
    FileTooLarge,
    // Its name is longer than AvailableBytes, which the destination can hold.
    NameTooLong,
    // Its path, or that of its copy, is longer than the system takes.
    PathTooLong,
    // No disc can be read in a track's drive; Reason says why.
    MissingDrive,
    MissingTrack,
    // It is on the disc, but the next one begins where it does.
    EmptyTrack,
    DataTrack,

    // From here on the path is a taken name at the destination that the choices must not answer, so
    // that the run does not begin; Reason is the whole sentence.
    TakenName,
    // A file for a directory, or a directory for a file.
    UnequalKinds,
    // A link that leads nowhere; something would be created where it points.
    DanglingDestination,
    // A link to a directory, which would be entered.
    LinkAtDestination,
    // A device, a pipe or a socket.
    SpecialDestination,
    // A directory that holds what would take its place.
    DestinationHoldsSource,
};

inline constexpr std::size_t kPreflightFindingKinds =
    static_cast<std::size_t>(PreflightFindingKind::DestinationHoldsSource) + 1;

constexpr bool IsRefusal(PreflightFindingKind Kind) {
    return Kind >= PreflightFindingKind::TakenName;
}

// One that comes out empty.
constexpr bool IsUnreadDirectory(PreflightFindingKind Kind) {
    return Kind == PreflightFindingKind::UnreadableDirectory ||
           Kind == PreflightFindingKind::UnreadableDirectoryOnMove;
}

// Whether something would be lost, or be missing in silence, without the finding, which is
// therefore made in every look.
constexpr bool IsGuard(PreflightFindingKind Kind) {
    return IsRefusal(Kind) || IsUnreadDirectory(Kind) ||
           Kind == PreflightFindingKind::LinkToDirectoryOnMove;
}

struct PreflightFinding {
    PreflightFindingKind Kind = PreflightFindingKind::DanglingLink;
    std::filesystem::path Path;
    // The job ends when it gets there.
    bool bStopsJob = false;
    std::uint64_t NeededBytes = 0;
    std::uint64_t AvailableBytes = 0;
    std::string Reason = {};
};

// The first findings of each kind, and the number of all of them.
class PreflightFindings {
public:
    static constexpr std::size_t kKeptPerKind = 100;

    // What is known of all findings, those that were not kept included.
    struct Tally {
        std::array<std::uint64_t, kPreflightFindingKinds> Counts{};
        bool bAnyStopsJob = false;
    };

    PreflightFindings() = default;
    // Takes only guards when told so.
    explicit PreflightFindings(PreflightScope Wanted) : Scope(Wanted) {}
    PreflightFindings(const Tally& CountedFindings, std::vector<PreflightFinding> FirstFindings)
        : KeptFindings(std::move(FirstFindings)), All(CountedFindings) {}

    void Add(PreflightFinding Finding);
    // Adds one at which the job ends.
    void AddStop(PreflightFindingKind Kind, const std::filesystem::path& Path,
                 const std::string& Reason = {});

    // In the order in which they were found.
    const std::vector<PreflightFinding>& Kept() const { return KeptFindings; }
    const Tally& Counted() const { return All; }
    std::uint64_t Count(PreflightFindingKind Kind) const;
    std::uint64_t Count() const;
    // Of the kinds that Belongs says.
    std::uint64_t CountIf(bool (*Belongs)(PreflightFindingKind)) const;
    std::uint64_t CountRefusals() const { return CountIf(IsRefusal); }
    bool AnyStopsJob() const { return All.bAnyStopsJob; }

private:
    PreflightScope Scope = PreflightScope::Everything;
    std::vector<PreflightFinding> KeptFindings;
    Tally All;
};

// All findings of one kind, for one paragraph.
struct FindingGroup {
    PreflightFindingKind Kind = PreflightFindingKind::DanglingLink;
    // Without a period or a line end.
    std::string Sentence;
    // What Sentence is about: a path with its bytes as they are, and what is to be said of it.
    std::vector<std::string> Lines;
    // How many more there are.
    std::uint64_t More = 0;

    bool operator==(const FindingGroup&) const = default;
};

// The kind in lower case with hyphens: "dangling-link".
std::string_view PreflightFindingName(PreflightFindingKind Kind);

// One sentence for the user without a capital, a period or a line end. The path's bytes are in it
// as they are, so it is not fit for a screen before it is cleaned.
std::string DescribeFinding(const PreflightFinding& Finding);

// What removes files comes first, then what keeps the run from beginning, then the rest as it was
// found; each with at most LinesPerGroup lines.
std::vector<FindingGroup> GroupFindings(const PreflightFindings& Findings,
                                        std::size_t LinesPerGroup);
