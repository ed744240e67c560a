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
              "the directory '/x' cannot be read: its copy will be empty, and a move will leave it "
              "behind");
    EXPECT_EQ(Describe(PreflightFindingKind::UninspectableEntry),
              "the job will stop at '/x': Reason");
    EXPECT_EQ(Describe(PreflightFindingKind::UnwritableSourceDirectory),
              "the move will stop at the directory '/x', from which nothing can be removed");
    EXPECT_EQ(Describe(PreflightFindingKind::UnwritableDestination),
              "nothing can be created in the directory '/x'");
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
              "5.0 GB are needed in '/x', where 1.0 KB are free; less when part of it is already "
              "there");
    EXPECT_EQ(Describe(PreflightFindingKind::FileTooLarge),
              "the job will stop at the file '/x': its 5.0 GB are more than the destination can "
              "hold in one file (1.0 KB)");
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

} // namespace
