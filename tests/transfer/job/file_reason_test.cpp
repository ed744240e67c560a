// Why real files on real file systems cannot be read or written.

#include "file_reason.h"

#include "file_tree.h"
#include "mounts.h"
#include "needs.h"
#include "temporary_directory.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class FileReason : public testing::Test {
protected:
    FileReason() {
        fs::permissions(Root.Path(), fs::perms(0755));
        WriteFile(Root / "file", "data");
    }

    // To whoever owns nothing here.
    void CloseTo(const fs::path& Path, unsigned Mode) const {
        fs::permissions(Path, fs::perms(Mode));
    }

    TemporaryDirectory Root;
};

TEST_F(FileReason, IsNoneWhereAllIsWell) {
    EXPECT_EQ(WhyUnreadable(Root / "file"), "");
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "file"), "");
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "new"), "");
    EXPECT_EQ(WhyNotWritten(Root / "new", 1), "");
    EXPECT_EQ(ReadFile(Root / "file"), "data");
    EXPECT_FALSE(fs::exists(Root / "new"));
}

TEST_F(FileReason, IsThatASourceHasVanished) {
    EXPECT_EQ(WhyUnreadable(Root / "gone"), "No such file or directory");
}

TEST_F(FileReason, IsAMissingPermission) {
    NeedRoot();
    CloseTo(Root / "file", 0600);
    const ActingAsNobody nobody;
    EXPECT_EQ(WhyUnreadable(Root / "file"), "Permission denied");
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "file"), "Permission denied");
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "new"), "Permission denied");
}

TEST_F(FileReason, IsADirectoryThatCannotBeListed) {
    NeedRoot();
    fs::create_directory(Root / "folder");
    EXPECT_EQ(WhyUnreadable(Root / "folder"), "");
    CloseTo(Root / "folder", 0700);
    const ActingAsNobody nobody;
    EXPECT_EQ(WhyUnreadable(Root / "folder"), "Permission denied");
}

// Nobody reads what comes through it or writes into it.
TEST_F(FileReason, OpensNoPipe) {
    MakeFifo(Root / "pipe");
    EXPECT_EQ(WhyUnreadable(Root / "pipe"), "");
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "pipe"), "");
}

TEST_F(FileReason, IsANameThatIsTooLong) {
    EXPECT_EQ(WhyNotOpenedForWriting(Root / std::string(256, 'n')), "File name too long");
}

TEST_F(FileReason, IsAReadOnlyFileSystem) {
    EnterPrivateMountNamespace();
    const ScopedMount mount = BindReadOnly(Root.Path(), Root.Path());
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "file"), "Read-only file system");
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "new"), "Read-only file system");
    EXPECT_EQ(WhyNotWritten(Root / "new", 1), "Read-only file system");
}

TEST_F(FileReason, IsAFullMemoryFileSystem) {
    EnterPrivateMountNamespace();
    const ScopedMount mount = MountTmpfs(Root / "stick", "size=1m");
    WriteFile(Root / "stick/sub/other", PatternBytes(768 << 10));
    EXPECT_EQ(WhyNotWritten(Root / "stick/sub/new", 2 << 20),
              "No space left on " + (Root / "stick").string() + ": 2.0 MB needed, 256.0 KB free");
    EXPECT_EQ(WhyNotWritten(Root / "stick/sub/new", 256 << 10), "");
}

TEST_F(FileReason, IsAFileSystemWithoutRoomForAnotherFile) {
    EnterPrivateMountNamespace();
    const ScopedMount mount = MountTmpfs(Root / "stick", "size=1m,nr_inodes=2");
    WriteFile(Root / "stick/only", "data");
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "stick/new"),
              "No space left on " + (Root / "stick").string() + " for another file");
}

class FileReasonOnDisk : public FileReason {
protected:
    FileReasonOnDisk() { EnterPrivateMountNamespace(); }
};

TEST_F(FileReasonOnDisk, IsAFullDisk) {
    const ScopedMount disk = MountLoopDisk(Root / "disk", 8);
    const std::string reason = WhyNotWritten(Root / "disk/new", 64 << 20);
    EXPECT_TRUE(
        reason.starts_with("No space left on " + (Root / "disk").string() + ": 64.0 MB needed, "))
        << reason;
}

TEST_F(FileReasonOnDisk, IsAnImmutableEntry) {
    const ScopedMount disk = MountLoopDisk(Root / "disk", 8);
    WriteFile(Root / "disk/file", "data");
    fs::create_directory(Root / "disk/sub");
    const std::string entries =
        "'" + (Root / "disk/file").string() + "' '" + (Root / "disk/sub").string() + "'";
    ASSERT_EQ(std::system(("chattr +i " + entries).c_str()), 0);
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "disk/file"), "Operation not permitted");
    EXPECT_EQ(WhyNotOpenedForWriting(Root / "disk/sub/new"), "Operation not permitted");
}

} // namespace
