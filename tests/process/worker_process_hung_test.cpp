// A process that nothing can end. Needs root for the mount.

#include "worker_process.h"

#include "becomes_true.h"
#include "child_processes.h"
#include "hanging_file_system.h"
#include "temporary_directory.h"

#include <atomic>
#include <dirent.h>
#include <optional>
#include <string_view>
#include <thread>

#include <gtest/gtest.h>

TEST(HungWorkerProcess, IsLetGoAtOnceAndReapedWhenItEnds) {
    ASSERT_TRUE(NoChildIsLeft());
    EnterPrivateMountNamespace();
    const TemporaryDirectory room;
    std::optional<HangingFileSystem> hung;
    hung.emplace(room / "hung");
    const std::string path = hung->Path();
    std::optional<WorkerProcess> process;
    process.emplace([&path]() -> std::string_view {
        opendir(path.c_str());
        return "opened";
    });
    ASSERT_TRUE(BecomesTrue("it hangs", [&hung] { return hung->IsHolding(); }));
    std::atomic<bool> bLetGo{false};
    std::thread caller([&] {
        process.reset();
        bLetGo = true;
    });
    EXPECT_TRUE(BecomesTrue("it is let go of", [&bLetGo] { return bLetGo.load(); }));
    EXPECT_EQ(ChildProcesses().size(), 1U);
    hung.reset();
    caller.join();
    EXPECT_TRUE(NoChildIsLeft());
}
