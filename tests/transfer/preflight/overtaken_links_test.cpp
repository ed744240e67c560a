// Links that lead nowhere by the time a move comes to them: the look says what the engine then
// does. Needs root for the mounts.

#include "own_mount_namespace.h"
#include "preflight_fixture.h"

namespace fs = std::filesystem;

namespace {

const Strings kNothing;

// A tree on another file system, which lists names by when they were made, and files that go there.
class OvertakenLinks : public PreflightTest {
protected:
    OvertakenLinks() { fs::create_directory(Tree); }

    static void MakeLink(const fs::path& Target, const fs::path& Link) {
        fs::create_symlink(Target, Link);
    }

    std::string FindingOf(const fs::path& Link) const {
        return "overtaken-link " + Link.lexically_relative(Room.Path()).native() + ", stops";
    }

    static bool IsListedBefore(const fs::path& First, const fs::path& Second) {
        const std::vector<fs::path> listing = ListingOf(First.parent_path());
        return std::ranges::find(listing, First) < std::ranges::find(listing, Second);
    }

    void PlanToMoveAway(const Strings& Names) {
        Items items;
        for (const std::string& name : Names) {
            items.emplace_back(From / name, Away.Path() / name);
        }
        PlanToMove(items);
    }

    const OwnMountNamespace Namespace;
    const ScopedMount Away{MountTmpfs(Room / "away", "size=4m")};
    const fs::path Tree = Away.Path() / "tree";
};

TEST_F(OvertakenLinks, AreThoseThatAreListedBehindTheirTargets) {
    WriteFile(Tree / "a", "x");
    MakeLink("a", Tree / "to-a");
    MakeLink("b", Tree / "to-b");
    WriteFile(Tree / "b", "x");
    const bool bFirst = IsListedBefore(Tree / "a", Tree / "to-a");
    ASSERT_NE(bFirst, IsListedBefore(Tree / "b", Tree / "to-b"));
    const fs::path link = Tree / (bFirst ? "to-a" : "to-b");
    PlanToMove({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), Strings{FindingOf(link)});
    EXPECT_EQ(TransferMessage(), "Source does not exist: " + link.native());
}

TEST_F(OvertakenLinks, MayBeInOtherDirectories) {
    for (const char* const name : {"one", "two"}) {
        WriteFile(Tree / name / "inner/file", "x");
    }
    MakeLink("../two/inner/file", Tree / "one/link");
    MakeLink("../one/inner/file", Tree / "two/link");
    const bool bOneFirst = IsListedBefore(Tree / "one", Tree / "two");
    PlanToMove({{Tree, To / "tree"}});
    EXPECT_EQ(Found(), Strings{FindingOf(Tree / (bOneFirst ? "two/link" : "one/link"))});
}

TEST_F(OvertakenLinks, MayLeadToDirectories) {
    fs::create_directory(Tree / "a");
    MakeLink("a", Tree / "to-a");
    MakeLink("b", Tree / "to-b");
    fs::create_directory(Tree / "b");
    const bool bFirst = IsListedBefore(Tree / "a", Tree / "to-a");
    const fs::path link = Tree / (bFirst ? "to-a" : "to-b");
    PlanToMove({{Tree, To / "tree"}});
    const Strings found = Found();
    EXPECT_EQ(std::ranges::count(found, FindingOf(link)), 1);
    // Both are followed.
    EXPECT_EQ(found.size(), 3U);
    EXPECT_EQ(TransferMessage(), "Source does not exist: " + link.native());
}

TEST_F(OvertakenLinks, FollowTheItemsThatTheyLeadTo) {
    WriteFile(From / "file", "x");
    WriteFile(From / "directory/file", "x");
    MakeLink("file", From / "to-file");
    MakeLink("directory/file", From / "into-directory");
    PlanToMoveAway({"file", "directory", "to-file", "into-directory"});
    EXPECT_EQ(Found(), (Strings{FindingOf(From / "into-directory"), FindingOf(From / "to-file")}));
    EXPECT_EQ(TransferMessage(), "Source does not exist: " + (From / "to-file").native());
}

TEST_F(OvertakenLinks, AreNoneBeforeTheItemsThatTheyLeadTo) {
    WriteFile(From / "file", "x");
    WriteFile(Room / "outside", "x");
    MakeLink("file", From / "to-file");
    MakeLink("../outside", From / "to-outside");
    PlanToMoveAway({"to-file", "file", "to-outside"});
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Moved 3 item(s).");
}

// They stay what they are.
TEST_F(OvertakenLinks, AreNoneWhereTheyAreRenamed) {
    WriteFile(From / "file", "x");
    WriteFile(From / "tree/file", "x");
    MakeLink("file", From / "link");
    MakeLink("../file", From / "tree/link");
    PlanToMove(
        {{From / "file", To / "file"}, {From / "link", To / "link"}, {From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Moved 3 item(s).");
}

TEST_F(OvertakenLinks, MayLeadThroughOtherLinks) {
    WriteFile(Room / "outside", "x");
    MakeLink("../outside", From / "first");
    MakeLink("first", From / "second");
    PlanToMoveAway({"first", "second"});
    EXPECT_EQ(Found(), Strings{FindingOf(From / "second")});
    EXPECT_EQ(TransferMessage(), "Source does not exist: " + (From / "second").native());
}

TEST_F(OvertakenLinks, MayBeNamedThroughOtherPaths) {
    WriteFile(From / "file", "x");
    MakeLink(From / "file", From / "link");
    MakeLink("from", Room / "other");
    PlanToMove({{Room / "other/file", Away.Path() / "file"},
                {Room / "other/../from/link", Away.Path() / "link"}});
    EXPECT_EQ(Found(), Strings{"overtaken-link other/../from/link, stops"});
    EXPECT_EQ(TransferMessage(), "Source does not exist: " + Plan.Items[1].SourcePath.native());
}

TEST_F(OvertakenLinks, AreNoneWhereTheirTargetsMayBeSkipped) {
    WriteFile(From / "file", "x");
    WriteFile(From / "directory/file", "x");
    MakeLink("file", From / "to-file");
    MakeLink("directory/file", From / "into-directory");
    WriteFile(Away.Path() / "file", "taken");
    fs::create_directory(Away.Path() / "directory");
    PlanToMoveAway({"file", "directory", "to-file", "into-directory"});
    const std::string toFile = FindingOf(From / "to-file");
    const std::string intoDirectory = FindingOf(From / "into-directory");
    Rules.ForFiles = FileConflictChoice::Overwrite;
    EXPECT_EQ(Found(), (Strings{intoDirectory, toFile}));
    Rules.ForFiles = FileConflictChoice::KeepBoth;
    EXPECT_EQ(Found(), (Strings{intoDirectory, toFile}));
    Rules.ForFiles = FileConflictChoice::Skip;
    EXPECT_EQ(Found(), (Strings{intoDirectory}));
    Rules.ForDirectories = DirectoryConflictChoice::Skip;
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(OvertakenLinks, AreNoneWhereTheyAreSkippedOrCopied) {
    WriteFile(From / "file", "x");
    MakeLink("file", From / "link");
    PlanToMoveAway({"file", "link"});
    Plan.bMove = false;
    EXPECT_EQ(Found(), kNothing);
    WriteFile(Away.Path() / "link", "taken");
    Rules.ForFiles = FileConflictChoice::Skip;
    Plan.bMove = true;
    EXPECT_EQ(Found(), kNothing);
}

} // namespace
