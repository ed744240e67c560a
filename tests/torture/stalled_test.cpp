// A file system stops answering in the middle of a copy and answers later.

#include "becomes_true.h"
#include "faulty_file_system.h"
#include "on_terminal.h"
#include "own_mount_namespace.h"
#include "shared_latch.h"
#include "without_time.h"

#include <csignal>

namespace {

namespace fs = std::filesystem;

class Stalled : public OnTerminal {
protected:
    // Answers everything but the second request of one kind, for which it waits until it is let go.
    FaultyFileSystem::Fault StallsAt(std::uint32_t Operation) {
        return [this, Operation](std::uint32_t asked) {
            if (asked == Operation && ++Asked == 2) {
                bStalls = true;
                Latch.Wait();
            }
            return 0;
        };
    }
    void StartAndStall() {
        Start({"copy", "from/big", "to"});
        ASSERT_TRUE(BecomesTrue("the copy stalls", [this] { return bStalls.load(); }));
    }

    const OwnMountNamespace Namespace;
    const std::string Big = PatternBytes(1000000);
    int Asked = 0;
    std::atomic<bool> bStalls{false};
    SharedLatch Latch;
};

class StalledSource : public Stalled {
protected:
    StalledSource() { fs::create_directory(Root / "to"); }

    FaultyFileSystem From{Root / "from", {{"big", {Big}}}, StallsAt(FUSE_READ)};
};

TEST_F(StalledSource, IsWaitedFor) {
    StartAndStall();
    Latch.Open();
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()), "Copied 1 entry, 976.6 KB.\n");
    EXPECT_EQ(ReadFile(Root / "to/big"), Big);
    ExpectRestoredTerminal();
}

TEST_F(StalledSource, LeavesNothingPartialWhereTheWaitIsCanceled) {
    StartAndStall();
    Program->Type(kCtrlC);
    ASSERT_TRUE(Program->ShowsText("Canceling transfer."));
    Latch.Open();
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Program->HistoryAndScreen(),
              "Copy canceled. Partial destination files may remain.\nNothing copied.\n");
    EXPECT_EQ(TreeOf(Root / "to"), Tree());
    ExpectRestoredTerminal();
}

class StalledDestination : public Stalled {
protected:
    StalledDestination() { WriteFile(Root / "from/big", Big); }

    FaultyFileSystem To{Root / "to", {}, StallsAt(FUSE_WRITE)};
};

TEST_F(StalledDestination, IsWaitedFor) {
    StartAndStall();
    Latch.Open();
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(ReadFile(Root / "to/big"), Big);
    ExpectRestoredTerminal();
}

TEST_F(StalledDestination, LeavesNothingPartialWhereTheWaitIsInterrupted) {
    StartAndStall();
    Program->Signal(SIGINT);
    ASSERT_TRUE(Program->ShowsText("Canceling transfer."));
    Latch.Open();
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(To.Names(), std::set<std::string>());
    ExpectRestoredTerminal();
}

} // namespace
