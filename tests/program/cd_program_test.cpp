// Tracks of an audio CD from the drive to the WAV file: the real program, on a drive that a
// preloaded library answers for.

#include "cd_program_fixture.h"
#include "without_time.h"

#include <nlohmann/json.hpp>

namespace {

namespace fs = std::filesystem;

TEST_F(CdProgram, ListsAndCopiesTheSameTrack) {
    const nlohmann::json track =
        nlohmann::json::parse(Tarvane({"tracks", "--json"}).Output)["tracks"][0];
    EXPECT_EQ(Copy({track["path"]}).Status, 0);
    EXPECT_EQ(fs::file_size(Root / "Music" / track["name"]), track["wav_bytes"]);
}

TEST_F(CdProgram, CopiesOneTrackIntoADirectory) {
    const ProgramResult result = Copy({"cdda:/dev/sr0/Track 03.wav"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Output, "");
    EXPECT_EQ(WithoutTime(result.Errors), "Copied 1 entry, 2.2 MB.\n");
    EXPECT_EQ(TreeOf(Music).size(), 1U);
    ExpectFrames(Root / "Music/Track 03.wav", 1017, 2000);
    EXPECT_EQ(Drives.OpenDescriptors(), 0);
}

TEST_F(CdProgram, CopiesATrackThatIsNamedByItsNumber) {
    EXPECT_EQ(Copy({"cdda:/dev/sr0/3"}).Status, 0);
    ExpectFrames(Root / "Music/Track 03.wav", 1017, 2000);
}

TEST_F(CdProgram, CopiesATrackToAName) {
    const ProgramResult result =
        Tarvane({"copy", "--on-conflict=fail", "cdda:/dev/sr0/2", "new/song.wav"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(TreeOf(Root / "new").size(), 1U);
    ExpectFrames(Root / "new/song.wav", 1000, 1017);
}

TEST_F(CdProgram, CopiesSeveralTracksAndFiles) {
    WriteFile(Root / "cover.jpg", "cover");
    const ProgramResult result = Copy({"cdda:/dev/sr0/2", "cover.jpg", "cdda:/dev/sr0/1"});
    EXPECT_EQ(WithoutTime(result.Errors), "Copied 3 entries, 1.9 MB.\n");
    EXPECT_EQ(TreeOf(Music).size(), 3U);
    ExpectFrames(Root / "Music/Track 01.wav", 150, 1000);
    ExpectFrames(Root / "Music/Track 02.wav", 1000, 1017);
    EXPECT_EQ(ReadFile(Root / "Music/cover.jpg"), "cover");
}

TEST_F(CdProgram, CopiesAllTracks) {
    const ProgramResult result = Copy({"cdda:/dev/sr0"});
    EXPECT_EQ(WithoutTime(result.Errors), "Copied 3 entries, 4.1 MB.\n");
    EXPECT_EQ(TreeOf(Music).size(), 3U);
    ExpectFrames(Root / "Music/Track 01.wav", 150, 1000);
    ExpectFrames(Root / "Music/Track 02.wav", 1000, 1017);
    ExpectFrames(Root / "Music/Track 03.wav", 1017, 2000);
    EXPECT_EQ(Drives.OpenDescriptors(), 0);
}

TEST_F(CdProgram, ReadsTheTableOnceBeforeTheJob) {
    constexpr int kReadingsOfAJob = 2;
    Copy({"cdda:/dev/sr0/2", "cdda:/dev/sr0/3"});
    EXPECT_EQ(Drives.CountCalls("/dev/sr0: header"), 1 + 2 * kReadingsOfAJob);
    Drives.ForgetCalls();
    Copy({"cdda:/dev/sr0"}, "overwrite");
    EXPECT_EQ(Drives.CountCalls("/dev/sr0: header"), 1 + 3 * kReadingsOfAJob);
}

TEST_F(CdProgram, CopiesTheAudioTracksOfAMixedDisc) {
    FakeDisc disc = ThreeTracks();
    disc.Tracks[0].bData = true;
    Drives.Describe(disc);
    EXPECT_EQ(WithoutTime(Copy({"cdda:/dev/sr0"}).Errors), "Copied 2 entries, 2.2 MB.\n");
    EXPECT_EQ(TreeOf(Music).size(), 2U);
    ExpectFrames(Root / "Music/Track 02.wav", 1000, 1017);
    ExpectFrames(Root / "Music/Track 03.wav", 1017, 2000);
}

TEST_F(CdProgram, WritesTheHeaderOfAWavFile) {
    EXPECT_EQ(Copy({"cdda:/dev/sr0/2"}).Status, 0);
    using namespace std::string_literals;
    // 17 frames are 39984 (0x9c30) bytes; the first size is 36 more.
    EXPECT_EQ(ReadFile(Root / "Music/Track 02.wav").substr(0, kHeaderBytes),
              "RIFF\x54\x9c\0\0WAVEfmt \x10\0\0\0\x01\0\x02\0"s
              "\x44\xac\0\0\x10\xb1\x02\0\x04\0\x10\0data\x30\x9c\0\0"s);
}

TEST_F(CdProgram, WritesWhatOtherProgramsReadAsCdAudio) {
    EXPECT_EQ(Copy({"cdda:/dev/sr0/1"}).Status, 0);
    const std::string wav = (Root / "Music/Track 01.wav").string();
    EXPECT_EQ(RunProgram({"file", "--brief", wav}).Output,
              "RIFF (little-endian) data, WAVE audio, Microsoft PCM, 16 bit, stereo 44100 Hz\n");
    EXPECT_EQ(RunProgram({"soxi", "-t", wav}).Output, "wav\n");
    EXPECT_EQ(RunProgram({"soxi", "-r", wav}).Output, "44100\n");
    EXPECT_EQ(RunProgram({"soxi", "-c", wav}).Output, "2\n");
    EXPECT_EQ(RunProgram({"soxi", "-b", wav}).Output, "16\n");
    // 588 stereo samples a frame.
    EXPECT_EQ(RunProgram({"soxi", "-s", wav}).Output, "499800\n");
    EXPECT_EQ(RunProgram({"soxi", wav}).Errors, "");
}

TEST_F(CdProgram, OverwritesATakenName) {
    WriteFile(Root / "Music/Track 02.wav", PatternBytes(100000));
    EXPECT_EQ(Copy({"cdda:/dev/sr0/2"}, "overwrite").Status, 0);
    ExpectFrames(Root / "Music/Track 02.wav", 1000, 1017);
}

TEST_F(CdProgram, SkipsATakenNameWithoutReadingIt) {
    WriteFile(Root / "Music/Track 02.wav", "old");
    const ProgramResult result = Copy({"cdda:/dev/sr0/2"}, "skip");
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(WithoutTime(result.Errors), "Nothing copied; 1 skipped.\n");
    EXPECT_EQ(ReadFile(Root / "Music/Track 02.wav"), "old");
    EXPECT_EQ(Drives.CountCalls("/dev/sr0: read 1000 16"), 0);
}

TEST_F(CdProgram, KeepsBothOfATakenName) {
    WriteFile(Root / "Music/Track 02.wav", "old");
    EXPECT_EQ(Copy({"cdda:/dev/sr0/2"}, "keep-both").Status, 0);
    EXPECT_EQ(TreeOf(Music).size(), 2U);
    EXPECT_EQ(ReadFile(Root / "Music/Track 02.wav"), "old");
    ExpectFrames(Root / "Music/Track 02-2.wav", 1000, 1017);
}

TEST_F(CdProgram, AsksAboutATakenNameAndTakesAnother) {
    WriteFile(Root / "Music/Track 02.wav", "old");
    ProgramInTerminal program(CopyInTerminal("cdda:/dev/sr0/2"));
    ASSERT_TRUE(program.ShowsText("File exists: " + Music));
    EXPECT_TRUE(program.ShowsText("size unknown  date unknown"));
    program.Watch(1.0);
    program.Type("r");
    ASSERT_TRUE(program.ShowsText("Rename to: "));
    program.Type("\r");
    EXPECT_TRUE(program.ExitsWith(0));
    EXPECT_EQ(ReadFile(Root / "Music/Track 02.wav"), "old");
    ExpectFrames(Root / "Music/Track 02-2.wav", 1000, 1017);
}

TEST_F(CdProgram, CopiesFromTwoDrives) {
    Drives.Describe(
        {{"/dev/sr0", {ThreeTracks()}, 0, 0}, {"/dev/sr1", {AudioDisc({150}, 200, 8)}, 0, 0}});
    EXPECT_EQ(Copy({"cdda:/dev/sr0/2", "cdda:/dev/sr1/1"}).Status, 0);
    ExpectFrames(Root / "Music/Track 02.wav", 1000, 1017);
    ExpectFrames(Root / "Music/Track 01.wav", 150, 200, 8);
}

TEST_F(CdProgram, ShowsTheTrackAndItsProgress) {
    FakeDisc disc = ThreeTracks();
    disc.Faults = {{"read 950", 0, 100000}};
    Drives.Describe(disc);
    ProgramInTerminal program(CopyInTerminal("cdda:/dev/sr0/Track 01.wav"));
    EXPECT_TRUE(program.ShowsText("Current: cdda:/dev/sr0/Track 01.wav"));
    // 800 of the 850 frames.
    EXPECT_TRUE(program.ShowsText("Overall 1.8 MB / 1.9 MB | Items 0 / 1"));
}

TEST_F(CdProgram, MovesATrackByCopyingItAndSaysSo) {
    const ProgramResult result = Tarvane({"move", "--on-conflict=fail", "cdda:/dev/sr0/2", Music});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Errors,
              "tarvane: the tracks of a CD are copied: nothing can be removed from a disc\n"
              "Moved 1 entry, 39.0 KB.\n");
    ExpectFrames(Root / "Music/Track 02.wav", 1000, 1017);
}

} // namespace
