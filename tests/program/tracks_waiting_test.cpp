// `tarvane tracks` while the drive keeps its requests, as it does until a disc is ready.

#include "preloaded_drive.h"
#include "program_in_terminal.h"
#include "run_program.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

// A drive that keeps the first request for so long.
FakeDisc HeldDisc(int Milliseconds) {
    FakeDisc disc = AudioDisc({150, 18783}, 40500);
    disc.Faults = {{"header", 0, Milliseconds}};
    return disc;
}

constexpr int kAWhile = 4000;
// Longer than any test waits.
constexpr int kForEver = 100000;

// Whether the terminal echoes and collects lines, as it does for a shell.
bool TakesLines(const ProgramInTerminal& Program) {
    return (Program.Settings().c_lflag & (ICANON | ECHO)) == (ICANON | ECHO);
}

class TracksWaiting : public testing::Test {
protected:
    ProgramInTerminal::Setting InTerminal() const {
        ProgramInTerminal::Setting setting;
        setting.Command = {TARVANE_PROGRAM, "tracks"};
        setting.Environment = Drives.Environment();
        return setting;
    }

    PreloadedDrives Drives;
};

TEST_F(TracksWaiting, WaitsForADriveThatGetsReady) {
    Drives.Describe(HeldDisc(kAWhile));
    const ProgramResult result = RunProgram({TARVANE_PROGRAM, "tracks"}, "", Drives.Environment());
    EXPECT_NE(result.Output.find("Total: 2 audio tracks"), std::string::npos);
    // Nobody is there to read it.
    EXPECT_EQ(result.Errors, "");
}

TEST_F(TracksWaiting, SaysThatItWaitsOnATerminal) {
    Drives.Describe(HeldDisc(kAWhile));
    ProgramInTerminal program(InTerminal());
    EXPECT_TRUE(program.ShowsText("tarvane: waiting for the drive, Esc cancels\n"));
    EXPECT_TRUE(program.ExitsWith(0));
    EXPECT_NE(program.Screen().find("Total: 2 audio tracks"), std::string::npos);
}

TEST_F(TracksWaiting, EndsAtOnceWithEsc) {
    Drives.Describe(HeldDisc(kForEver));
    ProgramInTerminal program(InTerminal());
    ASSERT_TRUE(program.ShowsText("waiting for the drive"));
    EXPECT_FALSE(TakesLines(program));
    program.Type("\x1b");
    EXPECT_TRUE(program.ExitsWith(130, 10.0));
    EXPECT_TRUE(TakesLines(program));
}

TEST_F(TracksWaiting, EndsAtOnceWithCtrlC) {
    Drives.Describe(HeldDisc(kForEver));
    ProgramInTerminal program(InTerminal());
    ASSERT_TRUE(program.ShowsText("waiting for the drive"));
    program.Type("\x03");
    EXPECT_TRUE(program.ExitsWith(130, 10.0));
    EXPECT_TRUE(TakesLines(program));
}

TEST_F(TracksWaiting, EndsAtOnceWithSignals) {
    Drives.Describe(HeldDisc(kForEver));
    for (const int signal : {SIGTERM, SIGHUP, SIGQUIT}) {
        ProgramInTerminal program(InTerminal());
        ASSERT_TRUE(program.ShowsText("waiting for the drive"));
        program.Signal(signal);
        EXPECT_TRUE(program.ExitsWith(128 + signal, 10.0));
    }
}

TEST_F(TracksWaiting, DoesNotEndWithOtherKeys) {
    Drives.Describe(HeldDisc(kAWhile));
    ProgramInTerminal program(InTerminal());
    ASSERT_TRUE(program.ShowsText("waiting for the drive"));
    program.Type("q\x1b[Ax");
    EXPECT_TRUE(program.ExitsWith(0));
    EXPECT_NE(program.Screen().find("Total: 2 audio tracks"), std::string::npos);
}

} // namespace
