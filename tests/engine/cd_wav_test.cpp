// The WAV file that a track of an audio CD becomes.

#include "engine_source.h"

#include "track_extraction.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

std::string Le32(std::uint32_t Value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((Value >> shift) & 0xffU);
    }
    return bytes;
}

// The whole header, written out byte by byte.
std::string HeaderOf(std::uint32_t DataBytes) {
    using namespace std::string_literals;
    return "RIFF" + Le32(DataBytes + 36) + "WAVEfmt \x10\0\0\0\x01\0\x02\0"s +
           "\x44\xac\0\0\x10\xb1\x02\0\x04\0\x10\0"s + "data" + Le32(DataBytes);
}

TEST(WriteLe, PutsTheLowestByteFirst) {
    std::ostringstream out;
    WriteLe16(out, 0x0102);
    WriteLe32(out, 0x03040506U);
    EXPECT_EQ(out.str(), "\x02\x01\x06\x05\x04\x03");
}

TEST(WriteLe, PutsTheLargestNumbers) {
    std::ostringstream out;
    WriteLe16(out, 0xfffe);
    WriteLe32(out, 0xfffefdfcU);
    EXPECT_EQ(out.str(), "\xfe\xff\xfc\xfd\xfe\xff");
}

TEST(WriteWavHeader, WritesFortyFourBytes) {
    std::ostringstream out;
    WriteWavHeader(out, 2352);
    EXPECT_EQ(out.str().size(), 44U);
    EXPECT_EQ(out.str(), HeaderOf(2352));
}

TEST(WriteWavHeader, FitsTheLargestTrack) {
    std::ostringstream out;
    WriteWavHeader(out, 4294966032U);
    EXPECT_EQ(out.str().substr(4, 4), Le32(4294966068U));
    EXPECT_EQ(out.str().substr(40, 4), Le32(4294966032U));
}

TEST_F(TrackExtraction, OfOneFrameWritesTheHeaderAndTheFrame) {
    ScopedDrive drive(OneTrack(1));
    EXPECT_TRUE(Extract());
    EXPECT_EQ(ErrorMessage, "untouched");
    EXPECT_EQ(ReadFile(Wav), HeaderOf(2352) + FakeFrames(kDisc, kStart, 1));
    EXPECT_EQ(fs::file_size(Wav), 2396U);
    EXPECT_EQ(drive.Reads(), Strings{"read 150 1"});
    ExpectCounters(2352, 1);
}

TEST_F(TrackExtraction, OfSeventeenFramesReadsSixteenAndOne) {
    ScopedDrive drive(OneTrack(17));
    EXPECT_TRUE(Extract());
    EXPECT_EQ(drive.Reads(), (Strings{"read 150 16", "read 166 1"}));
    EXPECT_EQ(ReadFile(Wav), HeaderOf(17 * 2352) + FakeFrames(kDisc, kStart, 17));
    ExpectCounters(std::uint64_t{17} * 2352, 1);
}

TEST_F(TrackExtraction, OfSixteenFramesReadsOnce) {
    ScopedDrive drive(OneTrack(16));
    EXPECT_TRUE(Extract());
    EXPECT_EQ(drive.Reads(), Strings{"read 150 16"});
}

TEST_F(TrackExtraction, OfThreeMinutesHasTheSizeOfThreeMinutes) {
    constexpr int kFrames = 13500;
    ScopedDrive drive(OneTrack(kFrames));
    EXPECT_TRUE(Extract());
    const std::string wav = ReadFile(Wav);
    EXPECT_EQ(wav.size(), 31752044U);
    EXPECT_EQ(wav.substr(0, 44), HeaderOf(31752000));
    EXPECT_TRUE(wav.substr(44) == FakeFrames(kDisc, kStart, kFrames));
    EXPECT_EQ(drive.Reads().size(), 844U);
    EXPECT_EQ(drive.Reads().back(), "read 13638 12");
    ExpectCounters(31752000, 1);
}

TEST_F(TrackExtraction, ReadsTheAddressesOfTheTableWithoutSubtractingTheLeadIn) {
    ScopedDrive drive(AudioDisc({150, 18783}, 18783 + 20));
    EXPECT_TRUE(ExtractCddaTrackToWav("cdda:/dev/fake-cd/Track 02.wav", Wav, Job, ErrorMessage));
    EXPECT_EQ(drive.Reads(), (Strings{"read 18783 16", "read 18799 4"}));
    EXPECT_EQ(ReadFile(Wav).substr(44), FakeFrames(1, 18783, 20));
}

TEST_F(TrackExtraction, OfTheLastTrackReadsPastTheLeadOut) {
    constexpr int kLeadOut = 1000;
    ScopedDrive drive(AudioDisc({kStart}, kLeadOut));
    EXPECT_TRUE(Extract());
    // The lead-out's address is 150 frames before its position in the table.
    EXPECT_EQ(drive.Reads().back(), "read 998 2");
    EXPECT_EQ(ReadFile(Wav).substr(44), FakeFrames(1, kStart, kLeadOut - kStart));
}

TEST_F(TrackExtraction, OpensTheDriveTwiceAndClosesItTwice) {
    ScopedDrive drive(OneTrack(1));
    EXPECT_TRUE(Extract());
    EXPECT_EQ(drive.Calls, (Strings{"open", "header", "entry 1", "entry 170", "close", "open",
                                    "read 150 1", "close"}));
    EXPECT_EQ(drive.OpenFlags, std::vector<int>(2, O_RDONLY | O_NONBLOCK));
    EXPECT_EQ(drive.OpenDescriptors(), 0U);
}

TEST_F(TrackExtraction, ShowsTheTrackAndItsBytes) {
    ScopedDrive drive(OneTrack(17));
    std::vector<TarvaneTransferUiSnapshot> seen;
    drive.Before = [&](const std::string& Call) {
        if (Call.starts_with("read ")) {
            seen.push_back(Job.MakeUiSnapshot());
        }
    };
    EXPECT_TRUE(Extract());
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].PathText, "Current: cdda:/dev/fake-cd/1");
    EXPECT_EQ(seen[0].CurrentFileTotalBytes, 17U * 2352);
    EXPECT_EQ(seen[0].CurrentFileDoneBytes, 0U);
    EXPECT_EQ(seen[0].DoneBytes, 0U);
    EXPECT_EQ(seen[1].CurrentFileDoneBytes, 16U * 2352);
    EXPECT_EQ(seen[1].DoneBytes, 16U * 2352);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileDoneBytes, 17U * 2352);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileTotalBytes, 17U * 2352);
}

TEST_F(TrackExtraction, CreatesTheDestinationsDirectory) {
    ScopedDrive drive(OneTrack(1));
    Wav = Directory / "a/b/Track 01.wav";
    EXPECT_TRUE(Extract());
    EXPECT_EQ(fs::file_size(Wav), 2396U);
}

TEST_F(TrackExtraction, ReplacesAnExistingFile) {
    ScopedDrive drive(OneTrack(1));
    WriteFile(Wav, PatternBytes(100000));
    EXPECT_TRUE(Extract());
    EXPECT_EQ(ReadFile(Wav), HeaderOf(2352) + FakeFrames(kDisc, kStart, 1));
}

TEST_F(TrackExtraction, HasWrittenEverythingBeforeItClosesTheDrive) {
    ScopedDrive drive(OneTrack(17));
    std::uintmax_t sizeAtClose = 0;
    drive.Before = [&](const std::string& Call) {
        if (Call == "close" && fs::exists(Wav)) {
            sizeAtClose = fs::file_size(Wav);
        }
    };
    EXPECT_TRUE(Extract());
    EXPECT_EQ(sizeAtClose, 44U + 17 * 2352);
}

TEST_F(TrackExtraction, WritesTheSizesOfTheTableWhateverTheDriveDelivers) {
    ScopedDrive drive(OneTrack(64));
    std::string header;
    drive.Before = [&](const std::string& Call) {
        if (Call == "read 198 16") {
            header = ReadFile(Wav).substr(0, 44);
        }
    };
    EXPECT_TRUE(Extract());
    EXPECT_EQ(header, HeaderOf(64 * 2352));
}

} // namespace
