// Which frames of an audio CD belong to a track.

#include "engine_source.h"

#include "fake_drive.h"
#include "link_names.h"

#include <gtest/gtest.h>

#include <optional>

int RealTrackFromPath(const std::string& Path) REAL(TarvaneCddaTrackFromPath);
int WrappedTrackFromPath(const std::string& Path) WRAPPED(TarvaneCddaTrackFromPath);

namespace {

// What a host that reads paths in another way makes of any path.
std::optional<int> gHostsTrack;

using Strings = std::vector<std::string>;

struct RangeResult {
    bool bFound = false;
    std::int32_t StartFrame = -1;
    std::int32_t EndFrame = -1;
    std::string ErrorMessage = "untouched";
};

RangeResult RangeOf(const std::string& Source) {
    RangeResult result;
    result.bFound =
        GetCddaTrackFrameRange(Source, result.StartFrame, result.EndFrame, result.ErrorMessage);
    return result;
}

std::string TrackPathOf(int Number) {
    return "cdda:/dev/fake-cd/" + std::to_string(Number);
}

RangeResult RangeOfTrack(int Number) {
    return RangeOf(TrackPathOf(Number));
}

void ExpectRange(const RangeResult& Result, std::int32_t StartFrame, std::int32_t EndFrame) {
    EXPECT_TRUE(Result.bFound);
    EXPECT_EQ(Result.StartFrame, StartFrame);
    EXPECT_EQ(Result.EndFrame, EndFrame);
    EXPECT_EQ(Result.ErrorMessage, "untouched");
}

void ExpectFailure(const RangeResult& Result, const std::string& Message) {
    EXPECT_FALSE(Result.bFound);
    EXPECT_EQ(Result.ErrorMessage, Message);
}

// Track 1 at 00:02:00, track 2 at 04:10:33, the lead-out at 09:00:00.
FakeDisc TwoTracks() {
    return AudioDisc({150, 18783}, 40500);
}

cdrom_msf0 Msf(__u8 Minute, __u8 Second, __u8 Frame) {
    return {Minute, Second, Frame};
}

TEST(CddaMsfToFrames, CountsSeventyFiveFramesASecond) {
    EXPECT_EQ(CddaMsfToFrames(Msf(0, 0, 0)), 0);
    EXPECT_EQ(CddaMsfToFrames(Msf(0, 0, 1)), 1);
    EXPECT_EQ(CddaMsfToFrames(Msf(0, 1, 0)), 75);
    EXPECT_EQ(CddaMsfToFrames(Msf(1, 0, 0)), 4500);
    EXPECT_EQ(CddaMsfToFrames(Msf(4, 10, 33)), 18783);
}

TEST(CddaMsfToFrames, DoesNotSubtractTheLeadIn) {
    EXPECT_EQ(CddaMsfToFrames(Msf(0, 2, 0)), 150);
}

TEST(CddaMsfToFrames, TakesEveryByte) {
    EXPECT_EQ(CddaMsfToFrames(Msf(255, 255, 255)), 255 * 4500 + 255 * 75 + 255);
}

TEST(CddaTrackFrameRange, ReachesFromTheTrackToTheNextOne) {
    ScopedDrive drive(TwoTracks());
    ExpectRange(RangeOfTrack(1), 150, 18783);
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 1", "entry 2", "close"}));
}

TEST(CddaTrackFrameRange, OfTheLastTrackEndsAtTheLeadOut) {
    ScopedDrive drive(TwoTracks());
    ExpectRange(RangeOfTrack(2), 18783, 40500);
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 2", "entry 170", "close"}));
}

TEST(CddaTrackFrameRange, OfTheOnlyTrackEndsAtTheLeadOut) {
    ScopedDrive drive(AudioDisc({150}, 151));
    ExpectRange(RangeOfTrack(1), 150, 151);
}

TEST(CddaTrackFrameRange, IsFoundByTheNameOfTheTracksFile) {
    ScopedDrive drive(TwoTracks());
    ExpectRange(RangeOf("cdda:/dev/fake-cd/Track 02.wav"), 18783, 40500);
}

TEST(CddaTrackFrameRange, IsFoundOnADiscWhoseFirstTrackIsNotOne) {
    FakeDisc disc = AudioDisc({150, 1000}, 2000);
    disc.Tracks[0].Number = 5;
    disc.Tracks[1].Number = 6;
    ScopedDrive drive(disc);
    ExpectRange(RangeOfTrack(5), 150, 1000);
    ExpectRange(RangeOfTrack(6), 1000, 2000);
    ExpectFailure(RangeOfTrack(4), "Audio CD track is outside the disc TOC.");
}

TEST(CddaTrackFrameRange, IncludesTheGapBeforeADataTrack) {
    FakeDisc disc = AudioDisc({150, 1000, 2000}, 3000);
    disc.Tracks[1].bData = true;
    ScopedDrive drive(disc);
    ExpectRange(RangeOfTrack(1), 150, 1000);
}

TEST(CddaTrackFrameRange, OpensTheDriveForReadingWithoutBlocking) {
    ScopedDrive drive(TwoTracks());
    RangeOfTrack(1);
    EXPECT_EQ(drive.OpenFlags, std::vector<int>{O_RDONLY | O_NONBLOCK});
}

TEST(CddaTrackFrameRange, KeepsNoDescriptorBetweenCalls) {
    ScopedDrive drive(TwoTracks());
    RangeOfTrack(1);
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
    RangeOfTrack(2);
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
    EXPECT_EQ(std::count(drive.Calls.begin(), drive.Calls.end(), "open"), 2);
}

TEST(CddaTrackFrameRange, OfAPathWithoutATrackOpensNoDrive) {
    ScopedDrive drive(TwoTracks());
    for (const char* path : {"cdda:/dev/fake-cd/0", "cdda:/dev/fake-cd/-1", "cdda:/dev/fake-cd",
                             "cdda:/dev/fake-cd/Track 1.wav", "cdda:/dev/fake-cd/4294967297"}) {
        const RangeResult result = RangeOf(path);
        ExpectFailure(result, "Invalid audio CD track path.");
        EXPECT_EQ(result.StartFrame, 0) << path;
        EXPECT_EQ(result.EndFrame, 0) << path;
    }
    EXPECT_EQ(drive.Calls, Strings{});
}

TEST(CddaTrackFrameRange, OfAPathWithoutADriveOpensNoDrive) {
    ScopedDrive drive(TwoTracks());
    ExpectFailure(RangeOf("cdda:fake-cd/1"), "Invalid audio CD track path.");
    ExpectFailure(RangeOf("/dev/fake-cd/1"), "Invalid audio CD track path.");
    ExpectFailure(RangeOf(""), "Invalid audio CD track path.");
    EXPECT_EQ(drive.Calls, Strings{});
}

TEST(CddaTrackFrameRange, OfANegativeTrackOpensNoDrive) {
    ScopedDrive drive(TwoTracks());
    gHostsTrack = -1;
    ExpectFailure(RangeOfTrack(1), "Invalid audio CD track path.");
    EXPECT_EQ(drive.Calls, Strings{});
    gHostsTrack.reset();
}

TEST(CddaTrackFrameRange, OfATrackWithoutADriveIsInvalid) {
    gHostsTrack = 1;
    ExpectFailure(RangeOf("cdda:1"), "Invalid audio CD track path.");
    gHostsTrack.reset();
}

TEST(CddaTrackFrameRange, OfADriveThatDoesNotOpenSaysWhy) {
    ScopedDrive drive(TwoTracks());
    drive.OpenErrors = {EACCES};
    ExpectFailure(RangeOfTrack(1), "Could not open CD drive /dev/fake-cd: Permission denied");
    EXPECT_EQ(drive.Calls, Strings{"open"});
}

TEST(CddaTrackFrameRange, OfADriveThatIsMissingSaysWhy) {
    ExpectFailure(RangeOf("cdda:/nowhere/sr0/1"),
                  "Could not open CD drive /nowhere/sr0: No such file or directory");
}

TEST(CddaTrackFrameRange, OfADriveWithoutADiscSaysWhyAndClosesTheDrive) {
    FakeDisc disc;
    disc.bPresent = false;
    ScopedDrive drive(disc);
    ExpectFailure(RangeOfTrack(1), "No readable audio CD TOC in /dev/fake-cd: No medium found");
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "close"}));
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
}

TEST(CddaTrackFrameRange, OfATrackBeyondTheTableSaysSoAndClosesTheDrive) {
    ScopedDrive drive(
        AudioDisc({150, 200, 300, 400, 500, 600, 700, 800, 900, 1000, 1100, 1200}, 1300));
    ExpectFailure(RangeOfTrack(13), "Audio CD track is outside the disc TOC.");
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "close"}));
    ExpectRange(RangeOfTrack(12), 1200, 1300);
}

TEST(CddaTrackFrameRange, DoesNotTakeALargeNumberForAnExistingTrack) {
    ScopedDrive drive(TwoTracks());
    ExpectFailure(RangeOfTrack(257), "Audio CD track is outside the disc TOC.");
    ExpectFailure(RangeOfTrack(2147483647), "Audio CD track is outside the disc TOC.");
}

TEST(CddaTrackFrameRange, DoesNotTakeTheLeadOutForATrack) {
    ScopedDrive drive(TwoTracks());
    ExpectFailure(RangeOfTrack(CDROM_LEADOUT), "Audio CD track is outside the disc TOC.");
}

TEST(CddaTrackFrameRange, OfATrackWhoseStartCannotBeReadSaysWhyAndClosesTheDrive) {
    FakeDisc disc = TwoTracks();
    disc.Faults = {{"entry 1", EIO, 0}};
    ScopedDrive drive(disc);
    const RangeResult result = RangeOfTrack(1);
    ExpectFailure(result, "Could not read audio CD track start: Input/output error");
    EXPECT_EQ(result.StartFrame, 0);
    EXPECT_EQ(result.EndFrame, 0);
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 1", "close"}));
}

TEST(CddaTrackFrameRange, OfADataTrackSaysSoAndClosesTheDrive) {
    FakeDisc disc = TwoTracks();
    disc.Tracks[0].bData = true;
    ScopedDrive drive(disc);
    const RangeResult result = RangeOfTrack(1);
    ExpectFailure(result, "Selected CD track is a data track, not audio.");
    EXPECT_EQ(result.StartFrame, 0);
    EXPECT_EQ(result.EndFrame, 0);
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 1", "close"}));
}

TEST(CddaTrackFrameRange, OfAnAudioTrackBehindADataTrackIsFound) {
    FakeDisc disc = TwoTracks();
    disc.Tracks[0].bData = true;
    ScopedDrive drive(disc);
    ExpectRange(RangeOfTrack(2), 18783, 40500);
}

TEST(CddaTrackFrameRange, OfATrackWhoseEndCannotBeReadSaysWhyAndClosesTheDrive) {
    FakeDisc disc = TwoTracks();
    disc.Faults = {{"entry 2", EIO, 0}};
    ScopedDrive drive(disc);
    const RangeResult result = RangeOfTrack(1);
    ExpectFailure(result, "Could not read audio CD track end: Input/output error");
    EXPECT_EQ(result.StartFrame, 150);
    EXPECT_EQ(result.EndFrame, 0);
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 1", "entry 2", "close"}));
}

TEST(CddaTrackFrameRange, OfTheLastTrackNeedsTheLeadOut) {
    FakeDisc disc = TwoTracks();
    disc.Faults = {{"entry 170", ENOMEDIUM, 0}};
    ScopedDrive drive(disc);
    ExpectFailure(RangeOfTrack(2), "Could not read audio CD track end: No medium found");
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
}

TEST(CddaTrackFrameRange, ThatIsEmptyIsInvalid) {
    ScopedDrive drive(AudioDisc({150, 150}, 300));
    const RangeResult result = RangeOfTrack(1);
    ExpectFailure(result, "Audio CD track has an invalid frame range.");
    EXPECT_EQ(result.StartFrame, 150);
    EXPECT_EQ(result.EndFrame, 150);
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
}

TEST(CddaTrackFrameRange, ThatGoesBackwardsIsInvalidAndKeepsItsNumbers) {
    ScopedDrive drive(AudioDisc({5000, 150}, 300));
    const RangeResult result = RangeOfTrack(1);
    ExpectFailure(result, "Audio CD track has an invalid frame range.");
    EXPECT_EQ(result.StartFrame, 5000);
    EXPECT_EQ(result.EndFrame, 150);
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 1", "entry 2", "close"}));
}

TEST(CddaTrackFrameRange, NamesTheErrorOfTheRequestAndNotThatOfTheClose) {
    for (const char* request : {"header", "entry 1", "entry 2"}) {
        FakeDisc disc = TwoTracks();
        disc.Faults = {{request, EIO, 0}};
        ScopedDrive drive(disc);
        drive.ErrnoAfterClose = ENXIO;
        EXPECT_TRUE(RangeOfTrack(1).ErrorMessage.ends_with(": Input/output error")) << request;
    }
}

} // namespace

int WrappedTrackFromPath(const std::string& Path) {
    return gHostsTrack ? *gHostsTrack : RealTrackFromPath(Path);
}
