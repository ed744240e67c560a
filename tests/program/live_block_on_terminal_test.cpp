// The live block of a running copy, on a real terminal. A removable disk makes the copy slow enough
// to be watched: the engine paces it.

#include "mounts.h"
#include "occurrences.h"
#include "on_terminal.h"
#include "without_time.h"

#include <csignal>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

class LiveBlockOnTerminal : public OnTerminal {
protected:
    static constexpr const char* kHint =
        "Press Esc to cancel. Partial destination files may remain after a cancel.";

    ProgramInTerminal::Setting SlowCopy() {
        WriteFile(Root / "big.bin", PatternBytes(20 << 20));
        return Setting({"copy", "--no-preflight", "--flush=never", "big.bin", "disk"});
    }

    void StartSlowCopy(int Columns = 80, int Rows = 24) {
        ProgramInTerminal::Setting setting = SlowCopy();
        setting.Columns = Columns;
        setting.Rows = Rows;
        Start(setting);
    }

    void StartSlowCopyIn(const std::vector<std::pair<std::string, std::string>>& Environment) {
        ProgramInTerminal::Setting setting = SlowCopy();
        setting.Environment.insert(setting.Environment.end(), Environment.begin(),
                                   Environment.end());
        Start(setting);
    }

    void ExpectFewBytes() {
        const std::size_t before = Program->Output().size();
        Program->Watch(2.0);
        EXPECT_LT(Program->Output().size() - before, 2U * 3000U);
        EXPECT_GT(Program->Output().size() - before, 100U);
    }

    // Waits for the last line of the block, so that all of it is there.
    void AwaitBlock() {
        ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
        ASSERT_TRUE(Program->ShowsText("cancel.\n"));
    }

    void AwaitProgress() {
        ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
        const std::string screen = Program->Screen();
        const std::size_t line = screen.find("Overall ");
        ASSERT_TRUE(Program->ShowsNoText(screen.substr(line, screen.find(" / ", line) - line)));
        AwaitBlock();
    }

    void StartSlowCopyInShell() {
        WriteFile(Root / "big.bin", PatternBytes(20 << 20));
        ProgramInTerminal::Setting setting = Setting({});
        setting.Command = {"/bin/bash", "--norc", "--noprofile", "-i"};
        setting.Environment.emplace_back("PS1", "prompt> ");
        Start(setting);
        ASSERT_TRUE(Program->ShowsText("prompt>"));
        Program->Type("'" TARVANE_PROGRAM "' copy --no-preflight --flush=never big.bin disk\r");
        ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
    }

    RemovableDisk Disk{Root.Path(), "1\n"};
};

std::string WithoutLineEnds(std::string Text) {
    std::erase(Text, '\n');
    return Text;
}

TEST_F(LiveBlockOnTerminal, ShowsTheEnginesTextsWholeWithTwoBars) {
    StartSlowCopy();
    ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB | Items 0 / 1\n"));
    AwaitBlock();
    const std::string screen = Program->Screen();
    EXPECT_EQ(screen.find("Stage: Copying | Copying items\n"), 0U) << screen;
    EXPECT_NE(screen.find("Current: " + (Root / "big.bin").string() + "\n"), std::string::npos)
        << screen;
    EXPECT_NE(screen.find("\nAll  ["), std::string::npos) << screen;
    EXPECT_NE(screen.find("\nFile ["), std::string::npos) << screen;
    EXPECT_NE(screen.find("\nRate "), std::string::npos) << screen;
    EXPECT_NE(screen.find(std::string("\n") + kHint + "\n"), std::string::npos) << screen;
}

TEST_F(LiveBlockOnTerminal, LeavesTheFinalLineAndNothingElse) {
    StartSlowCopy();
    ASSERT_TRUE(Program->ShowsText("Overall "));
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()), "Copied 1 entry, 20.0 MB.\n");
    EXPECT_EQ(fs::file_size(Root / "disk/big.bin"), 20U << 20U);
    ExpectRestoredTerminal();
}

TEST_F(LiveBlockOnTerminal, EscCancelsAndLeavesNoPartialFile) {
    StartSlowCopy();
    ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
    Program->Type(kEsc);
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Program->HistoryAndScreen(),
              "Copy canceled. Partial destination files may remain.\nNothing copied.\n");
    EXPECT_FALSE(fs::exists(Root / "disk/big.bin"));
    ExpectRestoredTerminal();
}

TEST_F(LiveBlockOnTerminal, CtrlCCancelsLikeEsc) {
    StartSlowCopy();
    ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
    Program->Type(kCtrlC);
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Program->HistoryAndScreen(),
              "Copy canceled. Partial destination files may remain.\nNothing copied.\n");
    EXPECT_FALSE(fs::exists(Root / "disk/big.bin"));
    ExpectRestoredTerminal();
}

TEST_F(LiveBlockOnTerminal, WrapsItsTextsInANarrowWindow) {
    StartSlowCopy(40, 16);
    AwaitBlock();
    // Lines break at blanks, which the end of a row swallows.
    std::string hint = kHint;
    std::erase(hint, ' ');
    std::string screen = WithoutLineEnds(Program->Screen());
    std::erase(screen, ' ');
    EXPECT_NE(screen.find(hint), std::string::npos) << Program->Screen();
    EXPECT_NE(screen.find("Stage:Copying|Copyingitems"), std::string::npos) << Program->Screen();
}

TEST_F(LiveBlockOnTerminal, FitsAVerySmallWindowWithoutScrolling) {
    StartSlowCopy(40, 10);
    AwaitBlock();
    Program->Resize(30, 3);
    // There is no room for the hint, which stood in the last rows.
    ASSERT_TRUE(Program->ShowsNoText("cancel."));
    ASSERT_TRUE(Program->ShowsText("%"));
    Program->Watch(0.5);
    const std::string shown = Program->HistoryAndScreen();
    Program->Watch(0.5);
    EXPECT_LE(Occurrences(Program->HistoryAndScreen(), "\n"), Occurrences(shown, "\n"))
        << Program->HistoryAndScreen();
}

TEST_F(LiveBlockOnTerminal, LeavesNoRemnantsWhenTheWindowGrowsAndShrinks) {
    StartSlowCopy();
    ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
    Program->Resize(120, 40);
    AwaitProgress();
    Program->Resize(100, 12);
    AwaitProgress();
    EXPECT_EQ(Occurrences(Program->HistoryAndScreen(), "Stage: "), 1U)
        << Program->HistoryAndScreen();
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()), "Copied 1 entry, 20.0 MB.\n");
}

TEST_F(LiveBlockOnTerminal, LetsNoFileNameDriveTheTerminal) {
    const std::string name = "evil\x1b[2J\x1b]0;title\x07\n\xff.bin";
    WriteFile(Root / name, PatternBytes(8 << 20));
    Start({"copy", "--no-preflight", "--flush=never", name, "disk"});
    ASSERT_TRUE(Program->ShowsText("evil?[2J?]0;title??\xEF\xBF\xBD.bin"));
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Program->Output().find("\x1b[2J"), std::string::npos);
    EXPECT_EQ(Program->Output().find("\x1b]"), std::string::npos);
}

TEST_F(LiveBlockOnTerminal, StopsAndComesBackWithJobControl) {
    StartSlowCopyInShell();
    Program->Type(kCtrlZ);
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    // The shell has a terminal that echoes and edits again.
    Program->Type("echo al''ive\r");
    ASSERT_TRUE(Program->ShowsText("\nalive"));
    Program->Type("fg\r");
    ASSERT_TRUE(Program->ShowsText("\nCopied 1 entry, 20.0 MB, in "));
    Program->Type("exit\r");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(fs::file_size(Root / "disk/big.bin"), 20U << 20U);
}

TEST_F(LiveBlockOnTerminal, DrawsNothingInTheBackground) {
    StartSlowCopyInShell();
    Program->Type(kCtrlZ);
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    const std::size_t before = Program->Output().size();
    Program->Type("bg\r");
    ASSERT_TRUE(Program->ShowsText("Copied 1 entry, 20.0 MB, in "));
    EXPECT_EQ(Program->Output().find("Stage: ", before), std::string::npos);
    Program->Type("exit\r");
    EXPECT_TRUE(Program->ExitsWith(0));
}

TEST_F(LiveBlockOnTerminal, DrawsNothingForATerminalThatCannotMoveTheCursor) {
    WriteFile(Root / "small.bin", "data");
    ProgramInTerminal::Setting setting =
        Setting({"copy", "--no-preflight", "--flush=never", "small.bin", "disk"});
    setting.Environment = {{"TERM", "dumb"}};
    Start(setting);
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Program->Output().find('\x1b'), std::string::npos);
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()), "Copied 1 entry, 4 B.\n");
}

TEST_F(LiveBlockOnTerminal, DrawsItsBarsWithColoredBlocks) {
    StartSlowCopyIn({{"LC_ALL", "C.UTF-8"}, {"NO_COLOR", ""}});
    ASSERT_TRUE(Program->ShowsText("All  [█"));
    ASSERT_TRUE(Program->ShowsText("File [█"));
    // What stands already is not drawn again, so the label may be in an earlier frame.
    EXPECT_NE(Program->Output().find("\x1b[36m█"), std::string::npos);
    EXPECT_TRUE(Program->ExitsWith(0));
    ExpectRestoredTerminal();
}

TEST_F(LiveBlockOnTerminal, DrawsItsBarsWithoutColorsWhenToldSo) {
    StartSlowCopyIn({{"LC_ALL", "C.UTF-8"}, {"NO_COLOR", "1"}});
    ASSERT_TRUE(Program->ShowsText("All  [█"));
    EXPECT_EQ(Program->Output().find("\x1b[36m"), std::string::npos);
}

TEST_F(LiveBlockOnTerminal, DrawsItsBarsInAsciiInOtherLocales) {
    StartSlowCopyIn({{"LC_ALL", "C"}});
    ASSERT_TRUE(Program->ShowsText("All  [#"));
    ASSERT_TRUE(Program->ShowsText("File [#"));
    EXPECT_EQ(Program->Output().find('\xE2'), std::string::npos);
}

TEST_F(LiveBlockOnTerminal, SendsLittleOverASlowLine) {
    StartSlowCopy();
    ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
    ExpectFewBytes();
}

TEST_F(LiveBlockOnTerminal, SendsLittleForManySmallFilesInAWideWindow) {
    for (int i = 0; i < 320; ++i) {
        const std::string letters(i % 2 == 0 ? 100 : 5, static_cast<char>('a' + i % 26));
        WriteFile(Root / "many" / (letters + std::to_string(i)), PatternBytes(64 << 10));
    }
    ProgramInTerminal::Setting setting =
        Setting({"copy", "--no-preflight", "--flush=never", "many", "disk"});
    setting.Environment.insert(setting.Environment.end(),
                               {{"LC_ALL", "C.UTF-8"}, {"NO_COLOR", ""}});
    setting.Columns = 200;
    setting.Rows = 50;
    Start(setting);
    ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
    ExpectFewBytes();
}

} // namespace
