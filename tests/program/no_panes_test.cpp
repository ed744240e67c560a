// `tarvane` where there can be no panes: it says so, and what else there is.

#include "on_terminal.h"
#include "run_program.h"

#include <gtest/gtest.h>

namespace {

constexpr char kNoTerminal[] =
    "tarvane: the panes need a terminal; the commands are copy, move, tracks and help\n"
    "Try 'tarvane --help'.\n";

class NoPanes : public OnTerminal {
protected:
    // With Redirection, of a shell, of its standard streams.
    void StartRedirected(const std::string& Redirection) {
        ProgramInTerminal::Setting setting = Setting({});
        setting.Command = {"/bin/sh", "-c", "\"$0\" " + Redirection, TARVANE_PROGRAM};
        Start(setting);
    }
    void StartOn(const std::string& Kind) {
        ProgramInTerminal::Setting setting = Setting({});
        setting.Environment.front().second = Kind;
        Start(setting);
    }
};

TEST_F(NoPanes, ThroughPipes) {
    for (const std::vector<std::string>& places : {std::vector<std::string>{}, {"/"}, {"/", "."}}) {
        std::vector<std::string> command{TARVANE_PROGRAM};
        command.insert(command.end(), places.begin(), places.end());
        const ProgramResult result = RunProgram(command);
        EXPECT_EQ(result.Status, 2);
        EXPECT_EQ(result.Output, "");
        EXPECT_EQ(result.Errors, kNoTerminal);
    }
}

TEST_F(NoPanes, PlacesThatAreNoneAreSaidFirst) {
    const ProgramResult result = RunProgram({TARVANE_PROGRAM, "/nothing/here"});
    EXPECT_EQ(result.Status, 2);
    EXPECT_EQ(result.Errors, "tarvane: cannot show '/nothing/here': No such file or directory\n"
                             "Try 'tarvane --help'.\n");
}

TEST_F(NoPanes, WhereKeysOrScreenAreNoTerminal) {
    for (const char* redirection : {"</dev/null", ">written", "<&-", ">&-"}) {
        StartRedirected(redirection);
        EXPECT_TRUE(Program->ExitsWith(2)) << redirection;
        EXPECT_EQ(Program->Screen(), kNoTerminal) << redirection;
    }
    EXPECT_EQ(ReadFile(Root / "written"), "");
}

TEST_F(NoPanes, WhereNothingCanBeDrawn) {
    StartOn("dumb");
    EXPECT_TRUE(Program->ExitsWith(2));
    EXPECT_EQ(Program->Screen(),
              "tarvane: nothing can be drawn on a terminal of the kind 'dumb'; the commands are\n"
              " copy, move, tracks and help\n"
              "Try 'tarvane --help'.\n");
    StartOn("");
    EXPECT_TRUE(Program->ExitsWith(2));
    EXPECT_EQ(Program->Screen(),
              "tarvane: the variable TERM does not say what kind of terminal this is; the comma\n"
              "nds are copy, move, tracks and help\n"
              "Try 'tarvane --help'.\n");
}

} // namespace
