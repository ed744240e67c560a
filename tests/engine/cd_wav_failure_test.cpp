// A track of an audio CD that does not become a file: what is said, closed, removed and counted.

#include "engine_source.h"

#include "failing_stream.h"
#include "mounts.h"
#include "track_extraction.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

TEST_F(TrackExtraction, OfTheLastTrackFailsOnADriveThatRefusesToReadPastTheLeadOut) {
    FakeDisc disc = AudioDisc({kStart}, 1000);
    disc.bStrict = true;
    ScopedDrive drive(disc);
    ExpectFailure("Failed reading audio CD sectors: Input/output error");
    EXPECT_FALSE(fs::exists(Wav));
    // The read that would go from address 838 to 853 crosses the lead-out at 850.
    EXPECT_EQ(drive.Reads().back(), "read 838 16");
}

TEST_F(TrackExtraction, OfACanceledJobTouchesNothing) {
    ScopedDrive drive(OneTrack(1));
    Wav = Directory / "new/Track 01.wav";
    Job.RequestCancel();
    ExpectFailure("Transfer canceled.");
    EXPECT_EQ(drive.Calls, Strings{});
    EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
}

TEST_F(TrackExtraction, IntoADirectoryThatCannotBeMadeDoesNotOpenTheDrive) {
    ScopedDrive drive(OneTrack(1));
    WriteFile(Directory / "file", "x");
    Wav = Directory / "file/Track 01.wav";
    ExpectFailure("Failed to create destination directory: Not a directory");
    EXPECT_EQ(drive.Calls, Strings{});
}

TEST_F(TrackExtraction, OfADataTrackLeavesTheDestinationUntouched) {
    FakeDisc disc = OneTrack(1);
    disc.Tracks[0].bData = true;
    ScopedDrive drive(disc);
    WriteFile(Wav, "old");
    ExpectFailure("Selected CD track is a data track, not audio.");
    EXPECT_EQ(ReadFile(Wav), "old");
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
}

TEST_F(TrackExtraction, OfATableThatGoesBackwardsLeavesTheDestinationUntouched) {
    ScopedDrive drive(AudioDisc({kStart}, 10));
    WriteFile(Wav, "old");
    ExpectFailure("Audio CD track has an invalid frame range.");
    EXPECT_EQ(ReadFile(Wav), "old");
}

TEST_F(TrackExtraction, FailsWhenTheDriveDoesNotOpenAgain) {
    ScopedDrive drive(OneTrack(1));
    drive.OpenErrors = {0, EBUSY};
    WriteFile(Wav, "old");
    ExpectFailure("Could not open CD drive /dev/fake-cd: Device or resource busy");
    EXPECT_EQ(ReadFile(Wav), "old");
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 1", "entry 170", "close", "open"}));
}

TEST_F(TrackExtraction, FailsAndClosesTheDriveWhenTheDestinationDoesNotOpen) {
    ScopedDrive drive(OneTrack(1));
    fs::create_directory(Wav);
    ExpectFailure("Failed to open destination WAV file.");
    EXPECT_TRUE(fs::is_directory(Wav));
    EXPECT_EQ(drive.Reads(), Strings{});
    EXPECT_EQ(drive.Calls.back(), "close");
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
    EXPECT_EQ(Job.MakeUiSnapshot().PathText,
              TarvaneTransferJob(false, 1, "").MakeUiSnapshot().PathText);
}

TEST_F(TrackExtraction, RemovesTheFileWhenTheHeaderCannotBeWritten) {
    ScopedDrive drive(OneTrack(1));
    const FailingStream failure(FailingStream::Call::Write, 1);
    ExpectFailure("Failed to write WAV header.");
    EXPECT_FALSE(fs::exists(Wav));
    EXPECT_EQ(drive.Reads(), Strings{});
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileTotalBytes, 0U);
    ExpectCounters(0, 0);
}

TEST_F(TrackExtraction, RemovesTheFileWhenTheFileSystemIsFull) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountTmpfs(Directory / "full", "size=64k");
    ScopedDrive drive(OneTrack(64));
    Wav = disk.Path() / "Track 01.wav";
    ExpectFailure("Failed while writing WAV data.");
    EXPECT_EQ(TreeOf(disk.Path()), Tree{});
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
    // What was written before stays counted.
    EXPECT_EQ(drive.Reads(), (Strings{"read 150 16", "read 166 16"}));
    ExpectCounters(std::uint64_t{16} * 2352, 0);
}

TEST_F(TrackExtraction, RemovesTheFileWhenItCannotBeFlushed) {
    ScopedDrive drive(OneTrack(17));
    const FailingStream failure(FailingStream::Call::Flush, 1);
    ExpectFailure("Failed to flush destination WAV file.");
    EXPECT_FALSE(fs::exists(Wav));
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
    ExpectCounters(std::uint64_t{17} * 2352, 0);
}

TEST_F(TrackExtraction, RemovesTheFileWhenCanceledBetweenReads) {
    ScopedDrive drive(OneTrack(64));
    drive.Before = [&](const std::string& Call) {
        if (Call == "read 166 16") {
            Job.RequestCancel();
        }
    };
    ExpectFailure("Transfer canceled.");
    EXPECT_FALSE(fs::exists(Wav));
    EXPECT_EQ(drive.Reads(), (Strings{"read 150 16", "read 166 16"}));
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
    ExpectCounters(std::uint64_t{32} * 2352, 0);
}

TEST_F(TrackExtraction, IsCompleteWhenTheCancelComesWithTheLastRead) {
    ScopedDrive drive(OneTrack(16));
    drive.Before = [&](const std::string& Call) {
        if (Call == "read 150 16") {
            Job.RequestCancel();
        }
    };
    EXPECT_TRUE(Extract());
    EXPECT_EQ(fs::file_size(Wav), 44U + 16 * 2352);
}

TEST_F(TrackExtraction, RemovesTheFileAfterAReadErrorAndDoesNotTryAgain) {
    FakeDisc disc = OneTrack(64);
    disc.Faults = {{"read 170", EIO, 0}};
    ScopedDrive drive(disc);
    ExpectFailure("Failed reading audio CD sectors: Input/output error");
    EXPECT_FALSE(fs::exists(Wav));
    EXPECT_EQ(drive.Reads(), (Strings{"read 150 16", "read 166 16"}));
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
    ExpectCounters(std::uint64_t{16} * 2352, 0);
}

TEST_F(TrackExtraction, LosesTheReplacedFileAfterAReadError) {
    FakeDisc disc = OneTrack(1);
    disc.Faults = {{"read 150", EIO, 0}};
    ScopedDrive drive(disc);
    WriteFile(Wav, "old");
    ExpectFailure("Failed reading audio CD sectors: Input/output error");
    EXPECT_FALSE(fs::exists(Wav));
}

TEST_F(TrackExtraction, EndsWhenTheDiscIsTakenOut) {
    ScopedDrive drive(OneTrack(64));
    drive.Before = [&](const std::string& Call) { drive.Disc().bPresent = Call != "read 166 16"; };
    ExpectFailure("Failed reading audio CD sectors: No medium found");
    EXPECT_FALSE(fs::exists(Wav));
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
}

TEST_F(TrackExtraction, TakesTheErrorTextOfAReadAfterTheCleanUp) {
    FakeDisc disc = OneTrack(1);
    disc.Faults = {{"read 150", EIO, 0}};
    ScopedDrive drive(disc);
    drive.ErrnoAfterClose = ENXIO;
    ExpectFailure("Failed reading audio CD sectors: No such device or address");
}

TEST_F(TrackExtraction, ClosesTheDriveBeforeItRemovesTheFile) {
    FakeDisc disc = OneTrack(1);
    disc.Faults = {{"read 150", EIO, 0}};
    ScopedDrive drive(disc);
    std::vector<bool> existedAtClose;
    drive.Before = [&](const std::string& Call) {
        if (Call == "close") {
            existedAtClose.push_back(fs::exists(Wav));
        }
    };
    EXPECT_FALSE(Extract());
    EXPECT_EQ(existedAtClose, (std::vector<bool>{false, true}));
    EXPECT_FALSE(fs::exists(Wav));
}

} // namespace
