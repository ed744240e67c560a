// Stage and status as another thread sees them at each point of a job.

#include "engine_source.h"

#include "answering_interface.h"
#include "engine_hooks.h"
#include "mounts.h"
#include "transfer_fixture.h"

namespace {

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;
using Stages = std::vector<std::string>;

// Hooks of the engine let an interface thread look, so that no stage is missed. Where these are too
// few, a test adds one.
class SeenStages : public TransferTest {
protected:
    SeenStages() {
        WriteFile(Directory / "from", "data");
        Hooks.PathMet = [this](const std::string&) { Look(); };
        Hooks.PathsCompared = [this](const fs::path&) { Look(); };
        Hooks.SoundPlayed = [this] { Look(); };
        Hooks.Rename = [this](const fs::path&) {
            Look();
            return std::error_code();
        };
    }

    void Look() {
        const std::string stage = SeenByInterface(Job).StageText;
        if (Seen.empty() || Seen.back() != stage) {
            Seen.push_back(stage);
        }
    }

    Stages Run(bool bMove, Policy WithPolicy = Policy::Overwrite) {
        Look();
        RunTarvaneTransferJob(SharedJob,
                              PlanOf(bMove, {{Directory / "from", Directory / "to"}}, WithPolicy));
        Look();
        return Seen;
    }

    EngineHooks Hooks;
    Stages Seen;
};

TEST_F(SeenStages, OfACopy) {
    EXPECT_EQ(Run(kCopy),
              (Stages{"Stage: Preparing", "Stage: Preparing | Scanning transfer contents",
                      "Stage: Copying | Copying items", "Stage: Completed | Copied 1 item(s)."}));
}

TEST_F(SeenStages, OfAMoveByRenaming) {
    EXPECT_EQ(Run(kMove),
              (Stages{"Stage: Preparing", "Stage: Preparing | Scanning transfer contents",
                      "Stage: Copying | Moving items", "Stage: Completed | Moved 1 item(s)."}));
}

TEST_F(SeenStages, OfAMoveOntoAnExistingDestination) {
    WriteFile(Directory / "to", "old");
    Hooks.Status = [this](const fs::path& path) {
        if (path == Directory / "to") {
            Look();
        }
        return std::error_code();
    };
    EXPECT_EQ(Run(kMove),
              (Stages{"Stage: Preparing", "Stage: Preparing | Scanning transfer contents",
                      "Stage: Copying | Moving items", "Stage: Copying | Copying data for move",
                      "Stage: Completed | Moved 1 item(s)."}));
}

TEST_F(SeenStages, OfAMoveAcrossFileSystems) {
    EnterPrivateMountNamespace();
    const ScopedMount memory = MountTmpfs(Directory / "memory", "size=1m");
    Look();
    RunTarvaneTransferJob(SharedJob, PlanOf(kMove, {{Directory / "from", memory.Path() / "to"}}));
    Look();
    EXPECT_EQ(Seen,
              (Stages{"Stage: Preparing", "Stage: Preparing | Scanning transfer contents",
                      "Stage: Copying | Moving items", "Stage: Copying | Copying data for move",
                      "Stage: Completed | Moved 1 item(s)."}));
    EXPECT_EQ(TreeOf(memory.Path()), (Tree{{"to", "file data"}}));
    EXPECT_FALSE(fs::exists(Directory / "from"));
}

TEST_F(SeenStages, AroundAConflict) {
    WriteFile(Directory / "to", "old");
    AnsweringInterface interface(Job, {{Act::Overwrite, "", [this] { Look(); }}});
    // The device of the target is looked at after the answer.
    Hooks.DeviceProbed = [this] { Look(); };
    EXPECT_EQ(Run(kCopy, Policy::Ask),
              (Stages{"Stage: Preparing", "Stage: Preparing | Scanning transfer contents",
                      "Stage: Copying | Copying items", "Stage: Waiting for conflict choice",
                      "Stage: Copying", "Stage: Completed | Copied 1 item(s)."}));
}

TEST_F(SeenStages, OfAFailure) {
    fs::create_symlink("to", Directory / "to");
    const Stages seen = Run(kCopy);
    EXPECT_EQ(seen.back(), "Stage: Failed | Failed checking destination '" +
                               (Directory / "to").string() +
                               "': Too many levels of symbolic links");
}

TEST_F(SeenStages, OfACancel) {
    Hooks.PathsCompared = [this](const fs::path&) {
        Look();
        Job.RequestCancel();
        Look();
    };
    EXPECT_EQ(Run(kCopy),
              (Stages{"Stage: Preparing", "Stage: Preparing | Scanning transfer contents",
                      "Stage: Copying | Copying items", "Stage: Copying | Cancel requested",
                      "Stage: Canceled | Copy canceled. Partial destination files may remain."}));
}

TEST_F(SeenStages, OfACancelThatAnswersAQuestion) {
    WriteFile(Directory / "to", "old");
    AnsweringInterface interface(Job, {{Act::Cancel, "", [this] { Look(); }}});
    EXPECT_EQ(
        Run(kMove, Policy::Ask),
        (Stages{"Stage: Preparing", "Stage: Preparing | Scanning transfer contents",
                "Stage: Copying | Copying data for move", "Stage: Waiting for conflict choice",
                "Stage: Canceled | Move canceled. Partial destination files may remain."}));
}

// Totals are known before the first item is processed, and not earlier.
TEST_F(SeenStages, HaveTotalsOnlyAfterTheScan) {
    std::vector<std::uint64_t> totals;
    Hooks.PathMet = [&](const std::string&) { totals.push_back(SeenByInterface(Job).TotalBytes); };
    Run(kCopy);
    EXPECT_EQ(totals, (std::vector<std::uint64_t>{0, 4}));
}

// What a polling thread reads while the job runs never goes back.
TEST_F(SeenStages, NeverCountBackwards) {
    for (int i = 0; i < 200; ++i) {
        WriteFile(Directory / "tree" / std::to_string(i), PatternBytes(3000));
    }
    std::atomic<bool> stop{false};
    std::thread poller([&] {
        TarvaneTransferUiSnapshot last;
        while (!stop) {
            const TarvaneTransferUiSnapshot now = Job.MakeUiSnapshot();
            EXPECT_GE(now.DoneBytes, last.DoneBytes);
            EXPECT_GE(now.DoneItems, last.DoneItems);
            EXPECT_GE(now.TotalItems, last.TotalItems);
            last = now;
        }
    });
    RunTarvaneTransferJob(SharedJob, PlanOf(kCopy, {{Directory / "tree", Directory / "copy"}}));
    stop = true;
    poller.join();
    EXPECT_EQ(DoneBy(Job), (Counted{201, 600000}));
}

} // namespace
