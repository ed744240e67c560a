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

enum class PreflightFindingKind {
    // A link that leads nowhere.
    DanglingLink,
    // Its contents are copied as a real directory.
    LinkToDirectory,
    // The same on a move that has to copy: what the link leads to is removed.
    LinkToDirectoryOnMove,
    // A link to a directory that the copy is already in.
    LinkCycle,
    // A named pipe, a socket or a device node.
    SpecialEntry,
    UnreadableFile,
    UnreadableDirectory,
    // Even its status cannot be found out; Reason says why.
    UninspectableEntry,
    // On a move that has to copy: nothing can be removed from the directory.
    UnwritableSourceDirectory,
    // A directory that is to be copied into itself, by its own name or through a link.
    DestinationInsideSource,
    SourceIsDestination,
    UnwritableDestination,
    // Path is the destination directory; NeededBytes and AvailableBytes say how much.
    TooLittleSpace,
    // NeededBytes is the file's size, AvailableBytes the largest that can be stored.
    FileTooLarge,
    // No disc can be read in a track's drive; Reason says why.
    MissingDrive,
    MissingTrack,
    // It is on the disc, but the next one begins where it does.
    EmptyTrack,
    DataTrack,
};

inline constexpr std::size_t kPreflightFindingKinds =
    static_cast<std::size_t>(PreflightFindingKind::DataTrack) + 1;

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
    bool AnyStopsJob() const { return All.bAnyStopsJob; }

private:
    std::vector<PreflightFinding> KeptFindings;
    Tally All;
};

// The kind in lower case with hyphens: "dangling-link".
std::string_view PreflightFindingName(PreflightFindingKind Kind);

// One sentence for the user without a capital, a period or a line end. The path's bytes are in it
// as they are, so it is not fit for a screen before it is cleaned.
std::string DescribeFinding(const PreflightFinding& Finding);

// The sentences of at most KeptPerKind findings of each kind, and how many more there are.
std::vector<std::string> DescribeFindings(const PreflightFindings& Findings,
                                          std::uint64_t KeptPerKind);
