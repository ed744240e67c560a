// Audio-CD tracks among the sources. Needs root for a mount.

#include "fake_drive.h"
#include "own_mount_namespace.h"
#include "preflight_fixture.h"

namespace {

const Strings kNothing;

class PreflightTracks : public PreflightTest {
protected:
    static std::string PathOf(int Number) {
        return "cdda:/dev/fake-cd/Track 0" + std::to_string(Number) + ".wav";
    }

    void PlanToCopyTrack(int Number) { PlanToCopy({{PathOf(Number), To / "track.wav"}}); }

    // The findings with their paths as they are.
    Strings FoundTracks() {
        Strings words;
        const PreflightResult result = Look();
        for (const PreflightFinding& finding : result.Findings.Kept()) {
            words.push_back(std::string(PreflightFindingName(finding.Kind)) + " " +
                            finding.Path.string() + (finding.bStopsJob ? ", stops" : ""));
        }
        return words;
    }
};

TEST_F(PreflightTracks, CountAsTheEngineCountsThem) {
    ScopedDrive drive(AudioDisc({150, 200, 300}, 350));
    PlanToCopy({{PathOf(1), To / "1.wav"}, {PathOf(2), To / "2.wav"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), kNothing);
    EXPECT_EQ(drive.Calls,
              (Strings{"open", "header", "entry 1", "entry 2", "entry 3", "entry 170", "close"}));
    const TarvaneTransferUiSnapshot done = Transfer();
    EXPECT_EQ(result.Entries, 2U);
    EXPECT_EQ(result.Bytes, 150U * kFakeFrameBytes);
    EXPECT_EQ(result.Entries, done.TotalItems);
    EXPECT_EQ(result.Bytes, done.TotalBytes);
    EXPECT_EQ(result.CopiedEntries, 2U);
    EXPECT_EQ(result.CopiedBytes, done.DoneBytes);
    EXPECT_EQ(Control.EntriesSeen, 2U);
}

TEST_F(PreflightTracks, OfAKnownDiscAreNotReadAgain) {
    ScopedDrive drive(AudioDisc({150, 200}, 300));
    PlanToCopy({{PathOf(1), To / "1.wav"}, {PathOf(2), To / "2.wav"}});
    const TrackList known{kFakeDevice, {{1, false, 150, 151}, {2, true, 151, 300}}};
    const PreflightResult result =
        RunPreflight({Plan, Rules, Scope, {{kFakeDevice, known}}}, Control);
    EXPECT_EQ(drive.Calls, kNothing);
    EXPECT_EQ(result.Bytes, std::uint64_t{kFakeFrameBytes});
    EXPECT_EQ(result.Findings.Count(PreflightFindingKind::DataTrack), 1U);
}

// What the link leads to stays.
TEST_F(PreflightTracks, GetNoRoomFromALinkThatTheyReplace) {
    constexpr std::size_t kHalfAMegabyte = 524288;
    ScopedDrive drive(AudioDisc({150}, 400));
    const OwnMountNamespace inside;
    const ScopedMount small{MountTmpfs(Room / "small", "size=1m")};
    WriteFile(small.Path() / "old", std::string(kHalfAMegabyte, 'y'));
    std::filesystem::create_symlink("old", small.Path() / "track.wav");
    PlanToCopy({{PathOf(1), small.Path() / "track.wav"}});
    EXPECT_EQ(Found(), Strings{"too-little-space small, stops"});
    Rules.bFollowLinks = true;
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightTracks, OfDataAreFound) {
    FakeDisc disc = AudioDisc({150, 200}, 300);
    disc.Tracks[0].bData = true;
    ScopedDrive drive(disc);
    PlanToCopyTrack(1);
    EXPECT_EQ(FoundTracks(), Strings{"data-track " + PathOf(1) + ", stops"});
    EXPECT_EQ(TransferMessage(), "Selected CD track is a data track, not audio.");
}

TEST_F(PreflightTracks, ThatTheDiscDoesNotHaveAreFound) {
    ScopedDrive drive(AudioDisc({150, 200}, 300));
    PlanToCopyTrack(3);
    EXPECT_EQ(FoundTracks(), Strings{"missing-track " + PathOf(3) + ", stops"});
    EXPECT_EQ(TransferMessage(), "Audio CD track is outside the disc TOC.");
}

TEST_F(PreflightTracks, WithoutANumberAreFound) {
    ScopedDrive drive(AudioDisc({150, 200}, 300));
    PlanToCopy({{"cdda:/dev/fake-cd", To / "track.wav"}});
    EXPECT_EQ(FoundTracks(), Strings{"missing-track cdda:/dev/fake-cd, stops"});
    EXPECT_EQ(TransferMessage(), "Invalid audio CD track path.");
}

TEST_F(PreflightTracks, WithoutLengthAreFound) {
    ScopedDrive drive(AudioDisc({150, 200, 200}, 300));
    PlanToCopyTrack(2);
    EXPECT_EQ(FoundTracks(), Strings{"empty-track " + PathOf(2) + ", stops"});
    EXPECT_EQ(TransferMessage(), "Audio CD track has an invalid frame range.");
}

TEST_F(PreflightTracks, WithoutADiscAreFound) {
    FakeDisc disc = AudioDisc({150}, 300);
    disc.bPresent = false;
    ScopedDrive drive(disc);
    PlanToCopyTrack(1);
    const PreflightResult result = Look();
    ASSERT_EQ(result.Findings.Count(), 1U);
    EXPECT_EQ(result.Findings.Kept().front().Kind, PreflightFindingKind::MissingDrive);
    EXPECT_EQ(result.Findings.Kept().front().Reason, "no disc in '/dev/fake-cd'");
    EXPECT_TRUE(result.Findings.AnyStopsJob());
    EXPECT_FALSE(Transfer().bSucceeded);
}

TEST_F(PreflightTracks, WithoutADriveAreFound) {
    PlanToCopy({{"cdda:/dev/no-such-drive/1", To / "track.wav"}});
    const PreflightResult result = Look();
    ASSERT_EQ(FoundTracks(), Strings{"missing-drive cdda:/dev/no-such-drive/1, stops"});
    EXPECT_FALSE(Transfer().bSucceeded);
}

} // namespace
