// When one answer for all files does what the choices say about each of them.

#include "mounts.h"
#include "needs.h"
#include "preflight_fixture.h"

#include <sys/mount.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

ScopedMount DiskAt(const fs::path& Where) {
    NeedRoot();
    EnterPrivateMountNamespace();
    return MountTmpfs(Where, "size=1m");
}

// Both trees hold a file and a directory with a file.
class TakenFiles : public PreflightTest {
protected:
    TakenFiles() {
        for (const fs::path& root : {From, To}) {
            WriteFile(root / "tree/a", "data");
            WriteFile(root / "tree/sub/b", "data");
        }
        WriteFile(From / "tree/new", "data");
        PlanToCopy({{From / "tree", To / "tree"}});
    }

    bool AreAlone() { return Look().bTakesOnlyFiles; }
    bool AreAloneWithARecord() {
        StatusRecord record;
        PreflightTask task = Task();
        task.Record = &record;
        return RunPreflight(task, Control).bTakesOnlyFiles;
    }
    void SetModes(mode_t Source, mode_t Destination) {
        ASSERT_EQ(chmod((From / "tree/sub/b").c_str(), Source), 0);
        ASSERT_EQ(chmod((To / "tree/sub/b").c_str(), Destination), 0);
    }

    const ScopedMount Disk = DiskAt(To);
};

TEST_F(TakenFiles, AreAloneWhereFilesAndDirectoriesMeetTheirLike) {
    EXPECT_TRUE(AreAlone());
    Rules.ForFiles = FileConflictChoice::Older;
    EXPECT_TRUE(AreAlone());
    Plan.bMove = true;
    EXPECT_TRUE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneWhereOtherChoicesAnswer) {
    for (const FileConflictChoice choice :
         {FileConflictChoice::Ask, FileConflictChoice::Skip, FileConflictChoice::Compare,
          FileConflictChoice::Larger, FileConflictChoice::SizeDiffers, FileConflictChoice::KeepBoth,
          FileConflictChoice::Fail}) {
        Rules.ForFiles = choice;
        EXPECT_FALSE(AreAlone());
    }
}

TEST_F(TakenFiles, AreNotAloneWithARecordWhereOneIsMoreOpenThanItsSource) {
    SetModes(0550, 0740);
    EXPECT_TRUE(AreAloneWithARecord());
    SetModes(0700, 0640);
    EXPECT_FALSE(AreAloneWithARecord());
    EXPECT_TRUE(AreAlone());
    SetModes(0660, 0604);
    EXPECT_FALSE(AreAloneWithARecord());
}

TEST_F(TakenFiles, AreNotAloneWithARecordWhereOneBelongsToOthers) {
    SetModes(0644, 0600);
    EXPECT_TRUE(AreAloneWithARecord());
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(chown((To / "tree/sub/b").c_str(), kNobody, 0), 0);
    EXPECT_FALSE(AreAloneWithARecord());
    EXPECT_TRUE(AreAlone());
    ASSERT_EQ(chown((To / "tree/sub/b").c_str(), 0, kNobody), 0);
    EXPECT_FALSE(AreAloneWithARecord());
}

// It keeps what is in it as well.
TEST_F(TakenFiles, AreAloneWithARecordWhereTheOneThatIsMoreOpenIsSkipped) {
    SetModes(0600, 0644);
    SetModifiedTime(From / "tree/sub/b", 1000000000);
    Rules.ForFiles = FileConflictChoice::Older;
    EXPECT_TRUE(AreAloneWithARecord());
}

TEST_F(TakenFiles, AreNotAloneWhenADirectoryIsSkipped) {
    Rules.ForDirectories = DirectoryConflictChoice::Skip;
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneBesideALinkToAFile) {
    fs::remove(To / "tree/sub/b");
    fs::create_symlink("../a", To / "tree/sub/b");
    EXPECT_FALSE(AreAlone());
    Rules.bFollowLinks = true;
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneBesideALinkToADirectory) {
    fs::rename(To / "tree/sub", To / "elsewhere");
    fs::create_directory_symlink("../elsewhere", To / "tree/sub");
    Rules.bFollowLinks = true;
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneBesideAFileWithTwoNames) {
    fs::create_hard_link(To / "tree/sub/b", To / "other");
    EXPECT_FALSE(AreAlone());
    Rules.bFollowLinks = true;
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneBesideAPipe) {
    fs::remove(To / "tree/sub/b");
    ASSERT_EQ(mkfifo((To / "tree/sub/b").c_str(), 0600), 0);
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneWhereAFileMeetsADirectoryThatSomebodyIsAskedAbout) {
    Rules.ForDirectories = DirectoryConflictChoice::Ask;
    PlanToCopy({{From / "tree/a", To / "tree/sub"}});
    EXPECT_FALSE(AreAlone());
}

// Such a link is copied as a link.
TEST_F(TakenFiles, AreNotAloneWhereALinkToADeviceComes) {
    fs::remove(From / "tree/sub/b");
    fs::create_symlink("/dev/null", From / "tree/sub/b");
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneWhereADirectoryMeetsAFile) {
    fs::remove_all(To / "tree/sub");
    WriteFile(To / "tree/sub", "data");
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneWhereAFileMeetsADirectory) {
    fs::remove(To / "tree/sub/b");
    fs::create_directory(To / "tree/sub/b");
    EXPECT_FALSE(AreAlone());
}

// What links lead to may go to one name together.
TEST_F(TakenFiles, AreNotAloneWhereLinksToDirectoriesAreFollowed) {
    fs::create_directory(From / "elsewhere");
    fs::create_directory_symlink("../elsewhere", From / "tree/link");
    EXPECT_FALSE(AreAlone());
    PlanToMove({{From / "tree", To / "tree"}});
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneWhereTwoItemsMayMeet) {
    WriteFile(From / "tree2/new", "data");
    PlanToCopy({{From / "tree", To / "tree"}, {From / "tree2", To / "tree"}});
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneBeforeAnEntryThatEndsTheJob) {
    fs::create_symlink("nowhere", From / "tree/dangling");
    EXPECT_FALSE(AreAlone());
}

TEST_F(TakenFiles, AreNotAloneWithoutALookAtEverything) {
    Scope = PreflightScope::GuardsOnly;
    EXPECT_FALSE(AreAlone());
}

// The same directory may be mounted twice.
TEST_F(TakenFiles, AreNotAloneInAnotherMount) {
    const ScopedMount sub = MountTmpfs(To / "tree/sub", "size=1m");
    WriteFile(To / "tree/sub/b", "data");
    EXPECT_FALSE(AreAlone());
}

// It keeps names apart, but not all like it do.
TEST_F(TakenFiles, AreNotAloneInAFileSystemOfAnotherKind) {
    ASSERT_EQ(mount("ramfs", To.c_str(), "ramfs", 0, nullptr), 0);
    WriteFile(To / "tree/a", "data");
    EXPECT_FALSE(AreAlone());
    umount2(To.c_str(), MNT_DETACH);
}

} // namespace
