// The device on a real terminal, in a process of its own.

#include "terminal_device.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <poll.h>
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

std::string Described(const KeyPress& Key) {
    switch (Key.Code) {
    case KeyCode::Text:
        return Key.Text;
    case KeyCode::Escape:
        return "Escape";
    case KeyCode::Left:
        return "Left";
    case KeyCode::Enter:
        return "Enter";
    case KeyCode::Backspace:
    case KeyCode::Delete:
    case KeyCode::Right:
    case KeyCode::Home:
    case KeyCode::End:
    case KeyCode::ClearLine:
    case KeyCode::Other:
        break;
    }
    return "another key";
}

// Waits for keys and reports each, until a "q" has come.
int ReportKeys(TerminalDevice& Device, const Reporter& Report) {
    Report("listening");
    while (true) {
        pollfd event{Device.KeyFd(), POLLIN, 0};
        poll(&event, 1, 1000);
        while (const std::optional<KeyPress> key = Device.TakeKey()) {
            Report(Described(*key));
            if (key->Text == "q") {
                return 0;
            }
        }
    }
}

int ListenInKeyMode(const Reporter& Report) {
    TerminalDevice device;
    return device.EnterKeyMode() ? ReportKeys(device, Report) : 1;
}

// Waits, for at most about 20 seconds, until the terminal holds a byte that nobody has read.
void WaitForTypedBytes() {
    int count = 0;
    for (int polls = 0; polls < 20000 && count == 0; ++polls) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ioctl(STDIN_FILENO, FIONREAD, &count);
    }
}

class TerminalNames : public testing::Test {
protected:
    void SetUp() override {
        unsetenv("NO_COLOR");
        unsetenv("TERM");
    }
};

} // namespace

TEST(TerminalDevice, TakesKeysOneByOne) {
    ForkedInTerminal process(ListenInKeyMode);
    ASSERT_EQ(process.NextReport(), "listening");
    process.Type("a日\x1B[D\rq");
    EXPECT_EQ(process.NextReport(), "a");
    EXPECT_EQ(process.NextReport(), "日");
    EXPECT_EQ(process.NextReport(), "Left");
    EXPECT_EQ(process.NextReport(), "Enter");
    EXPECT_EQ(process.NextReport(), "q");
    EXPECT_EQ(process.WaitForEnd(), 0);
    EXPECT_TRUE(process.HasModesAsAtFirst());
}

TEST(TerminalDevice, TakesALoneEscapeForTheKeyAfterAMoment) {
    ForkedInTerminal process(ListenInKeyMode);
    ASSERT_EQ(process.NextReport(), "listening");
    process.Type("\x1B");
    EXPECT_EQ(process.NextReport(), "Escape");
}

TEST(TerminalDevice, WaitsForASlowSequenceAsLongAsEscdelaySays) {
    ForkedInTerminal process([](const Reporter& Report) {
        setenv("ESCDELAY", "2000", 1);
        return ListenInKeyMode(Report);
    });
    ASSERT_EQ(process.NextReport(), "listening");
    process.Type("\x1B");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    process.Type("[D");
    EXPECT_EQ(process.NextReport(), "Left");
}

TEST(TerminalDevice, IgnoresAnEscdelayThatIsNoNumber) {
    for (const char* delay : {"", "x", "-5", "0", "99999999999"}) {
        ForkedInTerminal process([delay](const Reporter& Report) {
            setenv("ESCDELAY", delay, 1);
            return ListenInKeyMode(Report);
        });
        ASSERT_EQ(process.NextReport(), "listening");
        process.Type("\x1B");
        EXPECT_EQ(process.NextReport(), "Escape") << delay;
    }
}

TEST(TerminalDevice, TakesNoKeyOutsideKeyMode) {
    ForkedInTerminal process([](const Reporter& Report) {
        TerminalDevice device;
        Report("ready");
        WaitForTypedBytes();
        const bool bFirst = device.KeyFd() < 0 && !device.TakeKey();
        device.EnterKeyMode();
        device.LeaveKeyMode();
        return bFirst && device.KeyFd() < 0 && !device.TakeKey() ? 42 : 1;
    });
    ASSERT_EQ(process.NextReport(), "ready");
    process.Type("x\r");
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 42);
}

TEST(TerminalDevice, ForgetsWhatWasTypedBefore) {
    ForkedInTerminal process([](const Reporter& Report) {
        TerminalDevice device;
        device.EnterKeyMode();
        Report("ready");
        WaitForTypedBytes();
        device.DropTypedAhead();
        return ReportKeys(device, Report);
    });
    ASSERT_EQ(process.NextReport(), "ready");
    process.Type("abc\r");
    ASSERT_EQ(process.NextReport(), "listening");
    process.Type("q");
    EXPECT_EQ(process.NextReport(), "q");
}

TEST(TerminalDevice, ForgetsKeysThatWereReadAndNotTaken) {
    ForkedInTerminal process([](const Reporter& Report) {
        TerminalDevice device;
        device.EnterKeyMode();
        Report("ready");
        pollfd event{device.KeyFd(), POLLIN, 0};
        poll(&event, 1, 20000);
        device.TakeKey();
        device.DropTypedAhead();
        return ReportKeys(device, Report);
    });
    ASSERT_EQ(process.NextReport(), "ready");
    process.Type("abc");
    ASSERT_EQ(process.NextReport(), "listening");
    process.Type("q");
    EXPECT_EQ(process.NextReport(), "q");
}

TEST(TerminalDevice, TakesKeysFromItsTerminalWhenStandardInputIsNone) {
    ForkedInTerminal process([](const Reporter& Report) {
        close(STDIN_FILENO);
        if (open("/dev/null", O_RDONLY) != STDIN_FILENO) {
            return 1;
        }
        return ListenInKeyMode(Report);
    });
    ASSERT_EQ(process.NextReport(), "listening");
    process.Type("q");
    EXPECT_EQ(process.NextReport(), "q");
    EXPECT_EQ(process.WaitForEnd(), 0);
    EXPECT_TRUE(process.HasModesAsAtFirst());
}

TEST(TerminalDevice, HasNoKeysWithoutATerminal) {
    ForkedInTerminal process([](const Reporter&) {
        // Another session has no terminal at first.
        const pid_t child = fork();
        if (child == 0) {
            setsid();
            close(STDIN_FILENO);
            const bool bOpened = open("/dev/null", O_RDONLY) == STDIN_FILENO;
            TerminalDevice device;
            _exit(bOpened && !device.HasKeys() && !device.EnterKeyMode() ? 42 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status);
    });
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 42);
}

TEST(TerminalDevice, NeitherDrawsNorTakesKeysInTheBackground) {
    ForkedInTerminal process([](const Reporter& Report) {
        TerminalDevice device;
        device.EnterKeyMode();
        const pid_t child = fork();
        if (child == 0) {
            setpgid(0, 0);
            Report("ready");
            WaitForTypedBytes();
            device.DropTypedAhead();
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

TEST_F(TerminalNames, DecideHowWarningsLook) {
    EXPECT_EQ(EmphasizeWarning("careful"), "careful");
    setenv("TERM", "xterm", 1);
    EXPECT_EQ(EmphasizeWarning("careful"), "\x1B[1;31mcareful\x1B[m");
    setenv("NO_COLOR", "1", 1);
    EXPECT_EQ(EmphasizeWarning("careful"), "\x1B[1mcareful\x1B[m");
    setenv("NO_COLOR", "", 1);
    EXPECT_EQ(EmphasizeWarning("careful"), "\x1B[1;31mcareful\x1B[m");
}
