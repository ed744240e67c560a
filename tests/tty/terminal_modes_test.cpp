// The modes of a real terminal: while keys are taken, and after every way to end.

#include "terminal_modes.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <functional>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "forked_in_terminal.h"
#include "signals_blocked.h"
#include "worker_thread.h"

namespace {

using Reporter = ForkedInTerminal::Reporter;

// Enters key mode, waits for a key so that the test can look at the terminal, and ends by End.
ForkedInTerminal InKeyModeUntilKey(const std::function<void()>& End) {
    return ForkedInTerminal([&End](const Reporter& Report) {
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        Report(EnterKeyModes(STDIN_FILENO) ? "entered" : "refused");
        char key = 0;
        if (read(STDIN_FILENO, &key, 1) == 1) {
            End();
        }
        return 0;
    });
}

// A process that ends as End does in key mode gives the terminal its modes back. Returns how it
// ended.
int StatusOfRestoringEnd(const std::function<void()>& End) {
    ForkedInTerminal process = InKeyModeUntilKey(End);
    EXPECT_EQ(process.NextReport(), "entered");
    EXPECT_FALSE(process.HasModesAsAtFirst());
    process.Type("x");
    process.Output();
    const int status = process.WaitForEnd();
    EXPECT_TRUE(process.HasModesAsAtFirst());
    return status;
}

// A sanitizer turns a fault into an exit with a status of its own.
bool EndedByFault(int Status, int Signal) {
    return WIFSIGNALED(Status) ? WTERMSIG(Status) == Signal
                               : WIFEXITED(Status) && WEXITSTATUS(Status) != 0;
}

void WriteToNowhere() {
    void* page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    *static_cast<volatile char*>(page) = 1;
}

// Never ends, although no compiler can see that.
int FillStack(int Depth) {
    volatile char room[4096];
    room[0] = static_cast<char>(Depth);
    return Depth < 0 ? 0 : FillStack(Depth + 1) + room[0];
}

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

TEST(TerminalRestore, HappensOnExit) {
    const int status = StatusOfRestoringEnd([] { std::exit(7); });
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(TerminalRestore, HappensOnAnUncaughtException) {
    EXPECT_TRUE(EndedByFault(StatusOfRestoringEnd([] { std::terminate(); }), SIGABRT));
}

TEST(TerminalRestore, HappensOnAFault) {
    EXPECT_TRUE(EndedByFault(StatusOfRestoringEnd(WriteToNowhere), SIGSEGV));
}

TEST(TerminalRestore, HappensOnAFaultOfAnotherThread) {
    const int status = StatusOfRestoringEnd([] { std::thread(WriteToNowhere).join(); });
    EXPECT_TRUE(EndedByFault(status, SIGSEGV));
}

TEST(TerminalRestore, HappensOnAFaultOfAThreadWithoutSignals) {
    const int status = StatusOfRestoringEnd([] {
        const SignalsBlocked blocked;
        std::thread(WriteToNowhere).join();
    });
    EXPECT_TRUE(EndedByFault(status, SIGSEGV));
}

TEST(TerminalRestore, HappensOnASignalThatWasSent) {
    EXPECT_TRUE(EndedByFault(StatusOfRestoringEnd([] { kill(getpid(), SIGBUS); }), SIGBUS));
}

TEST(TerminalRestore, HappensWhenTheStackOverflows) {
    EXPECT_TRUE(EndedByFault(StatusOfRestoringEnd([] { FillStack(0); }), SIGSEGV));
}

TEST(TerminalRestore, HappensWhenAWorkersStackOverflows) {
    const int status =
        StatusOfRestoringEnd([] { const WorkerThread worker([] { FillStack(0); }); });
    EXPECT_TRUE(EndedByFault(status, SIGSEGV));
}

TEST(TerminalRestore, MovesBelowTheBlockOnACrash) {
    ForkedInTerminal process = InKeyModeUntilKey([] { raise(SIGFPE); });
    ASSERT_EQ(process.NextReport(), "entered");
    process.Type("x");
    EXPECT_EQ(process.Output().substr(0, 3), "\r\r\n");
    process.WaitForEnd();
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
