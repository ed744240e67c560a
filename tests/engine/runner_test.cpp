// Whole jobs: order, totals, renames and final messages.

#include "engine_source.h"

#include "engine_hooks.h"
#include "fake_io_priority.h"
#include "mounts.h"
#include "transfer_fixture.h"

namespace {

using Policy = TarvaneTransferConflictPolicy;
using Items = std::vector<std::pair<fs::path, fs::path>>;

class Runner : public TransferTest {
protected:
    // Runs the plan and returns what the interface sees at the end.
    TarvaneTransferUiSnapshot Run(bool bMove, const Items& Of, Policy WithPolicy = Policy::Ask) {
        RunTarvaneTransferJob(SharedJob, PlanOf(bMove, Of, WithPolicy));
        return Job.MakeUiSnapshot();
    }

    std::pair<fs::path, fs::path> Item(const fs::path& Source, const fs::path& Destination) {
        return {Directory / Source, Directory / Destination};
    }

    void Write(const std::string& Name, std::string_view Bytes) {
        WriteFile(Directory / Name, Bytes);
    }

    Tree OnDisk() { return TreeOf(Directory.Path()); }

    EngineHooks Hooks;
};

TEST_F(Runner, DoesNothingWithoutAJob) {
    Write("from", "data");
    FakeIoPriority priority;
    RunTarvaneTransferJob(nullptr, PlanOf(kCopy, {Item("from", "to")}));
    EXPECT_EQ(OnDisk(), (Tree{{"from", "file data"}}));
    EXPECT_TRUE(priority.Targets.empty());
}

TEST_F(Runner, FinishesAnEmptyPlanAtOnce) {
    Job.SetTotals(7, 7);
    const TarvaneTransferUiSnapshot end = Run(kCopy, {});
    EXPECT_EQ(end.MessageText, "Copied 0 item(s).");
    EXPECT_TRUE(end.bSucceeded);
    EXPECT_EQ(end.TotalItems, 0U);
    EXPECT_EQ(end.TotalBytes, 0U);
}

TEST_F(Runner, FinishesAnEmptyMoveAtOnce) {
    EXPECT_EQ(Run(kMove, {}).MessageText, "Moved 0 item(s).");
}

TEST_F(Runner, CopiesItemsOfEveryKindAndReachesTheTotals) {
    Write("from/tree/file", "0123456789");
    Write("from/file", "01234");
    fs::create_symlink("/dev/null", Directory / "from/device");
    const TarvaneTransferUiSnapshot end =
        Run(kCopy, {Item("from/tree", "to/tree"), Item("from/file", "to/file"),
                    Item("from/device", "to/device")});
    EXPECT_EQ(end.MessageText, "Copied 3 item(s).");
    EXPECT_EQ(end.StageText, "Stage: Completed | Copied 3 item(s).");
    EXPECT_TRUE(end.bFinished);
    EXPECT_TRUE(end.bSucceeded);
    EXPECT_FALSE(end.bCanceled);
    EXPECT_EQ(end.TotalItems, 4U);
    EXPECT_EQ(end.TotalBytes, 15U);
    EXPECT_EQ(DoneBy(Job), (Counted{4, 15}));
    EXPECT_EQ(TreeOf(Directory / "to"), TreeOf(Directory / "from"));
}

TEST_F(Runner, CountsSkippedItemsInTheMessage) {
    Write("a", "new");
    Write("b", "new");
    Write("to/a", "old");
    const TarvaneTransferUiSnapshot end =
        Run(kCopy, {Item("a", "to/a"), Item("b", "to/b")}, Policy::Skip);
    EXPECT_EQ(end.MessageText, "Copied 2 item(s).");
    EXPECT_EQ(DoneBy(Job), (Counted{2, 6}));
    EXPECT_EQ(SkippedBy(Job), (Counted{1, 3}));
}

TEST_F(Runner, FailsForASourceThatVanishedBeforeTheScan) {
    Write("first", "data");
    const TarvaneTransferUiSnapshot end =
        Run(kMove, {Item("first", "to/first"), Item("missing", "to/missing")});
    EXPECT_EQ(end.MessageText, "Source does not exist.");
    EXPECT_EQ(end.StageText, "Stage: Failed | Source does not exist.");
    EXPECT_FALSE(end.bSucceeded);
    EXPECT_FALSE(end.bCanceled);
    EXPECT_EQ(OnDisk(), (Tree{{"first", "file data"}}));
    EXPECT_EQ(end.TotalItems, 0U);
}

TEST_F(Runner, FailsWithATextOfItsOwnWhenTheScanGivesNone) {
    Write("from", "data");
    Hooks.SymlinkStatus = [](const fs::path&) { return std::make_error_code(std::errc::io_error); };
    EXPECT_EQ(Run(kCopy, {Item("from", "to")}).MessageText, "Failed to scan transfer source.");
}

TEST_F(Runner, FailsWhereTheFolderOfADestinationCannotBeMade) {
    Write("from", "data");
    Write("taken", "x");
    const TarvaneTransferUiSnapshot end = Run(kMove, {Item("from", "taken/to")});
    EXPECT_EQ(end.MessageText, "Failed to create destination directory: Not a directory");
    EXPECT_EQ(ReadFile(Directory / "from"), "data");
}

TEST_F(Runner, KeepsWhatWasCopiedBeforeAFailure) {
    Write("first", "data");
    Write("taken", "x");
    Write("second", "data");
    const TarvaneTransferUiSnapshot end =
        Run(kCopy, {Item("first", "to/first"), Item("second", "taken/to"), Item("first", "to/3")});
    EXPECT_EQ(end.MessageText, "Failed to create destination directory: Not a directory");
    EXPECT_EQ(TreeOf(Directory / "to"), (Tree{{"first", "file data"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 4}));
}

TEST_F(Runner, KeepsWhatWasMovedBeforeAFailure) {
    Write("first", "data");
    Write("second", "data");
    Write("taken", "x");
    Run(kMove, {Item("first", "to/first"), Item("second", "taken/to")});
    EXPECT_EQ(OnDisk(), (Tree{{"second", "file data"},
                              {"taken", "file x"},
                              {"to", "dir"},
                              {"to/first", "file data"}}));
}

TEST_F(Runner, FailsWithTheTextOfTheFailingStep) {
    Write("from", "data");
    const TarvaneTransferUiSnapshot end = Run(kCopy, {Item("from", "from")});
    EXPECT_EQ(end.MessageText, "Source and destination are the same path.");
    EXPECT_EQ(end.IoText.substr(end.IoText.rfind(" | ")),
              " | Source and destination are the same path.");
}

TEST_F(Runner, PlaysTheSoundOnceAndOnlyForSuccess) {
    int played = 0;
    Hooks.SoundPlayed = [&] { ++played; };
    Write("from", "data");
    Run(kCopy, {Item("from", "to")});
    EXPECT_EQ(played, 1);
    const auto failing = std::make_shared<TarvaneTransferJob>(false, 1, "");
    RunTarvaneTransferJob(failing, PlanOf(kCopy, {Item("missing", "to")}));
    const auto canceled = std::make_shared<TarvaneTransferJob>(false, 1, "");
    canceled->RequestCancel();
    RunTarvaneTransferJob(canceled, PlanOf(kCopy, {Item("from", "to")}));
    EXPECT_EQ(played, 1);
}

class RenamingMove : public Runner {
protected:
    RenamingMove() {
        Hooks.PathsCompared = [this](const fs::path&) { ++Copied; };
    }

    // Items that had to be copied.
    int Copied = 0;
};

TEST_F(RenamingMove, RenamesOntoAFreeDestinationWithoutCopying) {
    Write("from/file", "0123456789");
    Write("from/sub/file", "01234");
    const TarvaneTransferUiSnapshot end = Run(kMove, {Item("from", "new/to")});
    EXPECT_EQ(end.MessageText, "Moved 1 item(s).");
    EXPECT_EQ(Copied, 0);
    EXPECT_EQ(DoneBy(Job), (Counted{4, 15}));
    EXPECT_EQ(end.CurrentFileTotalBytes, 15U);
    EXPECT_EQ(end.CurrentFileDoneBytes, 15U);
    EXPECT_EQ(end.PathText, "Current: " + (Directory / "from").string());
    EXPECT_EQ(OnDisk(), (Tree{{"new", "dir"},
                              {"new/to", "dir"},
                              {"new/to/file", "file 0123456789"},
                              {"new/to/sub", "dir"},
                              {"new/to/sub/file", "file 01234"}}));
}

TEST_F(RenamingMove, KeepsTheInode) {
    Write("from", "data");
    fs::create_hard_link(Directory / "from", Directory / "other");
    Run(kMove, {Item("from", "to")});
    EXPECT_TRUE(fs::equivalent(Directory / "to", Directory / "other"));
}

TEST_F(RenamingMove, MovesALinkItself) {
    Write("file", "data");
    fs::create_symlink("file", Directory / "from");
    Run(kMove, {Item("from", "to")});
    EXPECT_EQ(OnDisk(), (Tree{{"file", "file data"}, {"to", "link file"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

TEST_F(RenamingMove, MovesAPipe) {
    MakeFifo(Directory / "from");
    EXPECT_EQ(Run(kMove, {Item("from", "to")}).MessageText, "Moved 1 item(s).");
    EXPECT_EQ(OnDisk(), (Tree{{"to", "fifo"}}));
}

TEST_F(RenamingMove, ReplacesADanglingLinkAtTheDestination) {
    Write("from", "data");
    fs::create_symlink("nowhere", Directory / "to");
    Run(kMove, {Item("from", "to")});
    EXPECT_EQ(OnDisk(), (Tree{{"to", "file data"}}));
    EXPECT_EQ(Copied, 0);
}

TEST_F(RenamingMove, IsNotTriedOntoAnExistingDestination) {
    Write("from", "data");
    Write("to", "old");
    Run(kMove, {Item("from", "to")}, Policy::Overwrite);
    EXPECT_EQ(Copied, 1);
    EXPECT_EQ(OnDisk(), (Tree{{"to", "file data"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 4}));
}

TEST_F(RenamingMove, IsNotTriedOntoADestinationThatCannotBeLookedAt) {
    Write("from", "data");
    fs::create_symlink("loop", Directory / "loop");
    EXPECT_EQ(Run(kMove, {Item("from", "loop")}).MessageText,
              "Failed checking destination '" + (Directory / "loop").string() +
                  "': Too many levels of symbolic links");
    EXPECT_EQ(OnDisk(), (Tree{{"from", "file data"}, {"loop", "link loop"}}));
}

TEST_F(RenamingMove, FallsBackToCopyingWhenRenamingFails) {
    Write("from/file", "data");
    Hooks.Rename = [](const fs::path&) { return std::make_error_code(std::errc::io_error); };
    EXPECT_EQ(Run(kMove, {Item("from", "to")}).MessageText, "Moved 1 item(s).");
    EXPECT_EQ(Copied, 1);
    EXPECT_EQ(OnDisk(), (Tree{{"to", "dir"}, {"to/file", "file data"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{2, 4}));
}

TEST_F(RenamingMove, OfADirectoryIntoItselfIsRefused) {
    Write("from/file", "data");
    EXPECT_EQ(Run(kMove, {Item("from", "from/to")}).MessageText,
              "Destination cannot be inside the source directory.");
    EXPECT_EQ(OnDisk(), (Tree{{"from", "dir"}, {"from/file", "file data"}}));
}

} // namespace
