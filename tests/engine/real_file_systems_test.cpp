// Whole jobs on file systems that are full, read-only, elsewhere, or somebody else's. Needs root.

#include "mounts.h"
#include "transfer_fixture.h"

namespace {

namespace fs = std::filesystem;

using Policy = TarvaneTransferConflictPolicy;
using Items = std::vector<std::pair<fs::path, fs::path>>;

constexpr std::size_t kBlock = 262144;

class RealFileSystem : public TransferTest {
protected:
    RealFileSystem() { EnterPrivateMountNamespace(); }

    // Runs the plan and returns the final message.
    std::string Run(bool bMove, const Items& Of, Policy WithPolicy = Policy::Overwrite) {
        RunTarvaneTransferJob(SharedJob, PlanOf(bMove, Of, WithPolicy));
        return Job.MakeUiSnapshot().MessageText;
    }

    void Write(const std::string& Name, std::string_view Bytes) {
        WriteFile(Directory / Name, Bytes);
    }

    const fs::path From = Directory / "from";
};

class FullDisk : public RealFileSystem {
protected:
    const ScopedMount Disk = MountTmpfs(Directory / "disk", "size=1m");
};

TEST_F(FullDisk, LeavesNoPartialFileAfterAFailedWrite) {
    Write("from", PatternBytes(8 * kBlock));
    EXPECT_EQ(Run(kMove, {{From, Disk.Path() / "to"}}), "Failed while writing destination file.");
    EXPECT_EQ(TreeOf(Disk.Path()), Tree{});
    EXPECT_EQ(fs::file_size(From), 8 * kBlock);
    EXPECT_EQ(DoneBy(Job), (Counted{0, 4 * kBlock}));
}

// So short a file stays in the stream's buffer until the flush.
TEST_F(FullDisk, LeavesNoPartialFileAfterAFailedFlush) {
    WriteFile(Disk.Path() / "ballast", PatternBytes(4 * kBlock));
    Write("from", "short");
    EXPECT_EQ(Run(kMove, {{From, Disk.Path() / "to"}}), "Failed to flush destination file.");
    EXPECT_FALSE(fs::exists(Disk.Path() / "to"));
    EXPECT_EQ(ReadFile(From), "short");
    EXPECT_EQ(DoneBy(Job), (Counted{0, 5}));
}

TEST_F(FullDisk, KeepsTheFilesThatWereCopiedBefore) {
    Write("first", "data");
    Write("from", PatternBytes(8 * kBlock));
    Run(kCopy, {{Directory / "first", Disk.Path() / "first"}, {From, Disk.Path() / "to"}});
    EXPECT_EQ(TreeOf(Disk.Path()), (Tree{{"first", "file data"}}));
}

TEST_F(FullDisk, TruncatesAnExistingDestinationAndThenLosesIt) {
    WriteFile(Disk.Path() / "to", "old");
    Write("from", PatternBytes(8 * kBlock));
    EXPECT_EQ(Run(kCopy, {{From, Disk.Path() / "to"}}), "Failed while writing destination file.");
    EXPECT_EQ(TreeOf(Disk.Path()), Tree{});
}

TEST_F(FullDisk, WithoutRoomForAnotherNameFailsToMakeADirectory) {
    const ScopedMount small = MountTmpfs(Directory / "small", "size=1m,nr_inodes=1");
    Write("from/file", "data");
    EXPECT_EQ(Run(kCopy, {{From, small.Path() / "to"}}),
              "Failed to create destination directory: No space left on device");
}

class ReadOnlyDisk : public RealFileSystem {
protected:
    ReadOnlyDisk() {
        Write("disk/file", "data");
        Write("disk/folder/file", "data");
    }

    const fs::path Room = Directory / "disk";
};

TEST_F(ReadOnlyDisk, TakesNoNewFile) {
    Write("from", "data");
    const ScopedMount disk = BindReadOnly(Room, Room);
    EXPECT_EQ(Run(kMove, {{From, Room / "to"}}), "Failed to open destination file.");
    EXPECT_EQ(ReadFile(From), "data");
}

TEST_F(ReadOnlyDisk, TakesNoNewFolder) {
    Write("from", "data");
    const ScopedMount disk = BindReadOnly(Room, Room);
    EXPECT_EQ(Run(kMove, {{From, Room / "new/to"}}),
              "Failed to create destination directory: Read-only file system");
}

TEST_F(ReadOnlyDisk, TakesNoDirectory) {
    Write("from/file", "data");
    const ScopedMount disk = BindReadOnly(Room, Room);
    EXPECT_EQ(Run(kMove, {{From, Room / "to"}}),
              "Failed to create destination directory: Read-only file system");
    EXPECT_EQ(ReadFile(From / "file"), "data");
}

TEST_F(ReadOnlyDisk, KeepsAFileWhereADirectoryIsToGo) {
    Write("from/file", "data");
    const ScopedMount disk = BindReadOnly(Room, Room);
    EXPECT_EQ(Run(kCopy, {{From, Room / "file"}}),
              "Failed to replace destination path: Read-only file system");
}

TEST_F(ReadOnlyDisk, KeepsADirectoryWhereAFileIsToGo) {
    Write("from", "data");
    const ScopedMount disk = BindReadOnly(Room, Room);
    EXPECT_EQ(Run(kCopy, {{From, Room / "folder"}}),
              "Failed to replace destination directory: Read-only file system");
    EXPECT_EQ(ReadFile(Room / "folder/file"), "data");
}

TEST_F(ReadOnlyDisk, GivesItsFilesToACopy) {
    const ScopedMount disk = BindReadOnly(Room, Room);
    EXPECT_EQ(Run(kCopy, {{Room / "folder", Directory / "to"}}), "Copied 1 item(s).");
    EXPECT_EQ(TreeOf(Directory / "to"), (Tree{{"file", "file data"}}));
}

// The first file that cannot be removed ends the move; its copy stays.
TEST_F(ReadOnlyDisk, KeepsItsFilesInAMove) {
    const ScopedMount disk = BindReadOnly(Room, Room);
    EXPECT_EQ(Run(kMove, {{Room / "folder", Directory / "to"}}),
              "Copied data but could not remove original '" + (Room / "folder/file").string() +
                  "': Read-only file system");
    EXPECT_EQ(TreeOf(Directory / "to"), (Tree{{"file", "file data"}}));
    EXPECT_EQ(ReadFile(Room / "folder/file"), "data");
    EXPECT_EQ(DoneBy(Job), (Counted{2, 4}));
}

class OtherDisk : public RealFileSystem {
protected:
    const ScopedMount Disk = MountTmpfs(Directory / "disk", "size=4m");
};

TEST_F(OtherDisk, ReceivesAMovedTreeAndTheSourceIsGone) {
    Write("from/file", PatternBytes(3 * kBlock + 17));
    Write("from/sub/deep/file", "data");
    fs::create_directory(From / "empty");
    const Tree before = TreeOf(From);
    EXPECT_EQ(Run(kMove, {{From, Disk.Path() / "to"}}), "Moved 1 item(s).");
    EXPECT_EQ(TreeOf(Disk.Path() / "to"), before);
    EXPECT_FALSE(fs::exists(From));
    EXPECT_EQ(DoneBy(Job), (Counted{6, 3 * kBlock + 21}));
}

TEST_F(OtherDisk, GivesBackAMovedTree) {
    WriteFile(Disk.Path() / "from/file", "data");
    EXPECT_EQ(Run(kMove, {{Disk.Path() / "from", Directory / "to"}}), "Moved 1 item(s).");
    EXPECT_EQ(TreeOf(Disk.Path()), Tree{});
    EXPECT_EQ(TreeOf(Directory / "to"), (Tree{{"file", "file data"}}));
}

// Elsewhere a link is copied as what it leads to; in the same place it would be renamed.
TEST_F(OtherDisk, ReceivesTheFileBehindAMovedLink) {
    Write("file", "data");
    fs::create_symlink("file", From);
    EXPECT_EQ(Run(kMove, {{From, Disk.Path() / "to"}}), "Moved 1 item(s).");
    EXPECT_EQ(TreeOf(Disk.Path()), (Tree{{"to", "file data"}}));
    EXPECT_FALSE(fs::exists(fs::symlink_status(From)));
    EXPECT_EQ(ReadFile(Directory / "file"), "data");
}

TEST_F(OtherDisk, ReceivesNoPipe) {
    MakeFifo(From);
    EXPECT_EQ(Run(kMove, {{From, Disk.Path() / "to"}}), "Invalid argument");
    EXPECT_TRUE(fs::is_fifo(From));
}

TEST_F(OtherDisk, KeepsWhatWasMovedBeforeAFailure) {
    Write("first/file", "data");
    Write("second", PatternBytes(20 * kBlock));
    EXPECT_EQ(Run(kMove, {{Directory / "first", Disk.Path() / "first"},
                          {Directory / "second", Disk.Path() / "second"}}),
              "Failed while writing destination file.");
    EXPECT_EQ(TreeOf(Disk.Path()), (Tree{{"first", "dir"}, {"first/file", "file data"}}));
    EXPECT_FALSE(fs::exists(Directory / "first"));
    EXPECT_TRUE(fs::exists(Directory / "second"));
}

class SomebodyElse : public RealFileSystem {};

TEST_F(SomebodyElse, CopiesWhatMayBeReadOfATree) {
    Write("from/open/file", "data");
    Write("from/locked/file", "secret");
    fs::permissions(From / "locked", fs::perms::none);
    fs::create_directory(Directory / "to");
    fs::permissions(Directory / "to", fs::perms::all);
    {
        const ActingAsNobody nobody;
        EXPECT_EQ(Run(kCopy, {{From, Directory / "to/copy"}}), "Copied 1 item(s).");
    }
    EXPECT_EQ(TreeOf(Directory / "to/copy"),
              (Tree{{"open", "dir"}, {"open/file", "file data"}, {"locked", "dir"}}));
}

TEST_F(SomebodyElse, StopsAtAFileThatMayNotBeRead) {
    Write("from/secret", "secret");
    fs::permissions(From / "secret", fs::perms::none);
    fs::create_directory(Directory / "to");
    fs::permissions(Directory / "to", fs::perms::all);
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(kCopy, {{From, Directory / "to/copy"}}), "Failed to open source file.");
    EXPECT_EQ(TreeOf(Directory / "to"), (Tree{{"copy", "dir"}}));
}

TEST_F(SomebodyElse, MayNotMoveOutOfAFolderThatIsNotHis) {
    Write("from/file", "data");
    fs::create_directory(Directory / "to");
    fs::permissions(Directory / "to", fs::perms::all);
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(kMove, {{From / "file", Directory / "to/file"}}),
              "Copied data but could not remove original '" + (From / "file").string() +
                  "': Permission denied");
    EXPECT_EQ(ReadFile(From / "file"), "data");
    EXPECT_EQ(ReadFile(Directory / "to/file"), "data");
}

TEST_F(SomebodyElse, MayNotLookIntoAFolderThatIsLocked) {
    Write("from", "data");
    Write("locked/file", "old");
    fs::permissions(Directory / "locked", fs::perms::none);
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(kCopy, {{From, Directory / "locked/file"}}),
              "Failed checking destination '" + (Directory / "locked/file").string() +
                  "': Permission denied");
    EXPECT_EQ(ReadFile(From), "data");
}

} // namespace
