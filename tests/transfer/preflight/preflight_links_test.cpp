// Links to directories, which the engine's copy follows and its count does not.

#include "preflight_fixture.h"

namespace fs = std::filesystem;

namespace {

class PreflightLinks : public PreflightTest {
protected:
    PreflightLinks() {
        fs::create_directory(Tree);
        WriteFile(Outside / "file", "0123456789");
        WriteFile(Outside / "sub/file", std::string(20, 'b'));
    }

    // The kernel follows 40 links in a path. Those that it has followed when something is mounted,
    // by whomever, it follows and counts again: then it may refuse what it has just found, and the
    // copy ends at another call, with that call's message.
    bool CopyStops() { return !Transfer().bSucceeded; }

    const fs::path Tree = From / "tree";
    const fs::path Outside = Room / "outside";
};

TEST_F(PreflightLinks, AreFollowedByTheCopyAndNotByTheCount) {
    fs::create_symlink(Outside, Tree / "link");
    PlanToCopy({{Tree, To / "tree"}});
    const PreflightResult result = Look();
    const TarvaneTransferUiSnapshot done = Transfer();
    EXPECT_EQ(InWords(result), Strings{"link-to-directory from/tree/link"});
    EXPECT_FALSE(result.bRemovesUnselected);
    EXPECT_EQ(result.Entries, 2U);
    EXPECT_EQ(result.Bytes, 0U);
    EXPECT_EQ(result.Entries, done.TotalItems);
    EXPECT_EQ(result.Bytes, done.TotalBytes);
    EXPECT_EQ(result.CopiedEntries, 5U);
    EXPECT_EQ(result.CopiedBytes, 30U);
    EXPECT_EQ(result.CopiedEntries, done.DoneItems);
    EXPECT_EQ(result.CopiedBytes, done.DoneBytes);
}

// Of the directories that are there already, sub alone is in no total: a link leads to it.
TEST_F(PreflightLinks, HaveBehindThemDirectoriesThatAreMergedIntoAndNotCounted) {
    fs::create_symlink(Outside, Tree / "link");
    PlanToCopy({{Tree, To / "tree"}});
    ASSERT_TRUE(Transfer().bSucceeded);
    const PreflightResult result = Look();
    EXPECT_EQ(result.Entries, 2U);
    EXPECT_EQ(result.Taken.Merged, 3U);
    EXPECT_EQ(result.Taken.MergedBehindLinks, 1U);
}

TEST_F(PreflightLinks, AreFollowedWhenTheyAreItems) {
    fs::create_symlink(Outside, From / "link");
    PlanToCopy({{From / "link", To / "link"}});
    const PreflightResult result = Look();
    const TarvaneTransferUiSnapshot done = Transfer();
    EXPECT_EQ(InWords(result), Strings{"link-to-directory from/link"});
    EXPECT_EQ(result.Entries, 1U);
    EXPECT_EQ(result.Entries, done.TotalItems);
    EXPECT_EQ(result.CopiedEntries, 4U);
    EXPECT_EQ(result.CopiedBytes, done.DoneBytes);
}

TEST_F(PreflightLinks, ToOneDirectoryCountTwiceAndAreWalkedOnce) {
    fs::create_symlink(Outside, Tree / "first");
    fs::create_symlink(Outside, Tree / "second");
    PlanToCopy({{Tree, To / "tree"}});
    const PreflightResult result = Look();
    const TarvaneTransferUiSnapshot done = Transfer();
    EXPECT_EQ(result.CopiedEntries, 9U);
    EXPECT_EQ(result.CopiedEntries, done.DoneItems);
    EXPECT_EQ(result.CopiedBytes, done.DoneBytes);
    EXPECT_EQ(Control.EntriesSeen, 6U);
}

// Eighteen directories with two links each to the next one: a copy makes the last 2^18 times.
TEST_F(PreflightLinks, ThatBranchAtEveryLevelAreLookedThroughInNoTime) {
    // Twice as many would be too many where the system begins a lookup again and counts on.
    for (int level = 0; level < 18; ++level) {
        const fs::path directory = From / std::to_string(level);
        fs::create_directory(directory);
        fs::create_symlink("../" + std::to_string(level + 1), directory / "left");
        fs::create_symlink("../" + std::to_string(level + 1), directory / "right");
    }
    fs::create_directory(From / "18");
    PlanToCopy({{From / "0", To / "0"}});
    const PreflightResult result = Look();
    EXPECT_EQ(result.CopiedEntries, (std::uint64_t{1} << 19U) - 1);
    EXPECT_EQ(Control.EntriesSeen, 37U);
}

TEST_F(PreflightLinks, ThatDangleInAFollowedDirectoryStopTheCopy) {
    fs::create_symlink(Outside, Tree / "link");
    fs::create_symlink("missing", Outside / "sub/dangling");
    PlanToCopy({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), (Strings{"dangling-link from/tree/link/sub/dangling, stops",
                                "link-to-directory from/tree/link"}));
    EXPECT_EQ(TransferMessage(), "Source does not exist: " + (Tree / "link/sub/dangling").string());
}

TEST_F(PreflightLinks, ToTheDirectoryTheyAreInGoRoundInCircles) {
    fs::create_symlink(".", Tree / "self");
    PlanToCopy({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), Strings{"link-cycle from/tree/self, stops"});
    EXPECT_TRUE(CopyStops());
}

TEST_F(PreflightLinks, ToADirectoryFurtherUpGoRoundInCircles) {
    fs::create_directories(Tree / "a/b");
    fs::create_symlink("../..", Tree / "a/b/up");
    PlanToCopy({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), Strings{"link-cycle from/tree/a/b/up, stops"});
    EXPECT_TRUE(CopyStops());
}

TEST_F(PreflightLinks, ToEachOthersDirectoriesGoRoundInCircles) {
    fs::create_directory(Tree / "a");
    fs::create_symlink(Outside, Tree / "a/out");
    fs::create_symlink(Tree / "a", Outside / "back");
    PlanToCopy({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), (Strings{"link-cycle from/tree/a/out/back, stops",
                                "link-to-directory from/tree/a/out"}));
    EXPECT_TRUE(CopyStops());
}

// The link itself leads out of the tree, to a directory that holds the tree once more.
TEST_F(PreflightLinks, ToADirectoryAboveTheSourceGoRoundInCircles) {
    fs::create_symlink("..", Tree / "up");
    PlanToCopy({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), (Strings{"link-cycle from/tree/up/tree/up, stops",
                                "link-to-directory from/tree/up"}));
    EXPECT_TRUE(CopyStops());
}

TEST_F(PreflightLinks, ToADirectoryBesideTheirOwnAreNoCircle) {
    WriteFile(Tree / "a/file", "x");
    fs::create_symlink("a", Tree / "b");
    PlanToCopy({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), Strings{"link-to-directory from/tree/b"});
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

} // namespace
