// The modes of a real terminal after every way to end.

#include "restore_on_end.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "in_key_mode.h"
#include "signals_blocked.h"
#include "worker_thread.h"

namespace {

using Reporter = ForkedInTerminal::Reporter;

// A sanitizer turns a fault into an exit with a status of its own.
bool EndedByFault(int Status, int Signal) {
    return WIFSIGNALED(Status) ? WTERMSIG(Status) == Signal
                               : WIFEXITED(Status) && WEXITSTATUS(Status) != 0;
}

// Those that end a program which does nothing about them, without faults and SIGABRT, which
// sanitizers take.
std::vector<int> SignalsThatEndPrograms() {
    std::vector<int> signals = {SIGHUP,  SIGINT,  SIGQUIT, SIGPIPE,   SIGALRM,  SIGTERM,
                                SIGUSR1, SIGUSR2, SIGTRAP, SIGSYS,    SIGXCPU,  SIGXFSZ,
                                SIGIO,   SIGPROF, SIGPWR,  SIGVTALRM, SIGSTKFLT};
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
        signals.push_back(signal);
    }
    return signals;
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

} // namespace

TEST(RestoreOnEnd, HappensOnExit) {
    const int status = StatusOfRestoringEnd([] { std::exit(7); });
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(RestoreOnEnd, HappensOnAnUncaughtException) {
    EXPECT_TRUE(EndedByFault(StatusOfRestoringEnd([] { std::terminate(); }), SIGABRT));
}

TEST(RestoreOnEnd, HappensOnAFault) {
    EXPECT_TRUE(EndedByFault(StatusOfRestoringEnd(WriteToNowhere), SIGSEGV));
}

TEST(RestoreOnEnd, HappensOnAFaultOfAnotherThread) {
    const int status = StatusOfRestoringEnd([] { std::thread(WriteToNowhere).join(); });
    EXPECT_TRUE(EndedByFault(status, SIGSEGV));
}

TEST(RestoreOnEnd, HappensOnAFaultOfAThreadWithoutSignals) {
    const int status = StatusOfRestoringEnd([] {
        const SignalsBlocked blocked;
        std::thread(WriteToNowhere).join();
    });
    EXPECT_TRUE(EndedByFault(status, SIGSEGV));
}

TEST(RestoreOnEnd, HappensOnASignalThatWasSent) {
    EXPECT_TRUE(EndedByFault(StatusOfRestoringEnd([] { kill(getpid(), SIGBUS); }), SIGBUS));
}

TEST(RestoreOnEnd, HappensOnEverySignalThatEndsPrograms) {
    for (const int signal : SignalsThatEndPrograms()) {
        SCOPED_TRACE(signal);
        const int status = StatusOfRestoringEnd([signal] { kill(getpid(), signal); });
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), signal);
    }
}

TEST(RestoreOnEnd, HappensOnASignalOfTheSystem) {
    const int status = StatusOfRestoringEnd([] {
        constexpr itimerval kSoon{{0, 0}, {0, 1}};
        setitimer(ITIMER_REAL, &kSoon, nullptr);
        pause();
    });
    EXPECT_EQ(WTERMSIG(status), SIGALRM);
}

TEST(RestoreOnEnd, LeavesSignalsAloneThatDoNotEndTheProgram) {
    ForkedInTerminal process([](const Reporter& Report) {
        std::signal(SIGUSR2, SIG_IGN);
        std::signal(SIGPROF, [](int) {});
        RestoreOnEveryEnd();
        EnterKeyModes(STDIN_FILENO);
        for (const int signal : {SIGUSR2, SIGPROF, SIGCHLD, SIGWINCH, SIGURG, SIGCONT}) {
            raise(signal);
        }
        termios modes{};
        tcgetattr(STDIN_FILENO, &modes);
        Report((modes.c_lflag & ICANON) == 0 ? "in key mode" : "restored");
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "in key mode");
}

TEST(RestoreOnEnd, HappensWhenTheStackOverflows) {
    EXPECT_TRUE(EndedByFault(StatusOfRestoringEnd([] { FillStack(0); }), SIGSEGV));
}

TEST(RestoreOnEnd, HappensWhenAWorkersStackOverflows) {
    const int status =
        StatusOfRestoringEnd([] { const WorkerThread worker([] { FillStack(0); }); });
    EXPECT_TRUE(EndedByFault(status, SIGSEGV));
}

TEST(RestoreOnEnd, TakesTheBlockAwayOnTheTerminalWhereMessagesGoElsewhere) {
    const int log = memfd_create("log", MFD_CLOEXEC);
    ForkedInTerminal process = InKeyModeUntilKey([log] {
        dup2(log, STDERR_FILENO);
        raise(SIGUSR2);
    });
    ASSERT_EQ(process.NextReport(), "entered");
    process.Type("x");
    EXPECT_EQ(process.Output(), "\r\x1B[J\x1B[?7h");
    EXPECT_EQ(lseek(log, 0, SEEK_END), 0);
    close(log);
}

TEST(RestoreOnEnd, TakesTheBlockAwayOnACrash) {
    ForkedInTerminal process = InKeyModeUntilKey([] { raise(SIGFPE); });
    ASSERT_EQ(process.NextReport(), "entered");
    process.Type("x");
    EXPECT_EQ(process.Output().substr(0, 9), "\r\x1B[J\x1B[?7h");
    process.WaitForEnd();
}
