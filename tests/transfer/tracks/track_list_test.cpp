// The table of contents of an audio CD, as the program lists it.

#include "table_of_contents.h"

#include "fake_drive.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

// The list, or an empty one after a failed expectation.
TrackList ReadList(const std::string& Device = kFakeDevice) {
    const auto result = ReadTrackList(Device);
    if (const auto* failure = std::get_if<TrackListFailure>(&result)) {
        ADD_FAILURE() << failure->Reason;
        return {};
    }
    return std::get<TrackList>(result);
}

void ExpectFailure(const std::string& Message, const std::string& Device = kFakeDevice) {
    const auto result = ReadTrackList(Device);
    const auto* failure = std::get_if<TrackListFailure>(&result);
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->Reason, Message);
}

void ExpectTrack(const TrackListEntry& Track, int Number, std::int32_t StartFrame,
                 std::int32_t EndFrame, bool bData) {
    EXPECT_EQ(Track.Number, Number);
    EXPECT_EQ(Track.StartFrame, StartFrame);
    EXPECT_EQ(Track.EndFrame, EndFrame);
    EXPECT_EQ(Track.bData, bData);
}

FakeDisc DiscOf(const std::vector<FakeTrack>& Tracks, int LeadOutFrame) {
    FakeDisc disc;
    disc.Tracks = Tracks;
    disc.LeadOutFrame = LeadOutFrame;
    return disc;
}

TEST(TrackList, HasEveryTrackUpToTheNextOneOrTheLeadOut) {
    ScopedDrive drive(AudioDisc({150, 18783, 30000}, 40500));
    const TrackList list = ReadList();
    EXPECT_EQ(list.Device, kFakeDevice);
    ASSERT_EQ(list.Tracks.size(), 3U);
    ExpectTrack(list.Tracks[0], 1, 150, 18783, false);
    ExpectTrack(list.Tracks[1], 2, 18783, 30000, false);
    ExpectTrack(list.Tracks[2], 3, 30000, 40500, false);
}

TEST(TrackList, IsReadWithTheRequestsOfACopy) {
    ScopedDrive drive(AudioDisc({150, 18783}, 40500));
    ReadList();
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 1", "entry 2", "entry 170", "close"}));
    EXPECT_EQ(drive.OpenFlags, std::vector<int>{O_RDONLY | O_NONBLOCK | O_CLOEXEC});
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
}

TEST(TrackList, HasTheDataTracksToo) {
    FakeDisc disc = AudioDisc({150, 18783}, 40500);
    disc.Tracks[0].bData = true;
    ScopedDrive drive(disc);
    const TrackList list = ReadList();
    ASSERT_EQ(list.Tracks.size(), 2U);
    ExpectTrack(list.Tracks[0], 1, 150, 18783, true);
    ExpectTrack(list.Tracks[1], 2, 18783, 40500, false);
}

TEST(TrackList, HasNinetyNineTracks) {
    std::vector<int> starts;
    for (int number = 0; number < 99; ++number) {
        starts.push_back(150 + number * 300);
    }
    ScopedDrive drive(AudioDisc(starts, 150 + 99 * 300));
    const TrackList list = ReadList();
    ASSERT_EQ(list.Tracks.size(), 99U);
    ExpectTrack(list.Tracks.back(), 99, 150 + 98 * 300, 150 + 99 * 300, false);
}

TEST(TrackList, StartsWithTheFirstTrackOfTheDisc) {
    FakeDisc disc = AudioDisc({150, 1000}, 2000);
    disc.Tracks[0].Number = 5;
    disc.Tracks[1].Number = 6;
    ScopedDrive drive(disc);
    const TrackList list = ReadList();
    ASSERT_EQ(list.Tracks.size(), 2U);
    ExpectTrack(list.Tracks[0], 5, 150, 1000, false);
}

TEST(TrackList, KeepsATrackWithoutLength) {
    ScopedDrive drive(AudioDisc({150, 5000, 5000}, 5000));
    const TrackList list = ReadList();
    ASSERT_EQ(list.Tracks.size(), 3U);
    EXPECT_TRUE(list.Tracks[0].HasValidRange());
    EXPECT_FALSE(list.Tracks[1].HasValidRange());
    EXPECT_FALSE(list.Tracks[2].HasValidRange());
}

TEST(TrackList, IsNotMadeFromATableThatCannotBe) {
    const std::vector<std::pair<std::string, FakeDisc>> discs = {
        {"all zero", DiscOf({{0, 0}}, 0)},
        {"entries of zeros", DiscOf({{1, 0}, {2, 0}}, 0)},
        {"zeros from the second entry on", DiscOf({{1, 150}, {2, 0}}, 0)},
        {"track 0", DiscOf({{0, 150}, {1, 1000}}, 2000)},
        {"track 100", DiscOf({{100, 150}}, 2000)},
        {"first after last", DiscOf({{5, 150}, {2, 1000}}, 2000)},
        {"backwards", DiscOf({{1, 1000}, {2, 150}}, 2000)},
        {"lead-out before a track", DiscOf({{1, 150}, {2, 1000}}, 999)},
        {"nothing but a start", DiscOf({{1, 150}}, 150)},
    };
    for (const auto& [what, disc] : discs) {
        SCOPED_TRACE(what);
        ScopedDrive drive(disc);
        ExpectFailure("The drive gave no readable table of contents.");
        EXPECT_EQ(drive.OpenDescriptors(), 0U);
    }
}

TEST(TrackList, OfADriveThatIsMissingSaysWhy) {
    ExpectFailure("cannot open CD drive '/nowhere/sr0': No such file or directory", "/nowhere/sr0");
}

TEST(TrackList, OfADriveThatDoesNotOpenSaysWhy) {
    ScopedDrive drive(AudioDisc({150}, 300));
    drive.OpenErrors = {EACCES};
    ExpectFailure("cannot open CD drive '/dev/fake-cd': Permission denied");
}

TEST(TrackList, OfSomethingElseSaysSo) {
    ExpectFailure("'/dev/null' is not a CD drive", "/dev/null");
    ExpectFailure("'/' is not a CD drive", "/");
}

TEST(TrackList, OfAnEmptyDriveSaysSoAndClosesIt) {
    FakeDisc disc;
    disc.bPresent = false;
    ScopedDrive drive(disc);
    ExpectFailure("no disc in '/dev/fake-cd'");
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "close"}));
}

TEST(TrackList, OfADataDiscSaysSoAndClosesTheDrive) {
    FakeDisc disc = AudioDisc({150}, 300000);
    disc.Tracks[0].bData = true;
    ScopedDrive drive(disc);
    ExpectFailure("no audio tracks on the disc in '/dev/fake-cd'");
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
}

TEST(TrackList, OfADiscThatCannotBeReadSaysWhyAndClosesTheDrive) {
    for (const char* request : {"header", "entry 1", "entry 2", "entry 170"}) {
        FakeDisc disc = AudioDisc({150, 18783}, 40500);
        disc.Faults = {{request, EIO, 0}};
        ScopedDrive drive(disc);
        drive.ErrnoAfterClose = ENXIO;
        ExpectFailure("cannot read the table of contents of the disc in '/dev/fake-cd': "
                      "Input/output error");
        EXPECT_EQ(drive.OpenDescriptors(), 0U) << request;
    }
}

TEST(TrackList, OfADiscThatIsTakenOutSaysSo) {
    FakeDisc disc = AudioDisc({150, 18783}, 40500);
    disc.Faults = {{"entry 2", ENOMEDIUM, 0}};
    ScopedDrive drive(disc);
    ExpectFailure("no disc in '/dev/fake-cd'");
}

TEST(TrackFileName, HasTwoDigits) {
    EXPECT_EQ(TrackFileName(1), "Track 01.wav");
    EXPECT_EQ(TrackFileName(42), "Track 42.wav");
}

TEST(TrackPath, NamesTheDriveAndTheFile) {
    EXPECT_EQ(TrackPath("/dev/sr0", 3), "cdda:/dev/sr0/Track 03.wav");
}

TEST(TrackWavSize, IsTheHeaderAndTheFrames) {
    EXPECT_EQ(TrackWavSizeBytes({1, false, 150, 151}), 2396U);
    EXPECT_EQ(TrackWavSizeBytes({1, false, 150, 13650}), 31752044U);
    EXPECT_EQ(TrackWavSizeBytes({1, false, 0, 1826091}), 4294966076U);
}

TEST(TrackWavSize, OfADataTrackOrAnInvalidRangeIsZero) {
    EXPECT_EQ(TrackWavSizeBytes({1, true, 150, 151}), 0U);
    EXPECT_EQ(TrackWavSizeBytes({1, false, 150, 150}), 0U);
    EXPECT_EQ(TrackWavSizeBytes({1, false, 150, 10}), 0U);
}

} // namespace
