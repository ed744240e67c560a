// A queue on a real terminal, in a process of its own; on pipes and files see line_queue_test.cpp.

#include "output_queue.h"

#include <array>
#include <cstddef>
#include <fcntl.h>
#include <pty.h>
#include <string>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "forked_in_terminal.h"

namespace {

using Reporter = ForkedInTerminal::Reporter;

// More than any terminal takes while nobody reads.
constexpr std::size_t kTooMuch = 100000;

} // namespace

TEST(OutputQueue, DoesNotWaitForATerminalThatIsNotRead) {
    ForkedInTerminal process([](const Reporter& Report) {
        OutputQueue queue(STDERR_FILENO);
        queue.Write(std::string(kTooMuch, 'x'));
        Report(queue.IsEmpty() ? "written" : "kept");
        queue.Finish();
        return queue.IsEmpty() ? 0 : 1;
    });
    ASSERT_EQ(process.NextReport(), "kept");
    EXPECT_EQ(process.Output(), std::string(kTooMuch, 'x'));
    EXPECT_EQ(process.WaitForEnd(), 0);
}

TEST(OutputQueue, KeepsWhatAStoppedTerminalDoesNotTake) {
    ForkedInTerminal process([](const Reporter& Report) {
        OutputQueue queue(STDERR_FILENO);
        tcflow(STDERR_FILENO, TCOOFF);
        queue.Write("one ");
        queue.Write("two");
        Report(queue.IsReady() || queue.WaitingFd() < 0 ? "written" : "kept");
        tcflow(STDERR_FILENO, TCOON);
        queue.Pump();
        Report(queue.IsReady() && queue.WaitingFd() < 0 ? "written" : "kept");
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "kept");
    EXPECT_EQ(process.NextReport(), "written");
    EXPECT_EQ(process.Output(), "one two");
}

TEST(OutputQueue, LeavesTheDescriptorThatOthersShareAsItIs) {
    ForkedInTerminal process([](const Reporter& Report) {
        const OutputQueue queue(STDERR_FILENO);
        Report((fcntl(STDERR_FILENO, F_GETFL) & O_NONBLOCK) == 0 ? "waits" : "does not wait");
        return 0;
    });
    EXPECT_EQ(process.NextReport(), "waits");
}

TEST(OutputQueue, WritesToATerminalThatIsNotItsOwn) {
    int terminal = -1;
    int inside = -1;
    ASSERT_EQ(openpty(&terminal, &inside, nullptr, nullptr, nullptr), 0);
    fcntl(terminal, F_SETFL, O_NONBLOCK);
    ForkedInTerminal process([inside](const Reporter&) {
        OutputQueue queue(inside);
        queue.Write("there");
        return 0;
    });
    EXPECT_EQ(process.Output(), "");
    std::array<char, 16> bytes{};
    ASSERT_EQ(read(terminal, bytes.data(), bytes.size()), 5);
    EXPECT_STREQ(bytes.data(), "there");
    close(inside);
    close(terminal);
}
