// The screen on real terminals.

#include <csignal>
#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "program_in_terminal.h"
#include "sanitizer_options.h"

namespace {

constexpr int kBySignal = 128;

// The row that shows how marks and wide characters are put.
const std::string kNames = "日本語|e\u0301|x|\uFFFD|";

std::string PictureOf(int Columns, int Rows, const std::string& Latest = {}) {
    const auto blanks = [](int Count) { return std::string(static_cast<std::size_t>(Count), ' '); };
    std::string text = "window " + std::to_string(Columns) + "x" + std::to_string(Rows) + "\n" +
                       kNames + "\nunder the cursor    mark\n" + Latest + "\n";
    text += blanks(Columns - 3) + "日\n";
    return text + std::string(static_cast<std::size_t>(Rows - 6), '\n') + blanks(Columns - 6) +
           "corner\n";
}

// 0 where there is none.
pid_t ChildOf(pid_t Parent) {
    const std::string parent = std::to_string(Parent);
    std::ifstream children("/proc/" + parent + "/task/" + parent + "/children");
    pid_t child = 0;
    children >> child;
    return child;
}

class CursesScreenOnTerminal : public testing::Test {
protected:
    static ProgramInTerminal::Setting Setting(const std::string& Term) {
        ProgramInTerminal::Setting setting;
        setting.Command = {FULL_SCREEN_PROGRAM};
        setting.Environment = {{"TERM", Term},
                               {"LC_ALL", "C.UTF-8"},
                               {"NO_COLOR", ""},
                               {"LINES", ""},
                               {"COLUMNS", ""}};
        LetSignalsEndIt(setting.Environment);
        return setting;
    }

    void Start(const ProgramInTerminal::Setting& Wanted) {
        Program = std::make_unique<ProgramInTerminal>(Wanted);
    }
    void StartShown(const std::string& Term = "xterm-256color") {
        Start(Setting(Term));
        ASSERT_TRUE(Program->ShowsScreen(PictureOf(80, 24)));
    }
    void StartInShell() {
        ProgramInTerminal::Setting setting = Setting("xterm-256color");
        setting.Command = {"/bin/bash", "--norc", "--noprofile", "-i"};
        setting.Environment.emplace_back("PS1", "shell> ");
        Start(setting);
        ASSERT_TRUE(Program->ShowsText("shell>"));
        Program->Type(FULL_SCREEN_PROGRAM "\r");
        ASSERT_TRUE(Program->ShowsScreen(PictureOf(80, 24)));
    }

    void ExpectBackInShell() {
        Program->Type("q");
        ASSERT_TRUE(Program->ShowsText("shell>"));
        EXPECT_TRUE(Program->DrawsAsAtFirst());
        Program->Type("echo \"status $?\"\r");
        EXPECT_TRUE(Program->ShowsText("status 0"));
    }

    bool Has(const std::string& Bytes) const {
        return Program->Output().find(Bytes) != std::string::npos;
    }
    void ExpectRestored() const {
        EXPECT_TRUE(SameTerminalSettings(Program->SettingsAtFirst(), Program->Settings()));
        EXPECT_TRUE(Program->DrawsAsAtFirst());
        const std::string& output = Program->Output();
        const std::size_t mouseOn = output.rfind("\x1B[?1000h");
        EXPECT_TRUE(mouseOn == std::string::npos ||
                    output.find("\x1B[?1000l", mouseOn) != std::string::npos);
    }

    std::unique_ptr<ProgramInTerminal> Program;
};

} // namespace

TEST_F(CursesScreenOnTerminal, ShowsAFrameAndGivesTheTerminalBack) {
    StartShown();
    EXPECT_FALSE(Program->DrawsAsAtFirst());
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Program->Screen(), "");
    ExpectRestored();
}

TEST_F(CursesScreenOnTerminal, ChangesNoModeOfTheTerminalButThoseForKeys) {
    StartShown();
    termios expected = Program->SettingsAtFirst();
    expected.c_lflag &= static_cast<tcflag_t>(~(ICANON | ECHO | IEXTEN));
    EXPECT_TRUE(SameTerminalSettings(Program->Settings(), expected));
    EXPECT_NE(expected.c_lflag & ISIG, 0U);
}

TEST_F(CursesScreenOnTerminal, FollowsTheWindow) {
    StartShown();
    Program->Resize(120, 40);
    EXPECT_TRUE(Program->ShowsScreen(PictureOf(120, 40)));
    Program->Resize(40, 10);
    EXPECT_TRUE(Program->ShowsScreen(PictureOf(40, 10)));
    Program->Resize(80, 24);
    EXPECT_TRUE(Program->ShowsScreen(PictureOf(80, 24)));
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
    ExpectRestored();
}

TEST_F(CursesScreenOnTerminal, CopesWithAWindowWithoutRoom) {
    StartShown();
    Program->Resize(3, 1);
    EXPECT_TRUE(Program->ShowsScreen("win\n"));
    Program->Resize(1, 1);
    EXPECT_TRUE(Program->ShowsScreen("w\n"));
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
}

TEST_F(CursesScreenOnTerminal, SendsNothingWhileNothingChanges) {
    StartShown();
    const std::size_t before = Program->Output().size();
    // Ten frames.
    Program->Watch(1.0);
    EXPECT_EQ(Program->Output().size(), before);
}

TEST_F(CursesScreenOnTerminal, SendsTheFrameWholeWhenItIsToldTo) {
    StartShown();
    const std::size_t before = Program->Output().size();
    Program->Type("\x0C");
    const auto isSent = [&] {
        return Program->Output().find("window", before) != std::string::npos;
    };
    for (int polls = 0; polls < 1000 && !isSent(); ++polls) {
        Program->Watch(0.02);
    }
    ASSERT_TRUE(isSent()) << "waited in vain until the frame is sent again";
    EXPECT_TRUE(Program->ShowsScreen(PictureOf(80, 24)));
}

TEST_F(CursesScreenOnTerminal, ShowsTheCursorWhereSomebodyTypes) {
    StartShown();
    ASSERT_FALSE(Has("\x1B[?25h"));
    Program->Type("e");
    EXPECT_TRUE(Program->ShowsCursorAt(4, 6));
}

TEST_F(CursesScreenOnTerminal, TakesTheMouse) {
    StartShown();
    Program->Type("\x1B[<0;11;4M\x1B[<0;11;4m");
    EXPECT_TRUE(Program->ShowsScreen(PictureOf(80, 24, "pressed at 10, 3")));
}

TEST_F(CursesScreenOnTerminal, LeavesTheMouseAloneWhereThereIsNone) {
    StartShown("vt220");
    EXPECT_FALSE(Has("\x1B[?1000h"));
}

TEST_F(CursesScreenOnTerminal, GivesTheTerminalBackForAStopAndTakesItAgain) {
    StartInShell();
    Program->Type("\x1a");
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    EXPECT_TRUE(Program->DrawsAsAtFirst());
    EXPECT_TRUE(Program->ShowsText("shell>"));
    Program->Type("fg\r");
    EXPECT_TRUE(Program->ShowsScreen(PictureOf(80, 24)));
    ExpectBackInShell();
}

TEST_F(CursesScreenOnTerminal, TakesTheTerminalAgainAfterAStopThatNobodyAnnounced) {
    StartInShell();
    const pid_t screen = ChildOf(Program->ProcessId());
    ASSERT_GT(screen, 0);
    kill(screen, SIGSTOP);
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    Program->Type("fg\r");
    ASSERT_TRUE(Program->ShowsScreen(PictureOf(80, 24)));
    ExpectBackInShell();
}

TEST_F(CursesScreenOnTerminal, GivesTheTerminalBackOnACrashAfterAStop) {
    StartInShell();
    Program->Type("\x1a");
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    Program->Type("fg\r");
    ASSERT_TRUE(Program->ShowsScreen(PictureOf(80, 24)));
    Program->Type("a");
    EXPECT_TRUE(Program->ShowsText("Aborted"));
    EXPECT_TRUE(Program->DrawsAsAtFirst());
}

TEST_F(CursesScreenOnTerminal, GivesTheTerminalBackOnASignal) {
    for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
        SCOPED_TRACE(signal);
        StartShown();
        Program->Signal(signal);
        EXPECT_TRUE(Program->ExitsWith(kBySignal + signal));
        ExpectRestored();
    }
}

TEST_F(CursesScreenOnTerminal, EndsOnCtrlC) {
    StartShown();
    Program->Type("\x03");
    EXPECT_TRUE(Program->ExitsWith(kBySignal + SIGINT));
    ExpectRestored();
}

TEST_F(CursesScreenOnTerminal, GivesTheTerminalBackOnACrash) {
    StartShown();
    Program->Type("a");
    EXPECT_TRUE(Program->ExitsWith(kBySignal + SIGABRT));
    ExpectRestored();
}

TEST_F(CursesScreenOnTerminal, GivesTheTerminalBackOnAFault) {
    for (const char* term : {"xterm-256color", "tmux-256color", "foot"}) {
        SCOPED_TRACE(term);
        StartShown(term);
        Program->Type("s");
        EXPECT_TRUE(Program->ExitsWith(kBySignal + SIGSEGV));
        ExpectRestored();
    }
}

TEST_F(CursesScreenOnTerminal, GivesTheTerminalBackOnAnExitOutOfTheMiddle) {
    StartShown();
    Program->Type("x");
    EXPECT_TRUE(Program->ExitsWith(3));
    ExpectRestored();
}

TEST_F(CursesScreenOnTerminal, DrawsOnEachKindOfTerminal) {
    for (const char* term : {"xterm-256color", "xterm", "xterm-mono", "vt100", "vt220", "linux",
                             "tmux-256color", "screen", "rxvt-unicode-256color", "foot"}) {
        SCOPED_TRACE(term);
        StartShown(term);
        Program->Type("q");
        EXPECT_TRUE(Program->ExitsWith(0));
        ExpectRestored();
    }
}

TEST_F(CursesScreenOnTerminal, SaysWhereNothingCanBeDrawn) {
    Start(Setting("dumb"));
    EXPECT_TRUE(Program->ExitsWith(2));
    EXPECT_EQ(Program->Screen(), "nothing can be drawn on a terminal of the kind 'dumb'\n");
    Start(Setting(""));
    EXPECT_TRUE(Program->ExitsWith(2));
    EXPECT_EQ(Program->Screen(), "the variable TERM does not say what kind of terminal this is\n");
}

TEST_F(CursesScreenOnTerminal, DrawsInColors) {
    StartShown();
    EXPECT_TRUE(Has("\x1B[30m\x1B[46m"));
}

TEST_F(CursesScreenOnTerminal, DrawsWithoutColorsWhereNobodyWantsThem) {
    ProgramInTerminal::Setting setting = Setting("xterm-256color");
    setting.Environment.emplace_back("NO_COLOR", "1");
    Start(setting);
    ASSERT_TRUE(Program->ShowsScreen(PictureOf(80, 24)));
    for (const char* color : {"\x1B[3", "\x1B[4"}) {
        for (char number = '0'; number <= '9'; ++number) {
            EXPECT_FALSE(Has(color + std::string(1, number) + "m")) << number;
        }
    }
    EXPECT_TRUE(Has(";7m"));
    EXPECT_TRUE(Has(";1m"));
}

TEST_F(CursesScreenOnTerminal, DrawsInAsciiWhereTheTerminalHasNothingElse) {
    ProgramInTerminal::Setting setting = Setting("xterm-256color");
    setting.Environment.emplace_back("LC_ALL", "POSIX");
    Start(setting);
    ASSERT_TRUE(Program->ShowsText("corner"));
    EXPECT_TRUE(Program->ShowsText("??????|e|x|?|\n"));
    for (const char byte : Program->Output()) {
        EXPECT_GE(byte, 0);
    }
}
