// Programs on a terminal that they share with us.

#include "foreground_program.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "forked_in_terminal.h"
#include "screen_text.h"
#include "temporary_directory.h"

namespace {

using Reporter = ForkedInTerminal::Reporter;

// Its exit status as soon as its descriptor says that it has ended.
int StatusOf(ForegroundProgram& Program) {
    pollfd over{Program.OverFd(), POLLIN, 0};
    constexpr int kLimitMilliseconds = 20000;
    poll(&over, 1, kLimitMilliseconds);
    return Program.TakeExitStatus().value_or(-1);
}

int StatusOf(const std::vector<std::string>& Arguments) {
    ForegroundProgram program(Arguments);
    return StatusOf(program);
}

// What the program prints on a terminal of its own.
std::string PrintedBy(const std::vector<std::string>& Arguments) {
    ForkedInTerminal process([&](const Reporter&) { return StatusOf(Arguments); });
    return process.Output();
}

int StatusOnTerminal(const std::string& Script) {
    ForkedInTerminal process([&](const Reporter&) { return StatusOf({"sh", "-c", Script}); });
    return WEXITSTATUS(process.WaitForEnd());
}

} // namespace

TEST(ForegroundProgram, EndsWithItsStatus) {
    EXPECT_EQ(StatusOnTerminal("exit 7"), 7);
    EXPECT_EQ(StatusOnTerminal("exit 0"), 0);
    EXPECT_EQ(StatusOnTerminal("kill -TERM $$"), 128 + SIGTERM);
}

TEST(ForegroundProgram, LetsTheCallerGoOnMeanwhile) {
    ForkedInTerminal process([](const Reporter& Report) {
        ForegroundProgram program({"sh", "-c", "read line; exit 5"});
        Report(program.TakeExitStatus() ? "over" : "running");
        return StatusOf(program);
    });
    EXPECT_EQ(process.NextReport(), "running");
    process.Type("\r");
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 5);
}

TEST(ForegroundProgram, HasItsStreamsOnTheTerminalWhereverOursAre) {
    ForkedInTerminal process([](const Reporter&) {
        const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            dup2(nowhere, stream);
        }
        return StatusOf({"sh", "-c", "test -t 0 && test -t 1 && test -t 2 && exit 42"});
    });
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 42);
}

TEST(ForegroundProgram, GetsSignalsAsAShellHandsThemOn) {
    ForkedInTerminal process([](const Reporter&) {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_SETMASK, &all, nullptr);
        std::signal(SIGINT, SIG_IGN);
        std::signal(SIGPIPE, SIG_IGN);
        // The last seven digits of a set are the signals up to 28; the C library keeps some later
        // ones for itself.
        return StatusOf(
            {"grep", "-E", "^SigBlk:.*[1-9a-f]|^SigIgn:.{10}.*[1-9a-f]", "/proc/self/status"});
    });
    EXPECT_EQ(process.Output(), "");
    const int nothingFound = 1;
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), nothingFound);
}

TEST(ForegroundProgram, GetsItsTerminalBackWhereASignalHasEndedIt) {
    ForkedInTerminal process([](const Reporter& Report) {
        const auto echoes = [] {
            termios modes{};
            return tcgetattr(STDIN_FILENO, &modes) == 0 && (modes.c_lflag & ECHO) != 0;
        };
        const int killed = StatusOf({"sh", "-c", "stty -echo -isig; kill -KILL $$"});
        Report(std::to_string(killed) + (echoes() ? " as it was" : " changed"));
        const int ended = StatusOf({"sh", "-c", "stty -echo"});
        Report(std::to_string(ended) + (echoes() ? " as it was" : " changed"));
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "137 as it was");
    EXPECT_EQ(process.NextReport(), "0 changed");
}

TEST(ForegroundProgram, EndsWhenItIsAskedTo) {
    ForkedInTerminal process([](const Reporter& Report) {
        ForegroundProgram program({"sh", "-c", "trap 'exit 3' TERM; echo ready; kill -STOP $$"});
        Report("started");
        siginfo_t stopped{};
        constexpr id_t kAny = 0;
        waitid(P_ALL, kAny, &stopped, WSTOPPED | WNOWAIT);
        program.Terminate();
        return StatusOf(program);
    });
    EXPECT_EQ(process.NextReport(), "started");
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 3);
}

TEST(ForegroundProgram, IsInOurProcessGroup) {
    ForkedInTerminal process([](const Reporter&) {
        return StatusOf({"sh", "-c",
                         "test \"$(cut -d' ' -f5 /proc/$$/stat)\" -eq " +
                             std::to_string(getpgrp()) + " && exit 42"});
    });
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 42);
}

TEST(ForegroundProgram, SaysWhyItDoesNotRun) {
    EnsureUtf8Locale();
    ForkedInTerminal process([](const Reporter& Report) {
        try {
            ForegroundProgram({"no-such-\nprogram"});
        } catch (const std::runtime_error& error) {
            Report(error.what());
        }
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "Cannot run 'no-such-?program': No such file or directory.");
}

TEST(ShellArguments, LeaveOptionsToTheCommandAndEachByteToTheFile) {
    const TemporaryDirectory directory;
    for (const char* name :
         {"plain", "two words", "$(echo bad)", "`x` '\" \\ ;|&", "a\nb", "\xFF*"}) {
        const std::filesystem::path file = directory.Path() / name;
        std::ofstream(file) << "inside";
        EXPECT_EQ(PrintedBy(ShellArguments("head -c 4", file.native())), "insi") << name;
    }
}

TEST(ShellArguments, MayBeMoreThanOneCommand) {
    const TemporaryDirectory directory;
    const std::filesystem::path file = directory.Path() / "file";
    std::ofstream(file) << "inside";
    EXPECT_EQ(PrintedBy(ShellArguments("LC_ALL=C head -c 3", file.native())), "ins");
    EXPECT_EQ(PrintedBy(ShellArguments("printf before; cat", file.native())), "beforeinside");
}

TEST(ShellArguments, EndAsShellsDoWhereThereIsNoSuchProgram) {
    ForkedInTerminal process(
        [](const Reporter&) { return StatusOf(ShellArguments("no-such-program -R", "file")); });
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 127);
}
