// The real terminal and the real signals behind the interface that a loop sees, in a process with a
// terminal of its own.

#include "system_terminal.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "forked_in_terminal.h"

namespace {

using Reporter = ForkedInTerminal::Reporter;
using std::chrono::milliseconds;

constexpr std::chrono::hours kForEver{1};
constexpr int kNoDescriptor = -1;

// What the terminal says of itself: "output redraw ask".
std::string Abilities() {
    const SystemTerminal terminal;
    std::string words;
    for (const auto& [bHolds, word] :
         {std::pair(terminal.IsOutputTerminal(), "output "),
          std::pair(terminal.CanRedraw(), "redraw "), std::pair(terminal.CanAsk(), "ask "),
          std::pair(terminal.IsClosed(), "closed ")}) {
        words += bHolds ? word : "";
    }
    return words;
}

// The same where Descriptor leads elsewhere.
std::string AbilitiesWithout(int Descriptor) {
    ForkedInTerminal program([Descriptor](const Reporter& Report) {
        setenv("TERM", "xterm", 1);
        dup2(open("/dev/null", O_RDWR), Descriptor);
        Report(Abilities());
        return 0;
    });
    return program.NextReport();
}

// The same in a child of whoever owns the terminal, after Step.
std::string AbilitiesInChildAfter(const std::function<void()>& Step) {
    ForkedInTerminal program([&Step](const Reporter& Report) {
        setenv("TERM", "xterm", 1);
        const pid_t child = fork();
        if (child == 0) {
            Step();
            Report(Abilities());
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        return 0;
    });
    return program.NextReport();
}

std::string AbilitiesOnTerminal(const char* Term) {
    ForkedInTerminal program([Term](const Reporter& Report) {
        setenv("TERM", Term, 1);
        Report(Abilities());
        return 0;
    });
    return program.NextReport();
}

} // namespace

TEST(SystemTerminal, KnowsWhatItCanDo) {
    EXPECT_EQ(AbilitiesOnTerminal("xterm"), "output redraw ask ");
    EXPECT_EQ(AbilitiesOnTerminal("dumb"), "output ask ");
}

TEST(SystemTerminal, CanAskWhateverTheStandardStreamsAre) {
    EXPECT_EQ(AbilitiesWithout(STDIN_FILENO), "output redraw ask ");
    EXPECT_EQ(AbilitiesWithout(STDERR_FILENO), "redraw ask ");
}

TEST(SystemTerminal, CanAskNobodyInTheBackground) {
    EXPECT_EQ(AbilitiesInChildAfter([] { setpgid(0, 0); }), "output redraw ");
}

// Standard input and error still are a terminal, which is that of another session.
TEST(SystemTerminal, CanAskNobodyWithoutAControllingTerminal) {
    EXPECT_EQ(AbilitiesInChildAfter([] { setsid(); }), "output redraw ");
}

TEST(SystemTerminal, KnowsWhatCharactersItShows) {
    for (const bool bUtf8 : {false, true}) {
        ForkedInTerminal program([bUtf8](const Reporter& Report) {
            setenv("LC_ALL", bUtf8 ? "C.UTF-8" : "C", 1);
            Report(SystemTerminal().IsUtf8() ? "utf8" : "ascii");
            return 0;
        });
        EXPECT_EQ(program.NextReport(), bUtf8 ? "utf8" : "ascii");
    }
}

// Only a terminal is closed; whoever writes to anything else learns of it then.
TEST(SystemTerminal, TakesNoSocketForAClosedTerminal) {
    ForkedInTerminal program([](const Reporter& Report) {
        std::array<int, 2> ends{};
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) {
            return 1;
        }
        close(ends[0]);
        dup2(ends[1], STDERR_FILENO);
        Report(Abilities());
        return 0;
    });
    EXPECT_EQ(program.NextReport().find("closed"), std::string::npos);
    EXPECT_EQ(WEXITSTATUS(program.WaitForEnd()), 0);
}

TEST(SystemTerminal, WakesToWriteWhatAStoppedTerminalHasKept) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        tcflow(STDERR_FILENO, TCOOFF);
        terminal.Write("kept");
        tcflow(STDERR_FILENO, TCOON);
        const Terminal::Events events = terminal.Wait(kForEver, kNoDescriptor);
        Report(events.Keys.empty() && events.Signals.empty() ? "awake" : "events");
        return 0;
    });
    EXPECT_EQ(program.NextReport(), "awake");
    EXPECT_EQ(program.Output(), "kept");
}

TEST(SystemTerminal, WakesForKeys) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        terminal.EnterKeyMode();
        Report(terminal.TakesKeys() ? "ready" : "without keys");
        WaitForTypedBytes();
        for (const KeyPress& key : terminal.Wait(kForEver, kNoDescriptor).Keys) {
            Report(key.Text);
        }
        return 0;
    });
    ASSERT_EQ(program.NextReport(), "ready");
    program.Type("ab");
    EXPECT_EQ(program.NextReport(), "a");
    EXPECT_EQ(program.NextReport(), "b");
}

TEST(SystemTerminal, TakesNoKeysOutsideKeyMode) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        Report("ready");
        WaitForTypedBytes();
        const Terminal::Events events = terminal.Wait(milliseconds(50), kNoDescriptor);
        Report(events.Keys.empty() && !terminal.TakesKeys() ? "none" : "some");
        return 0;
    });
    ASSERT_EQ(program.NextReport(), "ready");
    program.Type("line\r");
    EXPECT_EQ(program.NextReport(), "none");
}

TEST(SystemTerminal, WakesForAllSignalsThatHaveCome) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        raise(SIGUSR1);
        raise(SIGINT);
        for (const int signal : terminal.Wait(kForEver, kNoDescriptor).Signals) {
            Report(std::to_string(signal));
        }
        return 0;
    });
    EXPECT_EQ(program.NextReport(), std::to_string(SIGINT));
    EXPECT_EQ(program.NextReport(), std::to_string(SIGUSR1));
}

TEST(SystemTerminal, WakesForADescriptor) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0 || write(ends[1], "x", 1) != 1) {
            return 1;
        }
        const Terminal::Events events = terminal.Wait(kForEver, ends[0]);
        Report(events.Keys.empty() && events.Signals.empty() ? "awake" : "events");
        return 0;
    });
    EXPECT_EQ(program.NextReport(), "awake");
}

TEST(SystemTerminal, WakesWhenTheTimeIsOver) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        const auto start = terminal.Now();
        terminal.Wait(milliseconds(1300), kNoDescriptor);
        const auto passed = std::chrono::ceil<milliseconds>(terminal.Now() - start);
        Report(passed >= milliseconds(1300) && passed < milliseconds(10000)
                   ? "in time"
                   : std::to_string(passed.count()));
        return 0;
    });
    EXPECT_EQ(program.NextReport(), "in time");
}

TEST(SystemTerminal, GivesModesAndSignalsBackWhenItCloses) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        terminal.EnterKeyMode();
        Report("ready");
        WaitForTypedBytes();
        terminal.Close();
        terminal.Write("written");
        terminal.FinishWriting();
        raise(SIGTERM);
        return 1;
    });
    ASSERT_EQ(program.NextReport(), "ready");
    EXPECT_FALSE(program.HasModesAsAtFirst());
    program.Type("x");
    EXPECT_EQ(program.Output(), "written");
    EXPECT_TRUE(program.HasModesAsAtFirst());
    const int status = program.WaitForEnd();
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST(SystemTerminal, GivesModesBackWhenItExits) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        terminal.EnterKeyMode();
        Report("ready");
        WaitForTypedBytes();
        terminal.Exit(42);
        return 1;
    });
    ASSERT_EQ(program.NextReport(), "ready");
    program.Type("x");
    EXPECT_EQ(WEXITSTATUS(program.WaitForEnd()), 42);
    EXPECT_TRUE(program.HasModesAsAtFirst());
}

TEST(SystemTerminal, NoticesThatTheTerminalHasBeenClosed) {
    ForkedInTerminal program([](const Reporter& Report) {
        SystemTerminal terminal;
        Report(terminal.IsClosed() ? "closed" : "open");
        const Terminal::Events events = terminal.Wait(kForEver, kNoDescriptor);
        const bool bHangUp = events.Signals == std::vector<int>{SIGHUP, SIGCONT} ||
                             events.Signals == std::vector<int>{SIGHUP};
        terminal.Write("to nobody");
        return bHangUp && terminal.IsClosed() && terminal.IsOutputTerminal() ? 42 : 1;
    });
    ASSERT_EQ(program.NextReport(), "open");
    program.HangUp();
    EXPECT_EQ(WEXITSTATUS(program.WaitForEnd()), 42);
}
