// The findings of a look through the sources in words.

#include "preflight_findings.h"

#include <gtest/gtest.h>

#include <set>

namespace {

std::string Describe(PreflightFindingKind Kind, bool bStopsJob = true) {
    return DescribeFinding({.Kind = Kind,
                            .Path = "/x",
                            .bStopsJob = bStopsJob,
                            .NeededBytes = 5368709120,
                            .AvailableBytes = 1024,
                            .Reason = "Reason"});
}

TEST(PreflightFindingName, IsDifferentForEveryKind) {
    std::set<std::string_view> names;
    for (std::size_t kind = 0; kind < kPreflightFindingKinds; ++kind) {
        names.insert(PreflightFindingName(static_cast<PreflightFindingKind>(kind)));
    }
    EXPECT_EQ(names.size(), kPreflightFindingKinds);
    EXPECT_EQ(names.count(""), 0U);
}

TEST(PreflightFinding, OfLinksSaysWhereTheyLead) {
    EXPECT_EQ(Describe(PreflightFindingKind::DanglingLink),
              "the job will stop at the link '/x', which leads nowhere");
    EXPECT_EQ(Describe(PreflightFindingKind::OvertakenLink),
              "the move will stop at the link '/x', which leads to what has been moved before it");
    EXPECT_EQ(Describe(PreflightFindingKind::LinkToDirectory),
              "the directory that the link '/x' leads to will be copied with its contents");
    EXPECT_EQ(Describe(PreflightFindingKind::LinkToDirectoryOnMove),
              "what is in the directory that the link '/x' leads to will be copied and removed "
              "there");
    EXPECT_EQ(Describe(PreflightFindingKind::LinkCycle),
              "the job will go round in circles and stop at the link '/x', which leads back to a "
              "directory above it");
}

TEST(PreflightFinding, OfAccessSaysWhatIsNotAllowed) {
    EXPECT_EQ(Describe(PreflightFindingKind::UnreadableFile),
              "the job will stop at the file '/x', which cannot be read");
    EXPECT_EQ(Describe(PreflightFindingKind::UnreadableDirectory),
              "the directory '/x' cannot be read: its copy will be empty");
    EXPECT_EQ(Describe(PreflightFindingKind::UnreadableDirectoryOnMove),
              "the directory '/x' cannot be read: its copy will be empty, and the move will leave "
              "it behind");
    EXPECT_EQ(Describe(PreflightFindingKind::UninspectableEntry),
              "the job will stop at '/x': Reason");
    EXPECT_EQ(Describe(PreflightFindingKind::UnwritableSourceDirectory),
              "the move will stop at the directory '/x', from which nothing can be removed");
    EXPECT_EQ(Describe(PreflightFindingKind::UnremovableEntry),
              "the move will stop at '/x', which cannot be removed");
    EXPECT_EQ(Describe(PreflightFindingKind::UnwritableDestination),
              "nothing can be created in the directory '/x': Reason");
    EXPECT_EQ(Describe(PreflightFindingKind::UnwritableFile),
              "the file '/x' cannot be overwritten: Reason");
}

TEST(PreflightFinding, OfEntriesSaysWhatTheyAre) {
    EXPECT_EQ(Describe(PreflightFindingKind::SpecialEntry),
              "the job will stop at '/x', which is a pipe, a socket or a device");
    EXPECT_EQ(Describe(PreflightFindingKind::DestinationInsideSource),
              "the job will stop at the directory '/x', because the destination is inside it");
    EXPECT_EQ(Describe(PreflightFindingKind::SourceIsDestination),
              "the job will stop at '/x', because the destination is the same");
}

TEST(PreflightFinding, OfSpaceSaysHowMuchThereIs) {
    EXPECT_EQ(Describe(PreflightFindingKind::TooLittleSpace),
              "5.0 GB are needed in '/x', where 1.0 KB are free");
    constexpr bool bStopsJob = false;
    EXPECT_EQ(Describe(PreflightFindingKind::TooLittleSpace, bStopsJob),
              "at most 5.0 GB are needed in '/x', where 1.0 KB are free");
    EXPECT_EQ(Describe(PreflightFindingKind::FileTooLarge),
              "the job will stop at the file '/x': its 5.0 GB are more than the destination can "
              "hold in one file (1.0 KB)");
}

// The largest file of a FAT is one byte smaller than 4 GiB.
TEST(PreflightFinding, OfSizesThatReadTheSameSaysThemInBytes) {
    const PreflightFinding finding{.Kind = PreflightFindingKind::FileTooLarge,
                                   .Path = "/x",
                                   .bStopsJob = true,
                                   .NeededBytes = 4294967296,
                                   .AvailableBytes = 4294967295};
    EXPECT_EQ(DescribeFinding(finding),
              "the job will stop at the file '/x': its 4.0 GB (4294967296 bytes) are more than the "
              "destination can hold in one file (4.0 GB (4294967295 bytes))");
}

TEST(PreflightFinding, OfLengthsSaysHowMuchIsAllowed) {
    EXPECT_EQ(Describe(PreflightFindingKind::NameTooLong),
              "the job will stop at '/x': the destination can hold names of at most 1024 bytes");
    EXPECT_EQ(Describe(PreflightFindingKind::PathTooLong),
              "the job will stop at '/x': its path or that of its copy has more than 4095 bytes");
}

TEST(PreflightFinding, OfAMissingDirectorySaysThatItIsMade) {
    EXPECT_EQ(Describe(PreflightFindingKind::MadeDirectory),
              "the job makes the directory '/x', which does not exist");
}

TEST(PreflightFinding, OfARefusedNameIsItsReason) {
    for (std::size_t kind = 0; kind < kPreflightFindingKinds; ++kind) {
        if (IsRefusal(static_cast<PreflightFindingKind>(kind))) {
            EXPECT_EQ(Describe(static_cast<PreflightFindingKind>(kind)), "Reason");
        }
    }
}

TEST(PreflightFinding, OfTracksSaysWhyTheyCannotBeCopied) {
    EXPECT_EQ(Describe(PreflightFindingKind::MissingDrive), "the job will stop at '/x': Reason");
    EXPECT_EQ(Describe(PreflightFindingKind::MissingTrack),
              "the job will stop at '/x', which is not on the disc");
    EXPECT_EQ(Describe(PreflightFindingKind::EmptyTrack),
              "the job will stop at '/x', which has no length");
    EXPECT_EQ(Describe(PreflightFindingKind::DataTrack),
              "the job will stop at '/x', which is a data track");
}

TEST(PreflightFinding, KeepsTheBytesOfThePath) {
    PreflightFinding finding;
    finding.Kind = PreflightFindingKind::SpecialEntry;
    finding.Path = "/a\nb\xff\x1b[2J";
    EXPECT_EQ(DescribeFinding(finding),
              "the job will stop at '/a\nb\xff\x1b[2J', which is a pipe, a socket or a device");
}

using Kind = PreflightFindingKind;
using Groups = std::vector<FindingGroup>;

PreflightFindings Findings(const std::vector<PreflightFinding>& Found) {
    PreflightFindings findings;
    for (const PreflightFinding& finding : Found) {
        findings.Add(finding);
    }
    return findings;
}

TEST(FindingGroups, SayTheSentenceOnceAndCountWhatIsNotListed) {
    const PreflightFindings findings = Findings({{.Kind = Kind::DanglingLink, .Path = "/a"},
                                                 {.Kind = Kind::SpecialEntry, .Path = "/pipe"},
                                                 {.Kind = Kind::DanglingLink, .Path = "/b"},
                                                 {.Kind = Kind::DanglingLink, .Path = "/c"}});
    EXPECT_EQ(
        GroupFindings(findings, 2),
        (Groups{
            {Kind::DanglingLink, "The job will stop at links that lead nowhere", {"/a", "/b"}, 1},
            {Kind::SpecialEntry,
             "The job will stop at pipes, sockets and devices",
             {"/pipe"},
             0}}));
    EXPECT_EQ(GroupFindings(PreflightFindings(), 2), Groups());
}

TEST(FindingGroups, CountWhatWasNotEvenKept) {
    PreflightFindings findings;
    for (std::size_t i = 0; i < PreflightFindings::kKeptPerKind + 7; ++i) {
        findings.Add({.Kind = Kind::DanglingLink, .Path = "/a"});
    }
    const Groups groups = GroupFindings(findings, 10);
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_EQ(groups.front().Lines.size(), 10U);
    EXPECT_EQ(groups.front().More, PreflightFindings::kKeptPerKind - 3);
}

TEST(FindingGroups, BeginWithWhatRemovesFilesAndThenWithRefusedNames) {
    const PreflightFindings findings =
        Findings({{.Kind = Kind::UnreadableFile, .Path = "/a"},
                  {.Kind = Kind::UnequalKinds, .Path = "/to/a", .Reason = "a sentence"},
                  {.Kind = Kind::LinkToDirectoryOnMove, .Path = "/link"}});
    std::vector<Kind> kinds;
    for (const FindingGroup& group : GroupFindings(findings, 10)) {
        kinds.push_back(group.Kind);
    }
    EXPECT_EQ(kinds, (std::vector<Kind>{Kind::LinkToDirectoryOnMove, Kind::UnequalKinds,
                                        Kind::UnreadableFile}));
}

TEST(FindingGroups, AddToAPathWhatIsItsOwn) {
    const PreflightFindings findings = Findings({
        {.Kind = Kind::TooLittleSpace,
         .Path = "/to",
         .bStopsJob = false,
         .NeededBytes = 2048,
         .AvailableBytes = 1024},
        {.Kind = Kind::FileTooLarge, .Path = "/big", .NeededBytes = 2048, .AvailableBytes = 1024},
        {.Kind = Kind::UninspectableEntry, .Path = "/locked", .Reason = "Permission denied"},
        {.Kind = Kind::TakenName, .Path = "/to/a", .Reason = "cannot create '/to/a': File exists"},
    });
    std::vector<std::string> lines;
    for (const FindingGroup& group : GroupFindings(findings, 10)) {
        lines.push_back(group.Lines.front());
    }
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "/to/a", "/to: at most 2.0 KB are needed, 1.0 KB are free",
                         "/big: 2.0 KB of at most 1.0 KB", "/locked: Permission denied"}));
}

TEST(FindingGroups, HaveASentenceForEveryKind) {
    for (std::size_t kind = 0; kind < kPreflightFindingKinds; ++kind) {
        const PreflightFindings findings =
            Findings({{.Kind = static_cast<Kind>(kind), .Path = "/a"}});
        EXPECT_NE(GroupFindings(findings, 1).front().Sentence, "") << kind;
    }
}

TEST(PreflightFindings, OfALookForGuardsAreGuardsOnly) {
    PreflightFindings findings(PreflightScope::GuardsOnly);
    for (std::size_t kind = 0; kind < kPreflightFindingKinds; ++kind) {
        findings.AddStop(static_cast<Kind>(kind), "/a");
    }
    EXPECT_EQ(findings.Count(), 9U);
    EXPECT_EQ(findings.CountRefusals(), 6U);
    EXPECT_EQ(findings.CountIf(IsUnreadDirectory), 2U);
    EXPECT_EQ(findings.Count(Kind::LinkToDirectoryOnMove), 1U);
}

} // namespace
