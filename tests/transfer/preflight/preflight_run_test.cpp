// A look in a process of its own. Needs root for the mounts.

#include "preflight_run.h"

#include "becomes_true.h"
#include "child_processes.h"
#include "hanging_file_system.h"
#include "no_processes_left.h"
#include "open_descriptors.h"
#include "preflight_fixture.h"

#include <csignal>
#include <optional>
#include <poll.h>

namespace {

class PreflightRunTest : public PreflightTest {
protected:
    static testing::AssertionResult IsOverSoon(PreflightRun& Run) {
        return BecomesTrue("the look is over", [&Run] { return Run.IsOver(); });
    }

    // The plan begins with what cannot be looked at.
    void PlanToHang() {
        ASSERT_TRUE(NoChildIsLeft());
        EnterPrivateMountNamespace();
        Hung.emplace(From / "hung");
        PlanToCopy({{From / "hung", To / "hung"}, {From / "file", To / "file"}});
    }
    testing::AssertionResult HangsSoon() {
        return BecomesTrue("the look hangs", [this] { return Hung->IsHolding(); });
    }

    std::optional<HangingFileSystem> Hung;
};

TEST_F(PreflightRunTest, ComesToWhatTheLookComesTo) {
    WriteFile(From / "file", "12345");
    std::filesystem::create_symlink("nowhere", From / "dangling");
    PlanToCopy({{From, To / "copied"}});
    const PreflightResult expected = Look();
    PreflightRun run(Task());
    ASSERT_TRUE(IsOverSoon(run));
    EXPECT_EQ(run.Failure(), "");
    EXPECT_EQ(InWords(run.Result()), Strings{"dangling-link from/dangling, stops"});
    EXPECT_EQ(run.Result().Entries, expected.Entries);
    EXPECT_EQ(run.Result().Bytes, 5U);
    EXPECT_EQ(run.EntriesSeen(), 3U);
}

TEST_F(PreflightRunTest, WakesAPollWhenItIsOver) {
    PlanToCopy({{From, To / "copied"}});
    PreflightRun run(Task());
    const int limitMilliseconds = 20000;
    while (!run.IsOver()) {
        pollfd event{run.OverFd(), POLLIN, 0};
        ASSERT_EQ(poll(&event, 1, limitMilliseconds), 1);
    }
    EXPECT_EQ(run.Failure(), "");
}

TEST_F(PreflightRunTest, SaysWhyItCannotBeStarted) {
    std::string reason;
    {
        const NoProcessesLeft limit;
        PreflightRun run(Task());
        EXPECT_TRUE(run.IsOver());
        EXPECT_EQ(run.OverFd(), -1);
        reason = run.Failure();
    }
    EXPECT_EQ(reason, "Resource temporarily unavailable");
}

TEST_F(PreflightRunTest, SaysThatItWasInterrupted) {
    PlanToHang();
    PreflightRun run(Task());
    ASSERT_TRUE(HangsSoon());
    ASSERT_EQ(ChildProcesses().size(), 1U);
    kill(ChildProcesses().front(), SIGKILL);
    Hung.reset();
    ASSERT_TRUE(IsOverSoon(run));
    EXPECT_EQ(run.Failure(), "the look was interrupted");
}

TEST_F(PreflightRunTest, TellsHowFarItIs) {
    PlanToHang();
    PreflightRun run(Task());
    ASSERT_TRUE(HangsSoon());
    EXPECT_EQ(run.EntriesSeen(), 1U);
    EXPECT_FALSE(run.IsOver());
    Hung.reset();
    ASSERT_TRUE(IsOverSoon(run));
    EXPECT_EQ(run.Failure(), "");
}

TEST_F(PreflightRunTest, CanBeLetGoOfWhileItHangs) {
    PlanToHang();
    const auto before = OpenDescriptors();
    {
        const PreflightRun run(Task());
        ASSERT_TRUE(HangsSoon());
    }
    EXPECT_EQ(ChildProcesses().size(), 1U);
    EXPECT_EQ(OpenDescriptors(), before);
    Hung.reset();
    EXPECT_TRUE(NoChildIsLeft());
}

} // namespace
