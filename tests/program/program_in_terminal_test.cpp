// The harness itself, on programs of the system: what it claims about a terminal is true.

#include "program_in_terminal.h"

#include <csignal>

namespace {

ProgramInTerminal::Setting Shell(const std::string& Script) {
    ProgramInTerminal::Setting setting;
    setting.Command = {"/bin/sh", "-c", Script};
    return setting;
}

TEST(ProgramInTerminal, ReadsBackWhatTheProgramDraws) {
    ProgramInTerminal program(Shell("printf 'one\\033[2;5Htwo\\033[1;1HO'; read -r _"));
    EXPECT_TRUE(program.ShowsScreen("One\n    two\n"));
}

TEST(ProgramInTerminal, KeepsTheColumnsOfWideAndCombiningCharacters) {
    ProgramInTerminal program(Shell("printf '日本|e\\314\\201|'; read -r _"));
    EXPECT_TRUE(program.ShowsScreen("日本|e\xCC\x81|\n"));
}

TEST(ProgramInTerminal, TypesKeysAndTellsTheStatus) {
    ProgramInTerminal program(Shell("read -r line; echo got $line; exit 7"));
    program.Type("word\r");
    EXPECT_TRUE(program.ExitsWith(7));
    EXPECT_NE(program.Screen().find("got word"), std::string::npos);
}

TEST(ProgramInTerminal, TellsASignalAsAShellDoes) {
    ProgramInTerminal program(Shell("echo ready; exec sleep 100"));
    ASSERT_TRUE(program.ShowsText("ready"));
    program.Signal(SIGTERM);
    EXPECT_TRUE(program.ExitsWith(128 + SIGTERM));
}

TEST(ProgramInTerminal, ResizesTheProgramsTerminal) {
    ProgramInTerminal program(
        Shell("trap 'stty size; exit' WINCH; echo ready; while :; do sleep 0.05; done"));
    ASSERT_TRUE(program.ShowsText("ready"));
    program.Resize(40, 10);
    EXPECT_TRUE(program.ShowsText("10 40"));
}

TEST(ProgramInTerminal, KeepsWhatScrolledOffTheTop) {
    ProgramInTerminal::Setting setting = Shell("seq 1 5; read -r _");
    setting.Rows = 3;
    ProgramInTerminal program(setting);
    // The last line end empties a row.
    ASSERT_TRUE(program.ShowsScreen("4\n5\n"));
    EXPECT_EQ(program.HistoryAndScreen(), "1\n2\n3\n4\n5\n");
}

TEST(ProgramInTerminal, SeesChangedTerminalSettings) {
    ProgramInTerminal program(Shell("stty -icanon -echo; echo changed; read -r _"));
    ASSERT_TRUE(program.ShowsText("changed"));
    EXPECT_FALSE(SameTerminalSettings(program.SettingsAtFirst(), program.Settings()));
}

TEST(ProgramInTerminal, SeesHowTheProgramLeavesTheScreen) {
    // An emphasis, a color, a ground, a hidden cursor and the alternate screen, and their ends.
    const std::vector<std::pair<std::string, std::string>> changes = {
        {"[1m", "[22m"}, {"[7m", "[m"},      {"[31m", "[39m"},
        {"[44m", "[m"},  {"[?25l", "[?25h"}, {"[?1049h", "[?1049l"}};
    for (const auto& [change, end] : changes) {
        std::string script = "printf 'a\\033";
        script.append(change).append("b'; read -r _; printf '\\033").append(end);
        script += "c'; read -r _";
        ProgramInTerminal program(Shell(script));
        ASSERT_TRUE(program.ShowsText("b")) << change;
        EXPECT_FALSE(program.DrawsAsAtFirst()) << change;
        program.Type("\r");
        ASSERT_TRUE(program.ShowsText("c")) << change;
        EXPECT_TRUE(program.DrawsAsAtFirst()) << change;
    }
}

TEST(ProgramInTerminal, SeesTerminalSettingsThatWereChangedBack) {
    ProgramInTerminal program(
        Shell("old=$(stty -g); stty -icanon -echo; stty \"$old\"; echo back; read -r _"));
    ASSERT_TRUE(program.ShowsText("back"));
    EXPECT_TRUE(SameTerminalSettings(program.SettingsAtFirst(), program.Settings()));
}

} // namespace
