// The modes of a real terminal while keys are taken and afterwards.

#include "terminal_modes.h"

#include <array>
#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "in_key_mode.h"

namespace {

using Reporter = ForkedInTerminal::Reporter;

// Runs Body in a child that is in the background of the terminal that its parent owns.
int InBackground(const std::function<int()>& Body) {
    const pid_t child = fork();
    if (child == 0) {
        setpgid(0, 0);
        _exit(Body());
    }
    int status = 0;
    waitpid(child, &status, WUNTRACED);
    if (WIFSTOPPED(status)) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        return 98;
    }
    return WEXITSTATUS(status);
}

} // namespace

TEST(KeyModes, DeliverKeysOneByOneAndShowNone) {
    ForkedInTerminal process = InKeyModeUntilKey([] { RestoreTerminalNow(); });
    ASSERT_EQ(process.NextReport(), "entered");
    const termios modes = process.Modes();
    EXPECT_EQ(modes.c_lflag & (ICANON | ECHO | IEXTEN), 0U);
    EXPECT_EQ(modes.c_cc[VMIN], 1);
    EXPECT_EQ(modes.c_cc[VTIME], 0);
    process.Type("x");
    process.WaitForEnd();
    EXPECT_EQ(process.Output(), "");
}

TEST(KeyModes, LeaveSignalsAndOutputAsTheyAre) {
    ForkedInTerminal process = InKeyModeUntilKey([] {});
    const termios before = process.Modes();
    ASSERT_EQ(process.NextReport(), "entered");
    const termios modes = process.Modes();
    EXPECT_NE(modes.c_lflag & ISIG, 0U);
    EXPECT_EQ(modes.c_oflag, before.c_oflag);
    EXPECT_EQ(modes.c_iflag, before.c_iflag);
}

TEST(KeyModes, AreNotEnteredWithoutATerminal) {
    EXPECT_FALSE(EnterKeyModes(-1));
}

TEST(KeyModes, AreNotEnteredInTheBackground) {
    ForkedInTerminal process([](const Reporter&) {
        return InBackground([] { return EnterKeyModes(STDIN_FILENO) ? 1 : 42; });
    });
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 42);
    EXPECT_TRUE(process.HasModesAsAtFirst());
}

TEST(TerminalOwner, IsTheProgramWhereThereIsNoJobControl) {
    std::array<int, 2> pipeEnds{};
    ASSERT_EQ(pipe(pipeEnds.data()), 0);
    EXPECT_TRUE(OwnsTerminal(pipeEnds[0]));
    close(pipeEnds[0]);
    close(pipeEnds[1]);
    EXPECT_FALSE(OwnsTerminal(pipeEnds[0]));
}

TEST(KeyModes, AreSetAgainAfterTheShellHasChangedThem) {
    ForkedInTerminal process([](const Reporter& Report) {
        termios usual{};
        tcgetattr(STDIN_FILENO, &usual);
        EnterKeyModes(STDIN_FILENO);
        tcsetattr(STDIN_FILENO, TCSANOW, &usual);
        EnterKeyModes(STDIN_FILENO);
        termios again{};
        tcgetattr(STDIN_FILENO, &again);
        Report((again.c_lflag & ICANON) == 0 ? "set" : "not set");
        RestoreTerminalNow();
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "set");
    process.WaitForEnd();
    EXPECT_TRUE(process.HasModesAsAtFirst());
}

TEST(TerminalRestore, GivesBackTheModesFromBeforeTheFirstEntry) {
    ForkedInTerminal process([](const Reporter&) {
        EnterKeyModes(STDIN_FILENO);
        EnterKeyModes(STDIN_FILENO);
        RestoreTerminalNow();
        return 0;
    });
    process.WaitForEnd();
    EXPECT_TRUE(process.HasModesAsAtFirst());
}

TEST(TerminalRestore, HappensWhenItIsAskedFor) {
    const int status = StatusOfRestoringEnd([] {
        RestoreTerminalNow();
        _exit(7);
    });
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(TerminalRestore, LeavesTheTerminalAloneInTheBackground) {
    ForkedInTerminal process([](const Reporter& Report) {
        EnterKeyModes(STDIN_FILENO);
        const int status = InBackground([] {
            RestoreTerminalNow();
            return 42;
        });
        termios now{};
        tcgetattr(STDIN_FILENO, &now);
        Report((now.c_lflag & ICANON) == 0 ? "as it was" : "changed");
        return status;
    });
    EXPECT_EQ(process.NextReport(), "as it was");
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 42);
}

TEST(TerminalRestore, HappensOnlyOnce) {
    ForkedInTerminal process([](const Reporter& Report) {
        EnterKeyModes(STDIN_FILENO);
        RestoreTerminalNow();
        termios modes{};
        tcgetattr(STDIN_FILENO, &modes);
        modes.c_lflag &= static_cast<tcflag_t>(~ECHO);
        tcsetattr(STDIN_FILENO, TCSANOW, &modes);
        RestoreTerminalNow();
        tcgetattr(STDIN_FILENO, &modes);
        Report((modes.c_lflag & ECHO) == 0 ? "as the next user left it" : "changed");
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "as the next user left it");
}

TEST(TerminalRestore, SendsOnceWhatItWasToldTo) {
    ForkedInTerminal process([](const Reporter&) {
        EnterKeyModes(STDIN_FILENO);
        SendOnRestore("given back");
        RestoreTerminalNow();
        EnterKeyModes(STDIN_FILENO);
        RestoreTerminalNow();
        return 0;
    });
    EXPECT_EQ(process.Output(), "given back");
}
