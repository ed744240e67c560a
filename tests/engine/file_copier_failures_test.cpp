// What is left, on disk and in the counters, when one file cannot be copied or moved.

#include "engine_source.h"

#include "answering_interface.h"
#include "engine_hooks.h"
#include "mounts.h"
#include "transfer_fixture.h"

#include <csignal>

#include <sys/resource.h>

namespace {

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;
using Result = TransferCopyResult;

class FileCopierFailure : public TransferTest {
protected:
    FileCopierFailure() { WriteFile(Source, "0123456789"); }

    Result Run(bool bMove = kCopy, Policy WithPolicy = Policy::Overwrite) {
        return CopyFileWithProgress(Source, Destination, Job, WithPolicy, bMove, Message);
    }

    std::string InQuotes(const fs::path& Path) { return "'" + Path.string() + "'"; }

    const fs::path Source = Directory / "source";
    const fs::path Destination = Directory / "destination";
};

TEST_F(FileCopierFailure, FailsForAMissingSource) {
    fs::remove(Source);
    WriteFile(Destination, "old");
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message,
              "Could not read source file " + InQuotes(Source) + ": No such file or directory");
    EXPECT_EQ(ReadFile(Destination), "old");
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(FileCopierFailure, FailsAtADestinationThatCannotBeLookedAt) {
    fs::create_symlink("destination", Destination);
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Failed checking destination " + InQuotes(Destination) +
                           ": Too many levels of symbolic links");
}

TEST_F(FileCopierFailure, FailsWhereTheFolderCannotBeMade) {
    WriteFile(Directory / "taken", "x");
    EXPECT_EQ(
        CopyFileWithProgress(Source, Directory / "taken/new", Job, Policy::Ask, kCopy, Message),
        Result::Failed);
    EXPECT_EQ(Message, "Failed to create destination directory: Not a directory");
}

// The folder is seen to first: what it fails for is what a user can mend.
TEST_F(FileCopierFailure, TellsOfTheFolderBeforeASourceThatCannotBeOpened) {
    const MetPath source = Source;
    fs::remove(Source);
    EXPECT_EQ(
        CopyFileWithProgress(source, Directory / "missing/new", Job, Policy::Ask, kCopy, Message),
        Result::Failed);
    EXPECT_EQ(Message, "Failed to open source file.");
    EXPECT_TRUE(fs::is_empty(Directory / "missing"));

    WriteFile(Directory / "taken", "x");
    EXPECT_EQ(
        CopyFileWithProgress(source, Directory / "taken/new", Job, Policy::Ask, kCopy, Message),
        Result::Failed);
    EXPECT_EQ(Message, "Failed to create destination directory: Not a directory");
}

// The destination turns into a link to itself while the user thinks about it.
TEST_F(FileCopierFailure, FailsAtADestinationThatCannotBeInspectedAfterTheQuestion) {
    WriteFile(Destination, "old");
    AnsweringInterface interface(Job, {{Act::Overwrite, "", [this] {
                                            fs::remove(Destination);
                                            fs::create_symlink("destination", Destination);
                                        }}});
    EXPECT_EQ(Run(kCopy, Policy::Ask), Result::Failed);
    EXPECT_EQ(Message, "Could not inspect destination " + InQuotes(Destination) +
                           ": Too many levels of symbolic links");
}

TEST_F(FileCopierFailure, FailsWhenADirectoryCannotBeReplaced) {
    EnterPrivateMountNamespace();
    const ScopedMount busy = MountTmpfs(Destination / "busy", "size=1m");
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Failed to replace destination directory: Device or resource busy");
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(FileCopierFailure, FailsForASourceThatMayNotBeRead) {
    fs::permissions(Source, fs::perms::none);
    fs::permissions(Directory.Path(), fs::perms::all);
    WriteFile(Destination, "old");
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Failed to open source file.");
    EXPECT_EQ(ReadFile(Destination), "old");
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(FileCopierFailure, FailsForADestinationThatMayNotBeWritten) {
    WriteFile(Destination, "old");
    fs::permissions(Destination, static_cast<fs::perms>(0444));
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Failed to open destination file.");
    EXPECT_EQ(ReadFile(Destination), "old");
}

TEST_F(FileCopierFailure, FailsForADestinationThatMayNotBeCreated) {
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Failed to open destination file.");
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"source", "file 0123456789"}}));
}

// The process's own memory is a regular file of no size whose first bytes cannot be read.
TEST_F(FileCopierFailure, LeavesNoDestinationWhenReadingFails) {
    EXPECT_EQ(CopyFileWithProgress(fs::path("/proc/self/mem"), Destination, Job, Policy::Ask, kMove,
                                   Message),
              Result::Failed);
    EXPECT_EQ(Message, "Failed while reading source file.");
    EXPECT_FALSE(fs::exists(Destination));
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(FileCopierFailure, CopiesAllBytesOfAFileThatSaysItHasNone) {
    EXPECT_EQ(CopyFileWithProgress(fs::path("/proc/version"), Destination, Job, Policy::Ask, kCopy,
                                   Message),
              Result::Succeeded);
    EXPECT_GT(fs::file_size(Destination), 0U);
    EXPECT_EQ(DoneBy(Job), (Counted{1, fs::file_size(Destination)}));
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileDoneBytes, 0U);
}

// A limit on the size of files fails a write like a full disk does.
TEST_F(FileCopierFailure, LeavesNoDestinationWhenWritingFails) {
    WriteFile(Source, PatternBytes(3 * kTransferBufferBytes));
    rlimit previous{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &previous), 0);
    const rlimit limit{kTransferBufferBytes + 1000, previous.rlim_max};
    ::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    const Result result = Run(kMove);
    ::setrlimit(RLIMIT_FSIZE, &previous);
    EXPECT_EQ(result, Result::Failed);
    EXPECT_EQ(Message, "Failed while writing destination file.");
    EXPECT_FALSE(fs::exists(Destination));
    EXPECT_TRUE(fs::exists(Source));
    // The bytes of the blocks that were written are not taken back.
    EXPECT_EQ(DoneBy(Job), (Counted{0, kTransferBufferBytes}));
}

TEST_F(FileCopierFailure, LeavesNoDestinationWhenTheProbeOfTheDeviceFails) {
    EngineHooks hooks;
    bool opened = false;
    hooks.Status = [&](const fs::path& path) {
        opened = path == Destination && fs::exists(fs::symlink_status(path));
        return opened ? std::make_error_code(std::errc::permission_denied) : std::error_code();
    };
    hooks.ThrowingStatus = hooks.Status;
    EXPECT_EQ(Run(kMove), Result::Failed);
    EXPECT_EQ(Message,
              "Failed checking destination " + InQuotes(Destination) + ": Permission denied");
    EXPECT_TRUE(opened);
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"source", "file 0123456789"}}));
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(FileCopierFailure, KeepsTheCopyWhenTheSourceOfAMoveCannotBeRemoved) {
    EnterPrivateMountNamespace();
    const ScopedMount readOnly = BindReadOnly(Directory.Path(), Directory / "view");
    const ScopedMount memory = MountTmpfs(Directory / "memory", "size=1m");
    const fs::path source = readOnly.Path() / "source";
    EXPECT_EQ(CopyFileWithProgress(source, memory.Path() / "new", Job, Policy::Ask, kMove, Message),
              Result::Failed);
    EXPECT_EQ(Message, "Copied data but could not remove original " + InQuotes(source) +
                           ": Read-only file system");
    EXPECT_EQ(TreeOf(memory.Path()), (Tree{{"new", "file 0123456789"}}));
    EXPECT_TRUE(fs::exists(source));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 10}));
}

TEST_F(FileCopierFailure, TouchesNothingAfterACancel) {
    WriteFile(Destination, "old");
    Job.RequestCancel();
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Transfer canceled.");
    EXPECT_EQ(ReadFile(Destination), "old");
    EXPECT_EQ(DoneBy(Job), Counted{});
}

} // namespace
