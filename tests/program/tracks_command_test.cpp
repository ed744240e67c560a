// `tarvane tracks`: the real program, on drives that a preloaded library answers for.

#include "file_tree.h"
#include "needs.h"
#include "page_text.h"
#include "preloaded_drive.h"
#include "run_program.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

namespace {

using Strings = std::vector<std::string>;

// Track 1 at 00:02:00, track 2 at 04:10:33, the lead-out at 09:00:00.
FakeDisc TwoTracks() {
    return AudioDisc({150, 18783}, 40500);
}

FakeDisc NoDisc() {
    FakeDisc disc;
    disc.bPresent = false;
    return disc;
}

class TracksCommand : public testing::Test {
protected:
    ProgramResult Tracks(Strings Arguments = {}) {
        Arguments.insert(Arguments.begin(), {TARVANE_PROGRAM, "tracks"});
        return RunProgram(Arguments, Directory.Path(), Drives.Environment());
    }

    // What a shell makes of `tarvane tracks` with this redirection.
    ProgramResult TracksInShell(const std::string& Redirection) {
        return RunProgram(
            {"/bin/bash", "-c", Redirection + "; exec \"$0\" tracks", TARVANE_PROGRAM},
            Directory.Path(), Drives.Environment());
    }

    void ExpectFailure(const ProgramResult& Result, int Status, const std::string& Errors) {
        EXPECT_EQ(Result.Status, Status);
        EXPECT_EQ(Result.Output, "");
        EXPECT_EQ(Result.Errors, Errors);
    }

    TemporaryDirectory Directory;
    PreloadedDrives Drives;
};

TEST_F(TracksCommand, PrintsTheTracksAndTheirTotal) {
    Drives.Describe(TwoTracks());
    const ProgramResult result = Tracks();
    EXPECT_EQ(result.Output, "Disc in /dev/sr0\n"
                             " #  Name          Start     Length      WAV bytes  Kind\n"
                             " 1  Track 01.wav  00:02.00  04:08.33     43824860  audio\n"
                             " 2  Track 02.wav  04:10.33  04:49.42     51078428  audio\n"
                             "Total: 2 audio tracks, 08:58.00, 94903288 bytes\n");
    EXPECT_EQ(result.Errors, "");
    EXPECT_EQ(result.Status, 0);
}

TEST_F(TracksCommand, PrintsTheMembersThatTheManualPageLists) {
    Drives.Describe(TwoTracks());
    std::set<std::string> printed;
    const nlohmann::json document =
        nlohmann::json::parse(Tracks({"--json"}).Output, [&printed](int, auto Event, auto& Parsed) {
            if (Event == nlohmann::json::parse_event_t::key) {
                printed.insert(Parsed);
            }
            return true;
        });
    ASSERT_FALSE(document.empty());
    const std::string page = ReadFile(TARVANE_SOURCE_DIRECTORY "/docs/tarvane.1");
    const std::string section = PartOf(page, "\n.SS The list of tracks\n", "\n.SH ");
    EXPECT_EQ(Matches(section, R"(\n\.IR? ([a-z_]+))"), printed);
}

TEST_F(TracksCommand, PrintsADocument) {
    Drives.Describe(AudioDisc({150}, 18783));
    const ProgramResult result = Tracks({"--json"});
    EXPECT_EQ(nlohmann::json::parse(result.Output), nlohmann::json::parse(R"({
        "device": "/dev/sr0",
        "drives": ["/dev/sr0"],
        "tracks": [
            {"number": 1, "name": "Track 01.wav", "path": "cdda:/dev/sr0/Track 01.wav",
             "kind": "audio", "start": "00:02.00", "start_frame": 150,
             "length": "04:08.33", "length_frames": 18633, "wav_bytes": 43824860}],
        "total": {"audio_tracks": 1, "length": "04:08.33", "length_frames": 18633,
                  "wav_bytes": 43824860}})"));
    EXPECT_EQ(result.Errors, "");
    EXPECT_EQ(result.Status, 0);
}

TEST_F(TracksCommand, MakesTheRequestsOfACopyAndClosesTheDrive) {
    Drives.Describe(TwoTracks());
    Tracks();
    EXPECT_EQ(Drives.Calls(),
              (Strings{"/dev/sr0: open", "/dev/sr0: header", "/dev/sr0: entry 1",
                       "/dev/sr0: entry 2", "/dev/sr0: entry 170", "/dev/sr0: close"}));
}

TEST_F(TracksCommand, TellsDataFromAudioAndAddsUpAudioOnly) {
    FakeDisc disc = TwoTracks();
    disc.Tracks[0].bData = true;
    Drives.Describe(disc);
    EXPECT_EQ(Tracks().Output, "Disc in /dev/sr0\n"
                               " #  Name          Start     Length      WAV bytes  Kind\n"
                               " 1  -             00:02.00  04:08.33            -  data\n"
                               " 2  Track 02.wav  04:10.33  04:49.42     51078428  audio\n"
                               "Total: 1 audio track, 04:49.42, 51078428 bytes\n");
    const nlohmann::json document = nlohmann::json::parse(Tracks({"--json"}).Output);
    EXPECT_EQ(document["tracks"][0], nlohmann::json::parse(R"(
        {"number": 1, "name": null, "path": null, "kind": "data", "start": "00:02.00",
         "start_frame": 150, "length": "04:08.33", "length_frames": 18633, "wav_bytes": null})"));
    EXPECT_EQ(document["total"]["audio_tracks"], 1);
}

TEST_F(TracksCommand, ShowsATrackWithoutLength) {
    Drives.Describe(AudioDisc({150, 150}, 18783));
    EXPECT_EQ(Tracks().Output, "Disc in /dev/sr0\n"
                               " #  Name          Start     Length      WAV bytes  Kind\n"
                               " 1  Track 01.wav  00:02.00         -            -  audio\n"
                               " 2  Track 02.wav  00:02.00  04:08.33     43824860  audio\n"
                               "Total: 2 audio tracks, 04:08.33, 43824860 bytes\n");
    const nlohmann::json document = nlohmann::json::parse(Tracks({"--json"}).Output);
    EXPECT_EQ(document["tracks"][0], nlohmann::json::parse(R"(
        {"number": 1, "name": "Track 01.wav", "path": "cdda:/dev/sr0/Track 01.wav",
         "kind": "audio", "start": "00:02.00", "start_frame": 150, "length": null,
         "length_frames": null, "wav_bytes": null})"));
}

// What a drive tells that is pulled out while it is asked.
TEST_F(TracksCommand, OfATableOfZerosSaysThatItCannotBeRead) {
    FakeDisc disc;
    disc.Tracks = {{0, 0}};
    Drives.Describe(disc);
    ExpectFailure(Tracks(), 1, "tarvane: The drive gave no readable table of contents.\n");
    ExpectFailure(Tracks({"--json"}), 1,
                  "tarvane: The drive gave no readable table of contents.\n");
}

TEST_F(TracksCommand, TakesTheFirstDriveAndNamesTheOthers) {
    Drives.Describe({{"/dev/sr0", {TwoTracks()}, 0, 0},
                     {"/dev/sr1", {AudioDisc({150}, 300)}, 0, 0},
                     {"/dev/sr10", {NoDisc()}, 0, 0}});
    EXPECT_TRUE(Tracks().Output.starts_with("Disc in /dev/sr0\n"
                                            "Another drive: /dev/sr1\n"
                                            "Another drive: /dev/sr10\n"
                                            " #  Name"));
    const nlohmann::json document = nlohmann::json::parse(Tracks({"--json"}).Output);
    EXPECT_EQ(document["device"], "/dev/sr0");
    EXPECT_EQ(document["drives"], (nlohmann::json{"/dev/sr0", "/dev/sr1", "/dev/sr10"}));
}

TEST_F(TracksCommand, PassesOverDrivesWithoutAnAudioCd) {
    FakeDisc data = AudioDisc({150}, 300000);
    data.Tracks[0].bData = true;
    Drives.Describe({{"/dev/sr0", {NoDisc()}, 0, 0},
                     {"/dev/sr1", {data}, 0, 0},
                     {"/dev/sr2", {TwoTracks()}, 0, 0},
                     {"/dev/sr3", {AudioDisc({150}, 300)}, 0, 0}});
    const ProgramResult result = Tracks();
    EXPECT_TRUE(result.Output.starts_with("Disc in /dev/sr2\n"
                                          "Another drive: /dev/sr0\n"
                                          "Another drive: /dev/sr1\n"
                                          "Another drive: /dev/sr3\n"
                                          " #  Name"))
        << result.Output;
    EXPECT_EQ(result.Errors, "");
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(nlohmann::json::parse(Tracks({"--json"}).Output)["device"], "/dev/sr2");
    ExpectFailure(Tracks({"/dev/sr0"}), 1, "tarvane: no disc in '/dev/sr0'\n");
}

TEST_F(TracksCommand, SaysOfEveryDriveWhyItHasNoAudioCd) {
    FakeDisc scratched = TwoTracks();
    scratched.Faults = {{"header", EIO, 0}};
    Drives.Describe({{"/dev/sr0", {NoDisc()}, 0, 0}, {"/dev/sr1", {scratched}, 0, 0}});
    ExpectFailure(Tracks(), 1,
                  "tarvane: no disc in '/dev/sr0'\n"
                  "tarvane: cannot read the table of contents of the disc in '/dev/sr1': "
                  "Input/output error\n");
}

// The nodes of other devices stand for those of drives, so that links really lead to them.
TEST_F(TracksCommand, TakesALinkForTheDriveThatItLeadsTo) {
    const std::string cdrom = (Directory / "cdrom").string();
    std::filesystem::create_symlink("/dev/zero", cdrom);
    Drives.Describe(
        {{"/dev/zero", {TwoTracks()}, 0, 0}, {"/dev/full", {AudioDisc({150}, 300)}, 0, 0}});
    EXPECT_TRUE(Tracks({cdrom}).Output.starts_with("Disc in " + cdrom +
                                                   "\n"
                                                   "Another drive: /dev/full\n"
                                                   " #  Name"));
}

TEST_F(TracksCommand, TakesTheDriveThatIsNamed) {
    Drives.Describe(
        {{"/dev/sr0", {TwoTracks()}, 0, 0}, {"/dev/sr1", {AudioDisc({150}, 300)}, 0, 0}});
    const std::string wanted = "Disc in /dev/sr1\n"
                               "Another drive: /dev/sr0\n"
                               " #  Name          Start     Length      WAV bytes  Kind\n"
                               " 1  Track 01.wav  00:02.00  00:02.00       352844  audio\n"
                               "Total: 1 audio track, 00:02.00, 352844 bytes\n";
    EXPECT_EQ(Tracks({"/dev/sr1"}).Output, wanted);
    EXPECT_EQ(Tracks({"--", "/dev/sr1"}).Output, wanted);
    EXPECT_EQ(Tracks({"cdda:/dev/sr1"}).Output, wanted);
    EXPECT_EQ(Tracks({"cdda:/dev/sr1/Track 01.wav"}).Output, wanted);
    EXPECT_EQ(nlohmann::json::parse(Tracks({"/dev/sr1", "--json"}).Output)["device"], "/dev/sr1");
}

TEST_F(TracksCommand, TakesADriveThatTheDriverDoesNotList) {
    const std::string device = (Directory / "drive").string();
    Drives.Describe({{device, {TwoTracks()}, 0, 0}});
    EXPECT_TRUE(Tracks({"drive"}).Output.starts_with("Disc in " + device + "\n"));
}

TEST_F(TracksCommand, WithoutADriveSaysSo) {
    ExpectFailure(Tracks(), 1, "tarvane: no optical drive found\n");
    ExpectFailure(Tracks({"--json"}), 1, "tarvane: no optical drive found\n");
}

TEST_F(TracksCommand, WithoutADiscSaysSo) {
    Drives.Describe(NoDisc());
    ExpectFailure(Tracks(), 1, "tarvane: no disc in '/dev/sr0'\n");
    EXPECT_EQ(Drives.OpenDescriptors(), 0);
}

TEST_F(TracksCommand, WithADataDiscSaysSo) {
    FakeDisc disc = AudioDisc({150}, 300000);
    disc.Tracks[0].bData = true;
    Drives.Describe(disc);
    ExpectFailure(Tracks(), 1, "tarvane: no audio tracks on the disc in '/dev/sr0'\n");
    EXPECT_EQ(Drives.OpenDescriptors(), 0);
}

TEST_F(TracksCommand, WithADiscThatCannotBeReadSaysWhy) {
    FakeDisc disc = TwoTracks();
    disc.Faults = {{"header", EIO, 0}};
    Drives.Describe(disc);
    ExpectFailure(Tracks(), 1,
                  "tarvane: cannot read the table of contents of the disc in '/dev/sr0': "
                  "Input/output error\n");
}

TEST_F(TracksCommand, OfAMissingDriveSaysWhy) {
    ExpectFailure(Tracks({"/nowhere/sr0"}), 1,
                  "tarvane: cannot open CD drive '/nowhere/sr0': No such file or directory\n");
}

TEST_F(TracksCommand, OfAnotherFileSaysWhatItIsNot) {
    std::ofstream(Directory / "file") << "text";
    ExpectFailure(Tracks({"file"}), 1,
                  "tarvane: '" + (Directory / "file").string() + "' is not a CD drive\n");
}

TEST_F(TracksCommand, OfAMalformedPathSaysWhatItLacks) {
    ExpectFailure(Tracks({"cdda:sr0"}), 1, "tarvane: 'cdda:sr0' names no drive\n");
}

TEST_F(TracksCommand, CleansNamesForTheScreen) {
    ExpectFailure(Tracks({"/nowhere/\x1b[2J\n"}), 1,
                  "tarvane: cannot open CD drive '/nowhere/?[2J?': No such file or directory\n");
}

TEST_F(TracksCommand, CleansOptionsForTheScreen) {
    const std::string hint = "Try 'tarvane --help'.\n";
    ExpectFailure(Tracks({"--bad\x1b[2J"}), 2, "tarvane: unrecognized option '--bad?[2J'\n" + hint);
    ExpectFailure(Tracks({"-\x1b"}), 2, "tarvane: invalid option -- '?'\n" + hint);
    ExpectFailure(Tracks({"/dev/sr0", "--\x9b"
                                      "2J"}),
                  2, "tarvane: unrecognized option '--\uFFFD2J'\n" + hint);
}

TEST_F(TracksCommand, RefusesWrongUsageBeforeItLooksForADrive) {
    Drives.Describe(TwoTracks());
    const std::string hint = "Try 'tarvane --help'.\n";
    ExpectFailure(Tracks({"--bad"}), 2, "tarvane: unrecognized option '--bad'\n" + hint);
    ExpectFailure(Tracks({"-x"}), 2, "tarvane: invalid option -- 'x'\n" + hint);
    ExpectFailure(Tracks({"--json=1"}), 2,
                  "tarvane: option '--json' doesn't allow an argument\n" + hint);
    ExpectFailure(Tracks({"/dev/sr0", "/dev/sr1"}), 2, "tarvane: more than one drive\n" + hint);
    ExpectFailure(Tracks({""}), 2, "tarvane: the drive's name is empty\n" + hint);
    EXPECT_EQ(Drives.Calls(), Strings{});
}

TEST_F(TracksCommand, ExplainsItselfWithoutADrive) {
    const ProgramResult help = Tracks({"--help"});
    EXPECT_TRUE(help.Output.starts_with("Usage: tarvane tracks [--json] [DEVICE]\n"));
    EXPECT_EQ(help.Errors, "");
    EXPECT_EQ(help.Status, 0);
    const ProgramResult version = Tracks({"--version"});
    EXPECT_EQ(version.Output, RunProgram({TARVANE_PROGRAM, "--version"}).Output);
    EXPECT_EQ(version.Errors, "");
    EXPECT_EQ(version.Status, 0);
}

TEST_F(TracksCommand, TakesAnOperandThatBeginsWithADash) {
    const std::string drive = (Directory / "-x").string();
    ExpectFailure(Tracks({"--", "-x"}), 1,
                  "tarvane: cannot open CD drive '" + drive + "': No such file or directory\n");
}

TEST_F(TracksCommand, FailsWhenTheListCannotBeWritten) {
    NeedDeviceNode("/dev/full");
    Drives.Describe(TwoTracks());
    ExpectFailure(TracksInShell("exec >/dev/full"), 1,
                  "tarvane: cannot write the list: No space left on device\n");
}

TEST_F(TracksCommand, EndsWithoutAWordWhenNobodyReadsTheList) {
    Drives.Describe(TwoTracks());
    ExpectFailure(TracksInShell("exec > >(:); wait $!"), 128 + SIGPIPE, "");
}

} // namespace
