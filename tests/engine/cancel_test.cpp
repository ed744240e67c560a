// A cancel at every place where the worker looks for one, and what it leaves. Needs root for the
// mounts of the paced copies.

#include "engine_source.h"

#include "answering_interface.h"
#include "becomes_true.h"
#include "engine_hooks.h"
#include "fake_sleep.h"
#include "mounts.h"
#include "transfer_fixture.h"

#include <thread>

namespace {

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;
using Items = std::vector<std::pair<fs::path, fs::path>>;

constexpr const char* kCopyCanceled = "Copy canceled. Partial destination files may remain.";
constexpr const char* kMoveCanceled = "Move canceled. Partial destination files may remain.";

class Cancel : public TransferTest {
protected:
    // Runs the plan and returns the final message.
    std::string Run(bool bMove, const Items& Of, Policy WithPolicy = Policy::Overwrite) {
        RunTarvaneTransferJob(SharedJob, PlanOf(bMove, Of, WithPolicy));
        const TarvaneTransferUiSnapshot end = Job.MakeUiSnapshot();
        EXPECT_TRUE(end.bFinished);
        EXPECT_NE(end.bSucceeded, end.bCanceled);
        return end.MessageText;
    }

    // Cancels when the engine is about to copy Name, after it has looked at it.
    void CancelAtCopyOf(const std::string& Name) {
        Hooks.PathsCompared = [this, Name](const fs::path& source) {
            if (source.filename() == Name) {
                Job.RequestCancel();
            }
        };
    }

    void Write(const std::string& Name, std::string_view Bytes) {
        WriteFile(Directory / Name, Bytes);
    }

    Tree OnDisk() { return TreeOf(Directory.Path()); }

    const fs::path From = Directory / "from";
    const fs::path To = Directory / "to";
    EngineHooks Hooks;
};

TEST_F(Cancel, DuringTheScanOfALargeDirectory) {
    for (int i = 0; i < 100; ++i) {
        Write("from/" + std::to_string(i), "x");
    }
    int entries = 0;
    Hooks.Advance = [&](const fs::path&) {
        if (++entries == 50) {
            Job.RequestCancel();
        }
        return std::error_code();
    };
    EXPECT_EQ(Run(kCopy, {{From, To}}), kCopyCanceled);
    EXPECT_EQ(entries, 50);
    EXPECT_FALSE(fs::exists(To));
    EXPECT_EQ(Job.MakeUiSnapshot().TotalItems, 0U);
}

TEST_F(Cancel, DuringTheScanOfAMove) {
    Write("from/file", "x");
    Hooks.PathMet = [this](const std::string&) { Job.RequestCancel(); };
    EXPECT_EQ(Run(kMove, {{From, To}}), kMoveCanceled);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "dir"}, {"from/file", "file x"}}));
}

// A failure that comes with a cancel counts as the cancel.
TEST_F(Cancel, HidesAFailureOfTheScan) {
    Hooks.PathMet = [this](const std::string&) { Job.RequestCancel(); };
    EXPECT_EQ(Run(kCopy, {{Directory / "missing", To}}), kCopyCanceled);
}

TEST_F(Cancel, BeforeTheFirstItemTouchesNothing) {
    Write("from", "data");
    Hooks.PathMet = [this](const std::string&) { Job.RequestCancel(); };
    EXPECT_EQ(Run(kMove, {{From, Directory / "new folder/to"}}), kMoveCanceled);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "file data"}}));
    EXPECT_EQ(Job.MakeUiSnapshot().TotalItems, 1U);
}

// A link to a device is copied in one step, without a look at the cancel.
TEST_F(Cancel, BetweenTwoItemsKeepsTheFirst) {
    fs::create_symlink("/dev/null", Directory / "device");
    Write("from", "data");
    CancelAtCopyOf("device");
    EXPECT_EQ(Run(kCopy, {{Directory / "device", Directory / "device-2"}, {From, To}}),
              kCopyCanceled);
    EXPECT_EQ(OnDisk(), (Tree{{"device", "link /dev/null"},
                              {"device-2", "link /dev/null"},
                              {"from", "file data"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

TEST_F(Cancel, DuringTheLastItemIsTooLateWhenTheItemStillSucceeds) {
    fs::create_symlink("/dev/null", From);
    CancelAtCopyOf("from");
    EXPECT_EQ(Run(kCopy, {{From, To}}), "Copied 1 item(s).");
    EXPECT_TRUE(Job.IsCancelRequested());
    EXPECT_TRUE(Job.MakeUiSnapshot().bSucceeded);
}

TEST_F(Cancel, HidesAFailureOfTheCopy) {
    MakeFifo(From);
    CancelAtCopyOf("from");
    EXPECT_EQ(Run(kCopy, {{From, To}}), kCopyCanceled);
}

TEST_F(Cancel, BeforeTheFirstEntryOfADirectoryLeavesAnEmptyDirectory) {
    Write("from/file", "data");
    CancelAtCopyOf("from");
    EXPECT_EQ(Run(kCopy, {{From, To}}), kCopyCanceled);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "dir"}, {"from/file", "file data"}, {"to", "dir"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

TEST_F(Cancel, BeforeAFileKeepsItsOldDestination) {
    Write("from", "data");
    Write("to", "old");
    CancelAtCopyOf("from");
    EXPECT_EQ(Run(kMove, {{From, To}}), kMoveCanceled);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "file data"}, {"to", "file old"}}));
    EXPECT_EQ(DoneBy(Job), Counted{});
}

// The probe of the device comes after the destination was opened.
TEST_F(Cancel, BeforeTheFirstBlockRemovesTheDestination) {
    Write("from", "data");
    Write("to", "old");
    Hooks.DeviceProbed = [this] { Job.RequestCancel(); };
    EXPECT_EQ(Run(kMove, {{From, To}}), kMoveCanceled);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "file data"}}));
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(Cancel, BeforeAnEmptyFileIsFinishedRemovesTheDestination) {
    Write("from", "");
    Hooks.DeviceProbed = [this] { Job.RequestCancel(); };
    EXPECT_EQ(Run(kCopy, {{From, To}}), kCopyCanceled);
    EXPECT_FALSE(fs::exists(To));
}

TEST_F(Cancel, BetweenTwoBlocksLeavesNoPartialFileAndKeepsTheCounts) {
    const RemovableDisk disk(Directory.Path(), "1\n");
    WriteFile(From, PatternBytes(5 * kTransferBufferBytes));
    int blocks = 0;
    const FakeSleep sleep([&](std::int64_t) {
        if (++blocks == 3) {
            Job.RequestCancel();
        }
        return FakeSleep::Ending{};
    });
    EXPECT_EQ(Run(kMove, {{From, disk.Path() / "to"}}), kMoveCanceled);
    EXPECT_EQ(blocks, 3);
    EXPECT_FALSE(fs::exists(disk.Path() / "to"));
    EXPECT_EQ(fs::file_size(From), 5 * kTransferBufferBytes);
    EXPECT_EQ(DoneBy(Job), (Counted{0, 3 * kTransferBufferBytes}));
}

TEST_F(Cancel, BetweenTwoBlocksFromAnotherThread) {
    const RemovableDisk disk(Directory.Path(), "1\n");
    WriteFile(From, PatternBytes(40 * kTransferBufferBytes));
    std::thread user([this] {
        EXPECT_TRUE(BecomesTrue("a block is done", [this] { return DoneBy(Job).Bytes > 0; }));
        Job.RequestCancel();
        EXPECT_EQ(Job.MakeUiSnapshot().HintText,
                  "Canceling transfer. Waiting for the current filesystem step to finish.");
    });
    EXPECT_EQ(Run(kCopy, {{From, disk.Path() / "to"}}), kCopyCanceled);
    user.join();
    EXPECT_FALSE(fs::exists(disk.Path() / "to"));
    EXPECT_LT(DoneBy(Job).Bytes, 40 * kTransferBufferBytes);
}

TEST_F(Cancel, AfterTheLastBlockIsTooLate) {
    const RemovableDisk disk(Directory.Path(), "1\n");
    WriteFile(From, PatternBytes(1000));
    const FakeSleep sleep([&](std::int64_t) {
        Job.RequestCancel();
        return FakeSleep::Ending{};
    });
    EXPECT_EQ(Run(kCopy, {{From, disk.Path() / "to"}}), "Copied 1 item(s).");
    EXPECT_EQ(fs::file_size(disk.Path() / "to"), 1000U);
}

// Links to a device again: a file would look for the cancel itself.
TEST_F(Cancel, BetweenTwoEntriesOfADirectoryKeepsTheFirst) {
    fs::create_directory(From);
    fs::create_symlink("/dev/null", From / "a");
    fs::create_symlink("/dev/null", From / "b");
    const std::vector<fs::path> listing = ListingOf(From);
    Hooks.Advance = [this](const fs::path&) {
        if (DoneBy(Job).Items > 0) {
            Job.RequestCancel();
        }
        return std::error_code();
    };
    Hooks.Rename = [](const fs::path&) { return std::make_error_code(std::errc::io_error); };
    EXPECT_EQ(Run(kMove, {{From, To}}), kMoveCanceled);
    EXPECT_EQ(TreeOf(To), (Tree{{listing[0].filename(), "link /dev/null"}}));
    EXPECT_EQ(TreeOf(From), (Tree{{listing[1].filename(), "link /dev/null"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{2, 0}));
}

// Esc instead of an answer.
TEST_F(Cancel, WhileAQuestionWaits) {
    Write("from/file", "data");
    Write("to/file", "old");
    std::thread user([this] {
        TarvaneTransferConflict question;
        EXPECT_TRUE(
            BecomesTrue("a question is posted", [&] { return Job.GetPendingConflict(question); }));
        Job.RequestCancel();
    });
    EXPECT_EQ(Run(kCopy, {{From / "file", To / "file"}}, Policy::Ask), kCopyCanceled);
    user.join();
    EXPECT_EQ(ReadFile(To / "file"), "old");
    TarvaneTransferConflict question;
    EXPECT_FALSE(Job.GetPendingConflict(question));
}

} // namespace
