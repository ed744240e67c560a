// The panes of the real program and their terminal: its size, its mouse, job control and every end.

#include "panes_on_terminal.h"
#include "sanitizer_options.h"

#include <csignal>
#include <regex>

namespace {

class PanesAndTheirTerminal : public PanesOnTerminal {
protected:
    PanesAndTheirTerminal() {
        WriteFile(Root / "left/apple.txt", "apple");
        WriteFile(Root / "left/bread.txt", "bread");
        WriteFile(Root / "left/inside/file", "x");
        WriteFile(Root / "right/cake", "cake");
    }

    void StartShown(const Environment& Added = {}) {
        Environment added = Added;
        LetSignalsEndIt(added);
        StartPanes({"left", "right"}, added);
        ASSERT_TRUE(Shows(Pane::Left, kLeft));
        ASSERT_TRUE(Shows(Pane::Right, kRight));
    }

    // With job control.
    void StartInShell() {
        ProgramInTerminal::Setting setting = SettingOf({}, {{"PS1", kShell}});
        setting.Command = {"/bin/bash", "--norc", "--noprofile", "-i"};
        Start(setting);
        ASSERT_TRUE(Program->ShowsText(kShell));
        Program->Type(std::string(TARVANE_PROGRAM) + " left right\r");
        ASSERT_TRUE(AreRead());
        ASSERT_TRUE(Shows(Pane::Left, kLeft));
    }

    void ExpectGone() const {
        ExpectRestoredTerminal();
        const std::string& output = Program->Output();
        const std::size_t mouseOn = output.rfind("\x1B[?1000h");
        ASSERT_NE(mouseOn, std::string::npos);
        EXPECT_NE(output.find("\x1B[?1000l", mouseOn), std::string::npos);
    }
    void ExpectEndBy(int Signal) {
        StartShown();
        Program->Signal(Signal);
        EXPECT_TRUE(Program->ExitsWith(128 + Signal));
        ExpectGone();
    }

    // A button of the mouse, or its wheel, on a place counted from 0.
    void Click(int Column, int Row, int Button = 0) {
        const std::string at = std::to_string(Button) + ";" + std::to_string(Column + 1) + ";" +
                               std::to_string(Row + 1);
        Program->Type("\x1B[<" + at + "M\x1B[<" + at + "m");
    }

    bool HasColors() const {
        const std::regex color("\x1B\\[([0-9]+;)*[34][0-7][;m]");
        return std::regex_search(Program->Output(), color);
    }

    const std::vector<std::string> kLeft{" /..", " /inside", "  apple.txt", "  bread.txt"};
    const std::vector<std::string> kRight{" /..", "  cake"};
    static constexpr const char* kShell = "shell>";
};

TEST_F(PanesAndTheirTerminal, QQuits) {
    StartShown();
    EXPECT_FALSE(Program->DrawsAsAtFirst());
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Program->Screen(), "");
    ExpectGone();
}

TEST_F(PanesAndTheirTerminal, CtrlCEndsNothing) {
    StartShown();
    Program->Type(kCtrlC);
    Program->Type(kDown);
    ASSERT_TRUE(IsOn(Pane::Left, "/inside"));
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
}

TEST_F(PanesAndTheirTerminal, F1ShowsTheHelpAndEscClosesIt) {
    StartShown();
    Program->Type(kF1);
    ASSERT_TRUE(Program->ShowsText(" Help "));
    EXPECT_TRUE(Program->ShowsText("Up Down, Ctrl-P Ctrl-N  move the cursor"));
    Program->Type(kEsc);
    EXPECT_TRUE(Program->ShowsNoText(" Help "));
    EXPECT_TRUE(Shows(Pane::Left, kLeft));
}

TEST_F(PanesAndTheirTerminal, FollowTheWindow) {
    StartShown();
    for (const auto& [columns, rows] : {std::pair(200, 60), std::pair(61, 16), std::pair(80, 24)}) {
        Resize(columns, rows);
        EXPECT_TRUE(Shows(Pane::Left, kLeft)) << columns;
        EXPECT_TRUE(Shows(Pane::Right, kRight)) << columns;
        EXPECT_TRUE(IsOn(Pane::Left, "/..")) << columns;
        EXPECT_TRUE(Holds("the keys stand in the last row", [this, last = rows - 1] {
            return RowText(last, 0, Columns).starts_with("1Help ");
        }));
    }
}

TEST_F(PanesAndTheirTerminal, SayHowMuchRoomTheyNeedAndComeBack) {
    StartShown();
    Resize(50, 10);
    EXPECT_TRUE(Program->ShowsScreen("Terminal too small (60x16 needed)\n"));
    // A key for what nobody sees does nothing.
    Program->Type(kDown);
    Resize(80, 24);
    EXPECT_TRUE(Shows(Pane::Left, kLeft));
    EXPECT_TRUE(IsOn(Pane::Left, "/.."));
}

TEST_F(PanesAndTheirTerminal, CtrlZSuspendsAndFgDrawsAgain) {
    StartInShell();
    Program->Type(kDown);
    ASSERT_TRUE(IsOn(Pane::Left, "/inside"));
    Program->Type(kCtrlZ);
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    EXPECT_TRUE(Program->DrawsAsAtFirst());
    Program->Type("echo cooked; fg\r");
    ASSERT_TRUE(IsOn(Pane::Left, "/inside"));
    EXPECT_TRUE(Shows(Pane::Left, kLeft));
    EXPECT_TRUE(Shows(Pane::Right, kRight));
    Program->Type("q");
    ASSERT_TRUE(Program->ShowsText(kShell));
    Program->Type("echo \"status $?\"\r");
    EXPECT_TRUE(Program->ShowsText("status 0"));
    EXPECT_TRUE(Program->DrawsAsAtFirst());
}

TEST_F(PanesAndTheirTerminal, DrawNothingOverTheShellInTheBackground) {
    StartInShell();
    Program->Type(kCtrlZ);
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    Program->Type("bg; echo on''going\r");
    ASSERT_TRUE(Program->ShowsText("ongoing"));
    ASSERT_TRUE(FallsSilent());
    EXPECT_TRUE(Program->DrawsAsAtFirst());
    EXPECT_TRUE(Program->ShowsText("ongoing"));
    Program->Type("fg\r");
    ASSERT_TRUE(Shows(Pane::Left, kLeft));
    Program->Type("q");
    EXPECT_TRUE(Program->ShowsText(kShell));
}

TEST_F(PanesAndTheirTerminal, SigtermEndsThem) {
    ExpectEndBy(SIGTERM);
}

// As Ctrl-S does, or a line that hangs.
TEST_F(PanesAndTheirTerminal, SigtermEndsThemWhereOutputIsStopped) {
    StartShown();
    Program->Type("\x13");
    Program->Type(kDown);
    Program->Watch(0.5);
    Program->Signal(SIGTERM);
    EXPECT_TRUE(Program->ExitsWith(128 + SIGTERM));
}

TEST_F(PanesAndTheirTerminal, SighupEndsThem) {
    ExpectEndBy(SIGHUP);
}

TEST_F(PanesAndTheirTerminal, ACrashGivesTheTerminalBack) {
    ExpectEndBy(SIGSEGV);
}

TEST_F(PanesAndTheirTerminal, AnAbortGivesTheTerminalBack) {
    ExpectEndBy(SIGABRT);
}

TEST_F(PanesAndTheirTerminal, AClosedTerminalEndsThem) {
    StartShown();
    Program->HangUp();
    EXPECT_TRUE(Program->ExitsWith(129));
}

TEST_F(PanesAndTheirTerminal, SendNothingWhileNothingHappens) {
    StartShown();
    ASSERT_TRUE(FallsSilent());
    const std::size_t before = Program->Output().size();
    Program->Watch(2.0);
    EXPECT_EQ(Program->Output().size(), before);
}

TEST_F(PanesAndTheirTerminal, AClickGoesToAnEntryAndToItsPane) {
    StartShown();
    Click(5, 4);
    ASSERT_TRUE(IsOn(Pane::Left, "apple.txt"));
    Click(45, 3);
    ASSERT_TRUE(IsOn(Pane::Right, "cake"));
    Program->Type(kUp);
    EXPECT_TRUE(IsOn(Pane::Right, "/.."));
    EXPECT_TRUE(IsOn(Pane::Left, "apple.txt"));
}

TEST_F(PanesAndTheirTerminal, ADoubleClickEntersAndTheWheelMoves) {
    StartShown();
    Click(5, 3);
    Click(5, 3);
    ASSERT_TRUE(Shows(Pane::Left, {" /..", "  file"}));
    Click(5, 2);
    Click(5, 2);
    ASSERT_TRUE(Shows(Pane::Left, kLeft));
    ASSERT_TRUE(IsOn(Pane::Left, "/inside"));
    constexpr int kWheelUp = 64;
    constexpr int kWheelDown = 65;
    Click(5, 3, kWheelDown);
    ASSERT_TRUE(IsOn(Pane::Left, "bread.txt"));
    Click(5, 3, kWheelUp);
    EXPECT_TRUE(IsOn(Pane::Left, "/.."));
}

TEST_F(PanesAndTheirTerminal, AClickOnAKeyBelowPressesIt) {
    StartShown();
    Click(76, 23);
    EXPECT_TRUE(Program->ExitsWith(0));
}

TEST_F(PanesAndTheirTerminal, HaveColorsUnlessNobodyWantsThem) {
    StartShown();
    EXPECT_TRUE(HasColors());
    StartShown({{"NO_COLOR", "1"}});
    EXPECT_FALSE(HasColors());
}

} // namespace
