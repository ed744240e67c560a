// Keys from a real terminal, in a process of its own.

#include "terminal_device.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "forked_in_terminal.h"

namespace {

using Reporter = ForkedInTerminal::Reporter;

std::string Described(const KeyPress& Key) {
    const std::map<KeyCode, std::string> names = {
        {KeyCode::Escape, "Escape"}, {KeyCode::Left, "Left"}, {KeyCode::Enter, "Enter"}};
    if (const auto name = names.find(Key.Code); name != names.end()) {
        return name->second;
    }
    return Key.Code == KeyCode::Text ? Key.Text : "another key";
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

} // namespace

TEST(TerminalKeys, TakesKeysOneByOne) {
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

TEST(TerminalKeys, TakesALoneEscapeForTheKeyAfterAMoment) {
    ForkedInTerminal process(ListenInKeyMode);
    ASSERT_EQ(process.NextReport(), "listening");
    process.Type("\x1B");
    EXPECT_EQ(process.NextReport(), "Escape");
}

TEST(TerminalKeys, WaitsForASlowSequenceAsLongAsEscdelaySays) {
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

TEST(TerminalKeys, IgnoresAnEscdelayThatIsNoNumber) {
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

TEST(TerminalKeys, TakesNoKeyOutsideKeyMode) {
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

TEST(TerminalKeys, TakesKeysFromItsTerminalWhenStandardInputIsNone) {
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

TEST(TerminalKeys, LeavesToOthersWhatStandardInputHolds) {
    ForkedInTerminal process([](const Reporter& Report) {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0 || write(ends[1], "line\n", 5) != 5) {
            return 1;
        }
        dup2(ends[0], STDIN_FILENO);
        ListenInKeyMode(Report);
        int left = 0;
        ioctl(STDIN_FILENO, FIONREAD, &left);
        return left;
    });
    ASSERT_EQ(process.NextReport(), "listening");
    process.Type("q");
    EXPECT_EQ(process.NextReport(), "q");
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 5);
}

TEST(TerminalKeys, HasNoKeysWithoutATerminal) {
    ForkedInTerminal process([](const Reporter&) {
        // Another session has no terminal at first.
        const pid_t child = fork();
        if (child == 0) {
            setsid();
            close(STDIN_FILENO);
            const bool bOpened = open("/dev/null", O_RDONLY) == STDIN_FILENO;
            TerminalDevice device;
            _exit(bOpened && !device.EnterKeyMode() ? 42 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status);
    });
    EXPECT_EQ(WEXITSTATUS(process.WaitForEnd()), 42);
}
