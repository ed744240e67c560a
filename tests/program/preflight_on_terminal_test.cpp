// The look before a job and the flush after it, as a person meets them on a terminal.

#include "becomes_true.h"
#include "hanging_file_system.h"
#include "mounts.h"
#include "on_terminal.h"
#include "sanitizer_options.h"
#include "without_time.h"

#include <filesystem>
#include <optional>

namespace {

namespace fs = std::filesystem;

class PreflightOnTerminal : public OnTerminal {
protected:
    PreflightOnTerminal() {
        WriteFile(Root / "from/file", "data");
        fs::create_symlink("nowhere", Root / "from/dangling");
    }

    void StartWide(std::vector<std::string> Arguments) {
        ProgramInTerminal::Setting setting = Setting(std::move(Arguments));
        setting.Columns = 200;
        Start(setting);
    }

    std::string Finding() const {
        return "The job will stop at links that lead nowhere:\n  " +
               (Root / "from/dangling").string() + "\n";
    }
};

TEST_F(PreflightOnTerminal, ListsWhatItFoundAndAsks) {
    StartWide({"copy", "from", "to"});
    EXPECT_TRUE(Program->ShowsScreen(Finding() + "y yes  n or Enter no\nGo on with the copy?\n"));
}

TEST_F(PreflightOnTerminal, NoTouchesNothing) {
    StartWide({"copy", "from", "to"});
    AnswerQuestion("Go on with the copy?", "n");
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Program->HistoryAndScreen(),
              Finding() + "Go on with the copy? no\nCanceled before anything was touched.\n");
    EXPECT_FALSE(fs::exists(Root / "to"));
    ExpectRestoredTerminal();
}

TEST_F(PreflightOnTerminal, EnterAloneDoesNotGoOn) {
    StartWide({"copy", "from", "to"});
    AnswerQuestion("Go on with the copy?", "\r");
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_FALSE(fs::exists(Root / "to"));
}

TEST_F(PreflightOnTerminal, YesGoesOnToWhereTheJobStops) {
    StartWide({"copy", "from", "to"});
    AnswerQuestion("Go on with the copy?", "y");
    EXPECT_TRUE(Program->ExitsWith(1));
    EXPECT_EQ(Program->HistoryAndScreen(), Finding() +
                                               "Go on with the copy? yes\n"
                                               "tarvane: " +
                                               (Root / "from/dangling").string() +
                                               ": No such file or directory\nNothing copied.\n");
    ExpectRestoredTerminal();
}

TEST_F(PreflightOnTerminal, IsLeftOutWhenToldSo) {
    Start({"copy", "--no-preflight", "from/file", "to"});
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()), "Copied 1 entry, 4 B.\n");
}

// A look that a file system never lets go of, not even when the program is killed.
class HungPreflightOnTerminal : public OnTerminal {
protected:
    HungPreflightOnTerminal() {
        EnterPrivateMountNamespace();
        Hung.emplace(Root / "from");
    }

    void StartAndHang() {
        Start({"copy", "--dry-run", "from", "to"});
        ASSERT_TRUE(Program->ShowsText("Looking through the sources: 1 entry."));
        ASSERT_TRUE(BecomesTrue("the look hangs", [this] { return Hung->IsHolding(); }));
    }

    std::optional<HangingFileSystem> Hung;
};

TEST_F(HungPreflightOnTerminal, CanBeCanceledAndDoesNotHoldTheEnd) {
    for (const char* key : {kEsc, kCtrlC}) {
        StartAndHang();
        Program->Type(key);
        EXPECT_TRUE(Program->ExitsWith(130, 10.0));
        EXPECT_EQ(Program->HistoryAndScreen(), "Canceled before anything was touched.\n");
        ExpectRestoredTerminal();
    }
}

class FlushOnTerminal : public OnTerminal {
protected:
    FlushOnTerminal() { WriteFile(Root / "file", PatternBytes(100000)); }

    ProgramInTerminal::Setting FailingFlush(const std::string& Milliseconds) const {
        ProgramInTerminal::Setting setting = Setting({"copy", "--flush=always", "file", "copied"});
        setting.Columns = 200;
        // The dynamic linker cannot take a path with a blank in it, as the build's may have.
        std::filesystem::create_symlink(FAILING_SYNCFS_LIBRARY, Root / "failing_syncfs.so");
        setting.Environment.emplace_back("LD_PRELOAD", Root / "failing_syncfs.so");
        setting.Environment.emplace_back("FAILING_SYNCFS_MS", Milliseconds);
        LetLibrariesPrecedeIt(setting.Environment);
        return setting;
    }
};

TEST_F(FlushOnTerminal, SaysThatARemovableDiskIsSafeToUnplug) {
    const RemovableDisk disk(Root.Path(), "1\n");
    Start({"copy", "file", "disk"});
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()),
              "Copied 1 entry, 97.7 KB.\nEverything is written. It is safe to unplug the disk.\n");
}

TEST_F(FlushOnTerminal, DoesNotWaitForAFixedDisk) {
    Start({"copy", "file", "copied"});
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()), "Copied 1 entry, 97.7 KB.\n");
}

TEST_F(FlushOnTerminal, AWriteErrorThatShowsUpOnlyThenIsAFailure) {
    Start(FailingFlush("0"));
    EXPECT_TRUE(Program->ExitsWith(1));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()),
              "Copied 1 entry, 97.7 KB.\ntarvane: cannot write everything to '" +
                  Root.Path().string() + "': Input/output error\n");
}

TEST_F(FlushOnTerminal, EscEndsTheWaitAndKeepsTheCopiedFiles) {
    Start(FailingFlush("60000"));
    ASSERT_TRUE(Program->ShowsText("Not safe to unplug yet."));
    Program->Type(kEsc);
    EXPECT_TRUE(Program->ExitsWith(130, 10.0));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()),
              "Copied 1 entry, 97.7 KB.\n"
              "The copied files stay, but the system is still writing them. Do not unplug the disk "
              "yet. Until everything is written, umount says that the target is busy.\n");
    EXPECT_EQ(ReadFile(Root / "copied"), PatternBytes(100000));
    ExpectRestoredTerminal();
}

} // namespace
