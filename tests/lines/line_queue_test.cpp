#include "line_queue.h"

#include "needs.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

#include <gtest/gtest.h>

namespace {

class LineQueueTest : public testing::Test {
protected:
    LineQueueTest() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        Reader = ends[0];
        Target = ends[1];
    }

    ~LineQueueTest() override {
        close(Reader);
        close(Target);
    }

    // What the pipe holds now.
    std::string Read() const {
        fcntl(Reader, F_SETFL, O_NONBLOCK);
        std::string text(1 << 20, '\0');
        const ssize_t size = read(Reader, text.data(), text.size());
        text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return text;
    }

    // Lets the pipe take only one more page.
    void FillPipe() const {
        fcntl(Target, F_SETPIPE_SZ, 4096);
        const std::string page(4096, '.');
        EXPECT_EQ(write(Target, page.data(), page.size()), 4096);
    }

    const SigpipeIgnored ClosedPipesAreErrors;
    int Reader = -1;
    int Target = -1;
};

} // namespace

TEST_F(LineQueueTest, WritesALineAtOnceWhenTheReaderKeepsUp) {
    LineQueue writer(Target);
    writer.Add("one");
    EXPECT_EQ(Read(), "one\n");
}

TEST_F(LineQueueTest, KeepsALineForALateReader) {
    FillPipe();
    LineQueue writer(Target);
    writer.Add("one");
    Read();
    writer.Pump();
    EXPECT_EQ(Read(), "one\n");
}

TEST_F(LineQueueTest, LeavesOutAnOfferedLineWhileOthersWait) {
    FillPipe();
    LineQueue writer(Target);
    writer.Add("one");
    writer.Offer("two");
    Read();
    writer.Offer("three");
    std::string text = Read();
    writer.Finish();
    text += Read();
    EXPECT_EQ(text, "one\nthree\n");
}

TEST_F(LineQueueTest, FinishesOnlyWhenTheReaderHasEverything) {
    const std::string line(1 << 19, 'x');
    LineQueue writer(Target);
    writer.Add(line);
    std::string received;
    std::thread reading([&] {
        std::string block(65536, '\0');
        for (ssize_t size; (size = read(Reader, block.data(), block.size())) > 0;) {
            received.append(block, 0, static_cast<std::size_t>(size));
            if (received.back() == '\n') {
                return;
            }
        }
    });
    writer.Finish();
    reading.join();
    EXPECT_EQ(received, line + "\n");
    EXPECT_EQ(writer.Error(), 0);
}

TEST_F(LineQueueTest, TellsThatTheReaderHasGone) {
    close(std::exchange(Reader, -1));
    LineQueue writer(Target);
    writer.Add("one");
    EXPECT_EQ(writer.Error(), EPIPE);
}

TEST(SigpipeIgnoredTest, GivesBackWhatWasBefore) {
    for (const auto before : {SIG_DFL, SIG_IGN}) {
        std::signal(SIGPIPE, before);
        {
            const SigpipeIgnored ignored;
            EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_IGN);
        }
        EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), before);
    }
}

TEST(LineQueueOnAFile, TellsTheFirstError) {
    NeedDeviceNode("/dev/full");
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    LineQueue writer(full);
    writer.Add("one");
    writer.Finish();
    EXPECT_EQ(writer.Error(), ENOSPC);
    close(full);
}
