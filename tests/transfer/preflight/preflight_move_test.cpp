// Moves: a rename leaves everything as it is, and a move that has to copy removes what it has
// copied, through links to directories too. Needs root for the mounts.

#include "own_mount_namespace.h"
#include "preflight_fixture.h"

#include <cstdlib>
#include <sys/mount.h>

namespace fs = std::filesystem;

namespace {

const Strings kNothing;

class PreflightMove : public PreflightTest {
protected:
    PreflightMove() {
        fs::create_directory(Tree);
        WriteFile(Outside / "file", "x");
    }

    const fs::path Tree = From / "tree";
    const fs::path Outside = Room / "outside";
};

// A move to another file system.
class PreflightMoveAway : public PreflightMove {
protected:
    const OwnMountNamespace Namespace;
    const ScopedMount Away{MountTmpfs(Room / "away", "size=4m")};
};

TEST_F(PreflightMove, ByRenamingLeavesLinksPipesAndTheirTargetsAlone) {
    fs::create_symlink(Outside, Tree / "link");
    MakeFifo(Tree / "pipe");
    PlanToMove({{Tree, To / "tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), kNothing);
    EXPECT_FALSE(result.bRemovesUnselected);
    EXPECT_EQ(result.CopiedEntries, 0U);
    const TarvaneTransferUiSnapshot done = Transfer();
    EXPECT_EQ(done.MessageText, "Moved 1 item(s).");
    EXPECT_EQ(result.Entries, done.TotalItems);
    EXPECT_TRUE(fs::exists(Outside / "file"));
}

TEST_F(PreflightMove, ByRenamingStillStopsAtADanglingLink) {
    fs::create_symlink("missing", Tree / "link");
    PlanToMove({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), Strings{"dangling-link from/tree/link, stops"});
    EXPECT_EQ(TransferMessage(), "No such file or directory");
}

TEST_F(PreflightMove, IntoItselfIsFound) {
    PlanToMove({{Tree, Tree / "sub/tree"}});
    EXPECT_EQ(Found(), (Strings{"destination-inside-source from/tree, stops",
                                "made-directory from/tree/sub"}));
    EXPECT_EQ(TransferMessage(), "Destination cannot be inside the source directory.");
}

TEST_F(PreflightMove, OntoAnExistingDirectoryRemovesThroughLinks) {
    fs::create_symlink(Outside, Tree / "link");
    fs::create_directory(To / "tree");
    PlanToMove({{Tree, To / "tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"link-to-directory-on-move from/tree/link"});
    EXPECT_TRUE(result.bRemovesUnselected);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

TEST_F(PreflightMoveAway, RemovesThroughLinks) {
    fs::create_symlink(Outside, Tree / "link");
    PlanToMove({{Tree, Away.Path() / "tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"link-to-directory-on-move from/tree/link"});
    EXPECT_TRUE(result.bRemovesUnselected);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

TEST_F(PreflightMoveAway, RemovesThroughAnItemThatIsALink) {
    fs::create_symlink(Outside, From / "link");
    PlanToMove({{From / "link", Away.Path() / "link"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"link-to-directory-on-move from/link"});
    EXPECT_TRUE(result.bRemovesUnselected);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

TEST_F(PreflightMoveAway, RemovesNothingUnselectedThroughALinkWithinTheSelection) {
    WriteFile(Tree / "real/file", "x");
    fs::create_symlink("tree/real", From / "link");
    PlanToMove({{From / "link", Away.Path() / "link"}, {Tree, Away.Path() / "tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"link-to-directory-on-move from/link"});
    EXPECT_FALSE(result.bRemovesUnselected);
}

TEST_F(PreflightMoveAway, OfAnOrdinaryTreeFindsNothing) {
    WriteFile(Tree / "sub/file", "x");
    fs::create_symlink("sub/file", Tree / "link");
    PlanToMove({{Tree, Away.Path() / "tree"}});
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
}

TEST_F(PreflightMoveAway, FindsADirectoryFromWhichNothingCanBeRemoved) {
    WriteFile(Tree / "locked/file", "x");
    fs::create_directory(Tree / "empty");
    fs::permissions(From, fs::perms::all);
    fs::permissions(Tree, fs::perms::all);
    fs::permissions(Away.Path(), fs::perms::all);
    PlanToMove({{Tree, Away.Path() / "tree"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"unwritable-source-directory from/tree/locked, stops"});
    EXPECT_EQ(TransferMessage(), "Copied data but could not remove original '" +
                                     (Tree / "locked/file").string() + "': Permission denied");
}

TEST_F(PreflightMoveAway, FindsThatItemsCannotBeRemoved) {
    WriteFile(From / "one", "x");
    WriteFile(From / "two", "x");
    fs::permissions(Away.Path(), fs::perms::all);
    PlanToMove({{From / "one", Away.Path() / "one"}, {From / "two", Away.Path() / "two"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"unwritable-source-directory from, stops"});
    EXPECT_EQ(TransferMessage(), "Copied data but could not remove original '" +
                                     (From / "one").string() + "': Permission denied");
}

TEST_F(PreflightMoveAway, FindsAReadOnlySourceEvenForRoot) {
    WriteFile(From / "file", "x");
    const ScopedMount readOnly = BindReadOnly(From, From);
    PlanToMove({{From / "file", Away.Path() / "file"}});
    EXPECT_EQ(Found(), Strings{"unwritable-source-directory from, stops"});
    EXPECT_EQ(TransferMessage(), "Copied data but could not remove original '" +
                                     (From / "file").string() + "': Read-only file system");
}

// The same file system at two places: the kernel renames within one mount only.
TEST_F(PreflightMoveAway, BetweenTwoMountsOfOneFileSystemRemovesThroughLinks) {
    fs::create_directory(Room / "again");
    const ScopedMount again = BindFile(To, Room / "again");
    fs::create_symlink(Outside, Tree / "link");
    PlanToMove({{Tree, Room / "again/tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"link-to-directory-on-move from/tree/link"});
    EXPECT_TRUE(result.bRemovesUnselected);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

TEST_F(PreflightMoveAway, OfADirectoryInAnOverlayMayRemoveThroughLinks) {
    fs::create_directories(Away.Path() / "lower/tree");
    fs::create_symlink(Outside, Away.Path() / "lower/tree/link");
    for (const char* name : {"upper", "work", "merged"}) {
        fs::create_directory(Away.Path() / name);
    }
    const std::string options = "lowerdir=" + (Away.Path() / "lower").string() +
                                ",upperdir=" + (Away.Path() / "upper").string() +
                                ",workdir=" + (Away.Path() / "work").string() + ",redirect_dir=off";
    const fs::path merged = Away.Path() / "merged";
    ASSERT_EQ(::mount("overlay", merged.c_str(), "overlay", 0, options.c_str()), 0);
    const ScopedMount overlay(merged);
    PlanToMove({{merged / "tree", merged / "moved"}});
    EXPECT_TRUE(Look().bRemovesUnselected);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

// The parent of the source must not be written to, so the rename fails.
TEST_F(PreflightMove, OutOfAnUnwritableDirectoryRemovesThroughLinks) {
    fs::create_symlink(Outside, Tree / "link");
    for (const fs::path& open : {Tree, Outside, To}) {
        fs::permissions(open, fs::perms::all);
    }
    PlanToMove({{Tree, To / "tree"}});
    const ActingAsNobody nobody;
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), (Strings{"link-to-directory-on-move from/tree/link",
                                        "unwritable-source-directory from, stops"}));
    EXPECT_TRUE(result.bRemovesUnselected);
    EXPECT_EQ(TransferMessage(), "Copied data but could not remove original '" + Tree.string() +
                                     "': Permission denied");
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

TEST_F(PreflightMove, OfAnothersDirectoryOutOfASharedOneRemovesThroughLinks) {
    fs::create_symlink(Outside, Tree / "link");
    for (const fs::path& open : {From, Tree, Outside, To}) {
        fs::permissions(open, fs::perms::all);
    }
    fs::permissions(From, fs::perms::sticky_bit, fs::perm_options::add);
    PlanToMove({{Tree, To / "tree"}});
    const ActingAsNobody nobody;
    EXPECT_TRUE(Look().bRemovesUnselected);
    EXPECT_EQ(TransferMessage(), "Copied data but could not remove original '" + Tree.string() +
                                     "': Operation not permitted");
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

TEST_F(PreflightMoveAway, OfAnAppendOnlyDirectoryRemovesThroughLinks) {
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    const fs::path tree = disk.Path() / "tree";
    fs::create_directory(tree);
    fs::create_symlink(Outside, tree / "link");
    ASSERT_EQ(std::system(("chattr +a " + tree.string()).c_str()), 0);
    PlanToMove({{tree, disk.Path() / "moved"}});
    EXPECT_TRUE(Look().bRemovesUnselected);
    EXPECT_FALSE(Transfer().bSucceeded);
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

// A directory that changes its parent must be writable itself.
TEST_F(PreflightMove, OfAnUnwritableDirectoryRemovesThroughLinks) {
    fs::create_symlink(Outside, Tree / "link");
    for (const fs::path& open : {From, Outside, To}) {
        fs::permissions(open, fs::perms::all);
    }
    PlanToMove({{Tree, To / "tree"}});
    const ActingAsNobody nobody;
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), (Strings{"link-to-directory-on-move from/tree/link",
                                        "unwritable-source-directory from/tree, stops"}));
    EXPECT_TRUE(result.bRemovesUnselected);
    EXPECT_FALSE(Transfer().bSucceeded);
    EXPECT_FALSE(fs::exists(Outside / "file"));
}

} // namespace
