// Signals and what they do meanwhile and afterwards, in a process of its own.

#include "signal_inbox.h"

#include <csignal>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

// How a process ends that runs Body and then returns what Body returns.
int StatusOf(const std::function<int()>& Body) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(Body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

} // namespace

TEST(SignalInbox, TakesEachSignalOnce) {
    for (const int signal :
         {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGCONT, SIGWINCH, SIGUSR1}) {
        SCOPED_TRACE(signal);
        const int status = StatusOf([signal] {
            SignalInbox inbox;
            raise(signal);
            return inbox.Receives(signal) && inbox.Take() == signal && !inbox.Take() ? 42 : 1;
        });
        EXPECT_EQ(WEXITSTATUS(status), 42);
    }
}

TEST(SignalInbox, LeavesAnIgnoredSignalIgnored) {
    const int status = StatusOf([] {
        std::signal(SIGHUP, SIG_IGN);
        SignalInbox inbox;
        raise(SIGHUP);
        return !inbox.Receives(SIGHUP) && !inbox.Take() ? 42 : 1;
    });
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

TEST(SignalInbox, LetsSignalsActByThemselvesAgain) {
    const int status = StatusOf([] {
        { const SignalInbox inbox; }
        raise(SIGTERM);
        return 1;
    });
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST(SignalInbox, StopsTheProcessAndForgetsWhatHasContinuedIt) {
    for (const int signal : {SIGTSTP, SIGTTIN}) {
        SCOPED_TRACE(signal);
        const pid_t child = fork();
        if (child == 0) {
            // Whoever is alone in its group with its parent outside can be stopped.
            setpgid(0, 0);
            SignalInbox inbox;
            const bool bStopped = inbox.StopBy(signal);
            const bool bNothingCame = bStopped && !inbox.Take();
            raise(SIGTSTP);
            _exit(bNothingCame && inbox.Take() == SIGTSTP ? 42 : 1);
        }
        int status = 0;
        waitpid(child, &status, WUNTRACED);
        ASSERT_TRUE(WIFSTOPPED(status));
        EXPECT_EQ(WSTOPSIG(status), signal);
        kill(child, SIGCONT);
        waitpid(child, &status, 0);
        EXPECT_EQ(WEXITSTATUS(status), 42);
    }
}

TEST(SignalInbox, TellsThatNobodyCouldContinueIt) {
    for (const int signal : {SIGTSTP, SIGTTIN}) {
        const pid_t child = fork();
        if (child == 0) {
            // Whoever leads a session has nobody outside of its group in it.
            setsid();
            SignalInbox inbox;
            _exit(inbox.StopBy(signal) ? 1 : 42);
        }
        int status = 0;
        waitpid(child, &status, WUNTRACED);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 42);
    }
}

TEST(SignalInbox, LeavesTimeForTheLastLineWhenASignalComesTooLate) {
    const auto started = std::chrono::steady_clock::now();
    const int status = StatusOf([] {
        {
            const SignalInbox inbox;
            raise(SIGTERM);
        }
        sleep(20);
        return 1;
    });
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
    EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(1900));
}

TEST(SignalInbox, ForgetsWhatCameTooLateAndEndsNothing) {
    const int status = StatusOf([] {
        {
            const SignalInbox inbox;
            raise(SIGUSR1);
            raise(SIGTSTP);
        }
        // Longer than one of the others would take to come once more.
        sleep(3);
        return 42;
    });
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

TEST(SignalAfter, ComesWhenTheDelayIsOver) {
    const int status = StatusOf([] {
        SendSignalAfter(std::chrono::seconds(1), SIGTERM);
        sleep(20);
        return 1;
    });
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}
