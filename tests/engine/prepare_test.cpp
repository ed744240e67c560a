// Preparing destinations, cleaning up, and counting what is skipped.

#include "engine_source.h"

#include "engine_hooks.h"
#include "mounts.h"
#include "transfer_fixture.h"

namespace {

class EnsureParent : public TransferTest {};

TEST_F(EnsureParent, CreatesNothingWhereTheFolderExists) {
    EXPECT_TRUE(EnsureDestinationParent(Directory / "new", Message));
    EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
    EXPECT_EQ(Message, "a message from before");
}

TEST_F(EnsureParent, CreatesEveryMissingAncestor) {
    EXPECT_TRUE(EnsureDestinationParent(Directory / "a/b/c/new", Message));
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"a", "dir"}, {"a/b", "dir"}, {"a/b/c", "dir"}}));
}

TEST_F(EnsureParent, HasNothingToCreateForABareName) {
    EXPECT_TRUE(EnsureDestinationParent("tarvane-bare-name", Message));
    EXPECT_FALSE(fs::exists("tarvane-bare-name"));
}

TEST_F(EnsureParent, FailsWhereARegularFileStandsInThePlaceOfAFolder) {
    WriteFile(Directory / "taken", "file");
    EXPECT_FALSE(EnsureDestinationParent(Directory / "taken/new", Message));
    EXPECT_EQ(Message, "Failed to create destination directory: Not a directory");
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"taken", "file file"}}));
}

TEST_F(EnsureParent, FailsWhereARegularFileStandsFurtherUp) {
    WriteFile(Directory / "taken", "file");
    EXPECT_FALSE(EnsureDestinationParent(Directory / "taken/a/b/new", Message));
    EXPECT_EQ(Message, "Failed to create destination directory: Not a directory");
}

TEST_F(EnsureParent, FailsOnAReadOnlyFileSystem) {
    EnterPrivateMountNamespace();
    const ScopedMount readOnly = BindReadOnly(Directory.Path(), Directory.Path());
    EXPECT_FALSE(EnsureDestinationParent(Directory / "a/new", Message));
    EXPECT_EQ(Message, "Failed to create destination directory: Read-only file system");
}

class RemoveIfPresent : public TransferTest {};

TEST_F(RemoveIfPresent, RemovesAWholeFolderTree) {
    WriteFile(Directory / "tree/a/file", "x");
    WriteFile(Directory / "tree/file", "x");
    WriteFile(Directory / "other", "stays");
    RemovePathIfPresent(Directory / "tree");
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"other", "file stays"}}));
}

TEST_F(RemoveIfPresent, RemovesASingleFile) {
    WriteFile(Directory / "file", "x");
    RemovePathIfPresent(Directory / "file");
    EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
}

TEST_F(RemoveIfPresent, DoesNothingForAMissingPath) {
    RemovePathIfPresent(Directory / "missing");
    EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
}

TEST_F(RemoveIfPresent, RemovesALinkAndNotTheFileThatItLeadsTo) {
    WriteFile(Directory / "file", "stays");
    fs::create_symlink("file", Directory / "link");
    RemovePathIfPresent(Directory / "link");
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"file", "file stays"}}));
}

TEST_F(RemoveIfPresent, RemovesADanglingLink) {
    fs::create_symlink("nowhere", Directory / "link");
    RemovePathIfPresent(Directory / "link");
    EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
}

TEST_F(RemoveIfPresent, RemovesALinkThatLeadsToItself) {
    fs::create_symlink("loop", Directory / "loop");
    RemovePathIfPresent(Directory / "loop");
    EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
}

TEST_F(RemoveIfPresent, KeepsAnErrorToItself) {
    WriteFile(Directory / "locked/file", "x");
    {
        const ActingAsNobody nobody;
        EXPECT_NO_THROW(RemovePathIfPresent(Directory / "locked/file"));
        EXPECT_NO_THROW(RemovePathIfPresent(Directory / "locked"));
    }
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"locked", "dir"}, {"locked/file", "file x"}}));
}

class SkipAccounting : public TransferTest {};

TEST_F(SkipAccounting, CountsAFolderWithTwoFilesAndAnEmptySubfolderAsFourItems) {
    WriteFile(Directory / "tree/ten", "0123456789");
    WriteFile(Directory / "tree/empty", "");
    fs::create_directory(Directory / "tree/sub");
    EXPECT_TRUE(MarkSkippedPath(Directory / "tree", Job, Message));
    EXPECT_EQ(DoneBy(Job), (Counted{4, 10}));
    EXPECT_EQ(SkippedBy(Job), (Counted{4, 10}));
    EXPECT_EQ(Message, "a message from before");
}

TEST_F(SkipAccounting, CountsALinkToAFolderAsOneItemWithoutBytes) {
    WriteFile(Directory / "tree/file", "0123456789");
    fs::create_directory_symlink("tree", Directory / "link");
    EXPECT_TRUE(MarkSkippedPath(Directory / "link", Job, Message));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

TEST_F(SkipAccounting, CountsLinksInsideAFolderWithoutFollowingThem) {
    WriteFile(Directory / "file", "0123456789");
    fs::create_directory(Directory / "tree");
    fs::create_symlink("../file", Directory / "tree/to-file");
    fs::create_directory_symlink("..", Directory / "tree/to-folder");
    fs::create_symlink("nowhere", Directory / "tree/dangling");
    EXPECT_TRUE(MarkSkippedPath(Directory / "tree", Job, Message));
    EXPECT_EQ(DoneBy(Job), (Counted{4, 0}));
}

TEST_F(SkipAccounting, ShowsAFileAsCompletelyDone) {
    WriteFile(Directory / "ten", "0123456789");
    EXPECT_TRUE(MarkSkippedPath(Directory / "ten", Job, Message));
    const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
    EXPECT_EQ(snapshot.PathText, "Current: " + (Directory / "ten").string());
    EXPECT_EQ(snapshot.CurrentFileTotalBytes, 10U);
    EXPECT_EQ(snapshot.CurrentFileDoneBytes, 10U);
    EXPECT_EQ(DoneBy(Job), (Counted{1, 10}));
}

TEST_F(SkipAccounting, CountsSpecialEntriesWithoutBytes) {
    fs::create_directory(Directory / "tree");
    MakeFifo(Directory / "tree/fifo");
    MakeSocket(Directory / "tree/socket");
    EXPECT_TRUE(MarkSkippedPath(Directory / "tree", Job, Message));
    EXPECT_EQ(DoneBy(Job), (Counted{3, 0}));
}

TEST_F(SkipAccounting, FailsForAMissingPathWithTheBareSystemText) {
    EXPECT_FALSE(MarkSkippedPath(Directory / "missing", Job, Message));
    EXPECT_EQ(Message, "No such file or directory");
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(SkipAccounting, KeepsWhatWasCountedBeforeAFailure) {
    WriteFile(Directory / "tree/a", "12345");
    WriteFile(Directory / "tree/b", "12345");
    const std::vector<fs::path> listing = ListingOf(Directory / "tree");
    EngineHooks hooks;
    hooks.SymlinkStatus = [&](const fs::path& path) {
        return path == listing[1] ? std::make_error_code(std::errc::io_error) : std::error_code();
    };
    EXPECT_FALSE(MarkSkippedPath(Directory / "tree", Job, Message));
    EXPECT_EQ(Message, "Input/output error");
    EXPECT_EQ(DoneBy(Job), (Counted{2, 5}));
    EXPECT_EQ(SkippedBy(Job), (Counted{2, 5}));
}

TEST_F(SkipAccounting, CountsAFolderThatMayNotBeListedAsEmpty) {
    WriteFile(Directory / "tree/locked/file", "0123456789");
    fs::permissions(Directory / "tree/locked", fs::perms::none);
    {
        const ActingAsNobody nobody;
        EXPECT_TRUE(MarkSkippedPath(Directory / "tree", Job, Message));
    }
    EXPECT_EQ(DoneBy(Job), (Counted{2, 0}));
}

TEST_F(SkipAccounting, EndsAFolderWhoseListingFailsAsIfItWereComplete) {
    WriteFile(Directory / "tree/a", "12345");
    WriteFile(Directory / "tree/b", "12345");
    EngineHooks hooks;
    hooks.Advance = [](const fs::path&) { return std::make_error_code(std::errc::io_error); };
    EXPECT_TRUE(MarkSkippedPath(Directory / "tree", Job, Message));
    EXPECT_EQ(DoneBy(Job), (Counted{2, 5}));
}

} // namespace
