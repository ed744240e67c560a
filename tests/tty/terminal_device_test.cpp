// The device on a real terminal, in a process of its own.

#include "terminal_device.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "forked_in_terminal.h"

namespace {

using Reporter = ForkedInTerminal::Reporter;

class TerminalNames : public testing::Test {
protected:
    void SetUp() override {
        unsetenv("NO_COLOR");
        unsetenv("TERM");
    }
};

} // namespace

TEST(TerminalDevice, NeitherDrawsNorTakesKeysInTheBackground) {
    ForkedInTerminal process([](const Reporter& Report) {
        TerminalDevice device;
        device.EnterKeyMode();
        const pid_t child = fork();
        if (child == 0) {
            setpgid(0, 0);
            Report("ready");
            WaitForTypedBytes();
            _exit(!device.IsForeground() && !device.CanDraw() && device.KeyFd() < 0 &&
                          !device.TakeKey() && !device.EnterKeyMode()
                      ? 42
                      : 1);
        }
        int status = 0;
        waitpid(child, &status, WUNTRACED);
        kill(child, SIGKILL);
        int typed = 0;
        ioctl(STDIN_FILENO, FIONREAD, &typed);
        return WIFEXITED(status) && typed == 1 ? WEXITSTATUS(status) : 1;
    });
    ASSERT_EQ(process.NextReport(), "ready");
    process.Type("x");
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 42);
}

TEST(TerminalDevice, DrawsNothingWhileOutputIsStopped) {
    ForkedInTerminal process([](const Reporter& Report) {
        const TerminalDevice device;
        Report(device.CanDraw() ? "draws" : "waits");
        tcflow(STDERR_FILENO, TCOOFF);
        Report(device.CanDraw() ? "draws" : "waits");
        tcflow(STDERR_FILENO, TCOON);
        Report(device.CanDraw() ? "draws" : "waits");
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "draws");
    EXPECT_EQ(process.NextReport(), "waits");
    EXPECT_EQ(process.NextReport(), "draws");
}

TEST(TerminalDevice, DrawsNothingWhileTheRestOfItsOutputWaits) {
    ForkedInTerminal process([](const Reporter& Report) {
        TerminalDevice device;
        tcflow(STDERR_FILENO, TCOOFF);
        Report(device.Write("rest") && device.RestFd() >= 0 ? "kept" : "written");
        tcflow(STDERR_FILENO, TCOON);
        Report(device.CanDraw() ? "draws" : "waits");
        device.WriteRest();
        Report(device.CanDraw() && device.RestFd() < 0 ? "draws" : "waits");
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "kept");
    EXPECT_EQ(process.NextReport(), "waits");
    EXPECT_EQ(process.NextReport(), "draws");
    EXPECT_EQ(process.Output(), "rest");
}

TEST(TerminalDevice, WaitsWithTheLastLineFromCtrlSToCtrlQ) {
    ForkedInTerminal process([](const Reporter& Report) {
        TerminalDevice device;
        Report("ready");
        for (int polls = 0; polls < 20000 && device.CanDraw(); ++polls) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        device.Write("last line");
        Report(device.RestFd() >= 0 ? "kept" : "written");
        device.FinishWriting();
        return 0;
    });
    ASSERT_EQ(process.NextReport(), "ready");
    process.Type("\x13");
    ASSERT_EQ(process.NextReport(), "kept");
    process.Type("\x11");
    EXPECT_EQ(process.Output(), "last line");
    EXPECT_EQ(process.WaitForEnd(), 0);
}

TEST(TerminalDevice, NoticesThatTheTerminalIsClosed) {
    ForkedInTerminal process([](const Reporter& Report) {
        std::signal(SIGHUP, SIG_IGN);
        TerminalDevice device;
        device.EnterKeyMode();
        Report(device.IsClosed() ? "closed" : "open");
        for (int polls = 0; polls < 20000 && !device.IsClosed(); ++polls) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        Report(device.IsClosed() && device.KeyFd() < 0 && !device.TakeKey() && !device.CanDraw() &&
                       !device.Write("x")
                   ? "closed"
                   : "open");
        return 0;
    });
    ASSERT_EQ(process.NextReport(), "open");
    process.HangUp();
    EXPECT_EQ(process.NextReport(), "closed");
    EXPECT_EQ(process.WaitForEnd(), 0);
}

TEST(TerminalDevice, KnowsTheSizeOfTheWindow) {
    const auto sizeIn = [](winsize Window) {
        ForkedInTerminal process(
            [](const Reporter& Report) {
                const TerminalSize size = TerminalDevice().Size();
                Report(std::to_string(size.Columns) + "x" + std::to_string(size.Rows));
                return 0;
            },
            Window);
        return process.NextReport();
    };
    EXPECT_EQ(sizeIn({43, 132, 0, 0}), "132x43");
    EXPECT_EQ(sizeIn({1, 1, 0, 0}), "1x1");
    EXPECT_EQ(sizeIn({0, 0, 0, 0}), "80x24");
    EXPECT_EQ(sizeIn({50, 0, 0, 0}), "80x24");
    EXPECT_EQ(sizeIn({0, 100, 0, 0}), "80x24");
}

TEST(TerminalDevice, WritesToStandardError) {
    ForkedInTerminal process([](const Reporter& Report) {
        TerminalDevice device;
        Report(device.IsOutputTerminal() && device.Write("frame") ? "written" : "failed");
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "written");
    EXPECT_EQ(process.Output(), "frame");
}

TEST(TerminalDevice, WritesToTheControllingTerminalWhereStandardErrorIsNone) {
    ForkedInTerminal process(
        [](const Reporter& Report) {
            dup2(open("/dev/null", O_RDWR), STDERR_FILENO);
            TerminalDevice device;
            const bool bDraws = device.CanDraw() && !device.IsOutputTerminal();
            Report(bDraws && device.Size().Columns == 132 && device.Write("question") ? "written"
                                                                                      : "failed");
            return 0;
        },
        {43, 132, 0, 0});
    EXPECT_EQ(process.NextReport(), "written");
    EXPECT_EQ(process.Output(), "question");
}

TEST(TerminalDevice, DrawsNothingWithoutATerminal) {
    ForkedInTerminal process([](const Reporter& Report) {
        const pid_t child = fork();
        if (child == 0) {
            setsid();
            dup2(open("/dev/null", O_RDWR), STDERR_FILENO);
            const TerminalDevice device;
            Report(device.CanDraw() || device.CanAsk() ? "draws" : "draws nothing");
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "draws nothing");
}

TEST_F(TerminalNames, DecideWhetherLinesCanBeRedrawn) {
    EXPECT_FALSE(TerminalCanRedraw());
    for (const char* name : {"", "dumb"}) {
        setenv("TERM", name, 1);
        EXPECT_FALSE(TerminalCanRedraw()) << name;
    }
    for (const char* name : {"xterm-256color", "linux", "vt100", "foot"}) {
        setenv("TERM", name, 1);
        EXPECT_TRUE(TerminalCanRedraw()) << name;
    }
}

TEST_F(TerminalNames, DecideHowTextStandsOut) {
    const auto looks = [] {
        std::string all;
        for (const TextStyle style :
             {TextStyle::Plain, TextStyle::Key, TextStyle::Warning, TextStyle::Bar}) {
            all += StyleOn(style) + "x" + StyleOff(style);
        }
        return all;
    };
    const std::string inColors = "x\x1B[1mx\x1B[m\x1B[1;31mx\x1B[m\x1B[36mx\x1B[m";
    const std::string withoutColors = "x\x1B[1mx\x1B[m\x1B[1mx\x1B[mx";
    EXPECT_EQ(looks(), "xxxx");
    setenv("TERM", "dumb", 1);
    EXPECT_EQ(looks(), "xxxx");
    for (const char* name : {"xterm", "xterm-256color", "linux", "foot"}) {
        setenv("TERM", name, 1);
        EXPECT_EQ(looks(), inColors) << name;
    }
    for (const char* name : {"vt100", "vt220", "linux-m", "xterm-mono"}) {
        setenv("TERM", name, 1);
        EXPECT_EQ(looks(), withoutColors) << name;
    }
    setenv("TERM", "xterm", 1);
    setenv("NO_COLOR", "1", 1);
    EXPECT_EQ(looks(), withoutColors);
    setenv("NO_COLOR", "", 1);
    EXPECT_EQ(looks(), inColors);
}
