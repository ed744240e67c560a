// What real drives and discs do to a copy: refuse, wait, fail in the middle, be exchanged.

#include "cd_program_fixture.h"

#include <cerrno>
#include <csignal>
#include <functional>

namespace {

namespace fs = std::filesystem;

TEST_F(CdProgram, RefusesADataTrack) {
    FakeDisc disc = ThreeTracks();
    disc.Tracks[0].bData = true;
    Drives.Describe(disc);
    ExpectFailure(Copy({"cdda:/dev/sr0/2", "cdda:/dev/sr0/1"}),
                  "Selected CD track is a data track, not audio.");
    EXPECT_EQ(TreeOf(Music), Tree{});
}

TEST_F(CdProgram, RefusesATrackThatTheDiscDoesNotHave) {
    ExpectFailure(Copy({"cdda:/dev/sr0/4"}), "Audio CD track is outside the disc TOC.");
}

TEST_F(CdProgram, SaysThatATrackHasNoLength) {
    Drives.Describe(AudioDisc({150, 1000, 1000}, 2000, kDisc));
    EXPECT_EQ(Copy({"cdda:/dev/sr0/2"}).Errors,
              "The job will stop at tracks that have no length:\n  cdda:/dev/sr0/2\n"
              "tarvane: Audio CD track has an invalid frame range.\nNothing copied.\n");
    EXPECT_EQ(TreeOf(Music), Tree{});
}

TEST_F(CdProgram, RefusesATableThatGoesBackwards) {
    Drives.Describe(AudioDisc({1000, 150}, 2000, kDisc));
    for (const char* source : {"cdda:/dev/sr0", "cdda:/dev/sr0/1"}) {
        ExpectFailure(Copy({source}), "The drive gave no readable table of contents.");
    }
    EXPECT_EQ(TreeOf(Music), Tree{});
}

TEST_F(CdProgram, RefusesAMissingDrive) {
    for (const char* source : {"cdda:/dev/sr7", "cdda:/dev/sr7/1"}) {
        ExpectFailure(Copy({source}), "cannot open CD drive '/dev/sr7': No such file or directory");
    }
}

TEST_F(CdProgram, RefusesAnEmptyDrive) {
    FakeDisc disc;
    disc.bPresent = false;
    Drives.Describe(disc);
    for (const char* source : {"cdda:/dev/sr0", "cdda:/dev/sr0/1"}) {
        ExpectFailure(Copy({source}), "no disc in '/dev/sr0'");
    }
}

TEST_F(CdProgram, SaysBeforeTheJobWhatWouldStopIt) {
    FakeDisc disc = ThreeTracks();
    disc.Tracks[0].bData = true;
    Drives.Describe(disc);
    EXPECT_EQ(Copy({"cdda:/dev/sr0/1"}).Errors,
              "The job will stop at data tracks:\n  cdda:/dev/sr0/1\n"
              "tarvane: Selected CD track is a data track, not audio.\nNothing copied.\n");
}

TEST_F(CdProgram, EndsAtAnUnreadableFrameWithoutAFile) {
    FakeDisc disc = ThreeTracks();
    disc.Faults = {{"read 1500", EIO, 0}};
    Drives.Describe(disc);
    ExpectFailure(
        Copy({"cdda:/dev/sr0"}),
        "cdda:/dev/sr0/Track 03.wav: Failed reading audio CD sectors: Input/output error");
    EXPECT_EQ(TreeOf(Music).size(), 2U);
    EXPECT_FALSE(fs::exists(Root / "Music/Track 03.wav"));
    ExpectFrames(Root / "Music/Track 01.wav", 150, 1000);
    // Tried once only.
    EXPECT_EQ(Drives.CountCalls("/dev/sr0: read 1497 16"), 1);
}

TEST_F(CdProgram, FailsAtTheLastTrackOnADriveThatRefusesToReadPastTheLeadOut) {
    FakeDisc disc = ThreeTracks();
    disc.bStrict = true;
    Drives.Describe(disc);
    ExpectFailure(
        Copy({"cdda:/dev/sr0"}),
        "cdda:/dev/sr0/Track 03.wav: Failed reading audio CD sectors: Input/output error");
    EXPECT_EQ(TreeOf(Music).size(), 2U);
    ExpectFrames(Root / "Music/Track 02.wav", 1000, 1017);
}

TEST_F(CdProgram, NoticesThatTheDiscWasChangedAfterTheListing) {
    EXPECT_NE(Tarvane({"tracks"}).Output.find("Track 03.wav"), std::string::npos);
    Drives.Describe(AudioDisc({150}, 200, 8));
    ExpectFailure(Copy({"cdda:/dev/sr0/3"}), "Audio CD track is outside the disc TOC.");
    EXPECT_EQ(TreeOf(Music), Tree{});
}

TEST_F(CdProgram, CopiesTheTracksOfTheDiscThatIsInTheDrive) {
    Tarvane({"tracks"});
    Drives.Describe(AudioDisc({150}, 200, 8));
    EXPECT_EQ(Copy({"cdda:/dev/sr0/1"}).Status, 0);
    ExpectFrames(Root / "Music/Track 01.wav", 150, 200, 8);
}

TEST_F(CdProgram, EndsWhenTheDiscIsTakenOut) {
    FakeDisc nothing;
    nothing.bPresent = false;
    Drives.Describe({{"/dev/sr0", {ThreeTracks(), nothing}, 40, 0}});
    ExpectFailure(Copy({"cdda:/dev/sr0/1"}),
                  "cdda:/dev/sr0/1: Failed reading audio CD sectors: No medium found");
    EXPECT_EQ(TreeOf(Music), Tree{});
}

TEST_F(CdProgram, RefusesTwoDiscsWhoseTracksHaveOneName) {
    Drives.Describe(
        {{"/dev/sr0", {ThreeTracks()}, 0, 0}, {"/dev/sr1", {AudioDisc({150}, 200, 8)}, 0, 0}});
    const ProgramResult result = Copy({"cdda:/dev/sr0", "cdda:/dev/sr1"});
    EXPECT_EQ(result.Status, 2);
    EXPECT_EQ(TreeOf(Music), Tree{});
}

TEST_F(CdProgram, CanceledInTheMiddleOfATrackLeavesNoFile) {
    FakeDisc disc = AudioDisc({150}, 150 + 75 * 60 * 70, kDisc);
    disc.Faults = {{"read", 0, 10}};
    Drives.Describe(disc);
    ProgramInTerminal program(CopyInTerminal("cdda:/dev/sr0/1"));
    ASSERT_TRUE(program.ShowsText("Current: cdda:/dev/sr0/1"));
    ASSERT_TRUE(program.ShowsText("Press Esc to cancel."));
    ASSERT_TRUE(program.ShowsNoText("Overall 0 B /"));
    EXPECT_EQ(TreeOf(Music).size(), 1U);
    program.Type("\x1b");
    EXPECT_TRUE(program.ExitsWith(130));
    EXPECT_NE(program.Screen().find("Copy canceled. Partial destination files may remain."),
              std::string::npos);
    EXPECT_EQ(TreeOf(Music), Tree{});
    EXPECT_EQ(Drives.OpenDescriptors(), 0);
}

TEST_F(CdProgram, StaysAliveWhileTheDriveHoldsARead) {
    FakeDisc disc = ThreeTracks();
    disc.Faults = {{"read 500", 0, 12000}};
    Drives.Describe(disc);
    ProgramInTerminal program(CopyInTerminal("cdda:/dev/sr0/1"));
    // The clock goes on.
    ASSERT_TRUE(program.ShowsText("Spent 00:02"));
    ASSERT_TRUE(program.ShowsText("Spent 00:03"));
    program.Type("\x1b");
    EXPECT_TRUE(program.ShowsText("Stage: Copying | Cancel requested", 2.0));
    EXPECT_TRUE(program.ShowsText("Waiting for the current filesystem step to finish."));
    // The cancel has to wait for the drive.
    EXPECT_EQ(TreeOf(Music).size(), 1U);
    EXPECT_TRUE(program.ExitsWith(130));
    EXPECT_EQ(TreeOf(Music), Tree{});
}

class HeldCdProgram : public CdProgram {
protected:
    HeldCdProgram() {
        FakeDisc disc = ThreeTracks();
        disc.Faults = {{"header", 0, 100000}};
        Drives.Describe(disc);
    }

    // For the whole disc, for one track, and without a look before the job.
    void ExpectToEnd(const std::function<void(ProgramInTerminal&)>& End, int Status) const {
        ExpectToEnd(CopyInTerminal("cdda:/dev/sr0"), End, Status);
        ProgramInTerminal::Setting setting = CopyInTerminal("cdda:/dev/sr0/1");
        ExpectToEnd(setting, End, Status);
        setting.Command.emplace_back("--no-preflight");
        ExpectToEnd(setting, End, Status);
    }

private:
    void ExpectToEnd(const ProgramInTerminal::Setting& Setting,
                     const std::function<void(ProgramInTerminal&)>& End, int Status) const {
        ProgramInTerminal program(Setting);
        ASSERT_TRUE(program.ShowsText("tarvane: waiting for the drive, Esc cancels\n"));
        End(program);
        EXPECT_TRUE(program.ExitsWith(Status, 10.0));
        EXPECT_EQ(TreeOf(Music), Tree{});
    }
};

TEST_F(HeldCdProgram, EndsAtOnceWithEscWhileTheDriveGetsReady) {
    ExpectToEnd([](ProgramInTerminal& Program) { Program.Type("\x1b"); }, 130);
}

TEST_F(HeldCdProgram, EndsAtOnceWithCtrlCWhileTheDriveGetsReady) {
    ExpectToEnd([](ProgramInTerminal& Program) { Program.Type("\x03"); }, 130);
}

TEST_F(HeldCdProgram, EndsAtOnceWithASignalWhileTheDriveGetsReady) {
    ExpectToEnd([](ProgramInTerminal& Program) { Program.Signal(SIGTERM); }, 128 + SIGTERM);
}

} // namespace
