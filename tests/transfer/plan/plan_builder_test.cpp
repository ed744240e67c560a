#include "plan_builder.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "plan_fixture.h"

namespace {

namespace fs = std::filesystem;

class PlanBuilder : public PlanFixture {};

TEST_F(PlanBuilder, AnExistingDirectoryTakesSourcesUnderTheirOwnNames) {
    EXPECT_EQ(Ways(Copy({"a.txt", "tree", "dest"})),
              Names({"a.txt -> dest/a.txt", "tree -> dest/tree"}));
}

TEST_F(PlanBuilder, OneSourceGetsANameThatDoesNotExist) {
    EXPECT_EQ(Ways(Copy({"a.txt", "new"})), Names({"a.txt -> new"}));
    EXPECT_EQ(Ways(Move({"tree", "new/deep/er"})), Names({"tree -> new/deep/er"}));
}

TEST_F(PlanBuilder, OneSourceMayTakeAFilesName) {
    EXPECT_EQ(Ways(Copy({"a.txt", "b.txt"})), Names({"a.txt -> b.txt"}));
}

TEST_F(PlanBuilder, ALinkToADirectoryTakesSources) {
    fs::create_directory_symlink("dest", "link");
    EXPECT_EQ(Ways(Copy({"a.txt", "link"})), Names({"a.txt -> link/a.txt"}));
}

TEST_F(PlanBuilder, SeveralSourcesNeedAnExistingDirectory) {
    EXPECT_EQ(Refusal(Copy({"a.txt", "tree", "new"})),
              Names({"usage", "target 'new': No such file or directory"}));
    EXPECT_EQ(Refusal(Copy({"a.txt", "tree", "b.txt"})),
              Names({"usage", "target 'b.txt': Not a directory"}));
}

TEST_F(PlanBuilder, TheTargetDirectoryTakesEveryOperand) {
    TransferRequest request = Copy({"a.txt", "b.txt"});
    request.TargetDirectory = "dest";
    EXPECT_EQ(Ways(request), Names({"a.txt -> dest/a.txt", "b.txt -> dest/b.txt"}));
}

TEST_F(PlanBuilder, TheTargetDirectoryHasToExist) {
    TransferRequest request = Copy({"a.txt"});
    request.TargetDirectory = "new";
    EXPECT_EQ(Refusal(request),
              Names({"usage", "target directory 'new': No such file or directory"}));
    request.TargetDirectory = "b.txt";
    EXPECT_EQ(Refusal(request), Names({"usage", "target directory 'b.txt': Not a directory"}));
}

TEST_F(PlanBuilder, WithoutATargetDirectoryTheDestinationIsTheName) {
    TransferRequest request = Copy({"tree", "dest"});
    request.bNoTargetDirectory = true;
    EXPECT_EQ(Ways(request), Names({"tree -> dest"}));
}

TEST_F(PlanBuilder, FillsEveryMemberOfTheItem) {
    const TarvaneTransferPlan plan = Plan(Copy({"tree/", "new"}));
    ASSERT_EQ(plan.Items.size(), 1U);
    EXPECT_EQ(plan.Items[0].Name, "tree");
    EXPECT_EQ(plan.Items[0].SourcePath, Directory / "tree");
    EXPECT_EQ(plan.Items[0].DestinationPath, Directory / "new");
    EXPECT_TRUE(plan.Items[0].bDestinationRenamed);
    EXPECT_TRUE(plan.Items[0].bDirectory);
    EXPECT_EQ(plan.Items[0].ItemCount, 0U);
    EXPECT_EQ(plan.Items[0].ByteCount, 0U);
}

TEST_F(PlanBuilder, ANameThatIsKeptIsNoRename) {
    const TarvaneTransferPlan plan = Plan(Move({"a.txt", "dest/"}));
    ASSERT_EQ(plan.Items.size(), 1U);
    EXPECT_EQ(plan.Items[0].Name, "a.txt");
    EXPECT_FALSE(plan.Items[0].bDestinationRenamed);
    EXPECT_FALSE(plan.Items[0].bDirectory);
    EXPECT_TRUE(plan.bMove);
}

TEST_F(PlanBuilder, ALinkToADirectoryIsADirectory) {
    fs::create_directory_symlink("tree", "link");
    const TarvaneTransferPlan plan = Plan(Copy({"link", "dest"}));
    ASSERT_EQ(plan.Items.size(), 1U);
    EXPECT_TRUE(plan.Items[0].bDirectory);
    EXPECT_EQ(Short(plan.Items[0].SourcePath), "link");
}

TEST_F(PlanBuilder, NamesAreBytes) {
    const Names names{"-n", "new\nline", "[z]", "a,b", "\xff\xfe", " blank "};
    Names ways;
    for (const std::string& name : names) {
        WriteFile(Directory / name, "");
        ways.push_back(std::string(name).append(" -> dest/").append(name));
    }
    TransferRequest request = Copy(names);
    request.TargetDirectory = "dest";
    EXPECT_EQ(Ways(request), ways);
}

TEST_F(PlanBuilder, PathsLoseSuperfluousSlashesAndDots) {
    EXPECT_EQ(Ways(Copy({".//./tree//", "dest/./"})), Names({"tree -> dest/tree"}));
}

TEST_F(PlanBuilder, AParentReferenceStaysBecauseItMayFollowALink) {
    EXPECT_EQ(Ways(Copy({"tree/../a.txt", "tree/../dest"})),
              Names({"tree/../a.txt -> tree/../dest/a.txt"}));
}

TEST_F(PlanBuilder, AbsolutePathsStayWhereTheyAre) {
    EXPECT_EQ(Ways(Copy({(Directory / "a.txt").native(), (Directory / "dest").native()})),
              Names({"a.txt -> dest/a.txt"}));
}

TEST_F(PlanBuilder, ATrailingSlashOnALinkDoesNotSelectTheLinksTargetForAMove) {
    fs::create_directory_symlink("tree", "link");
    EXPECT_EQ(Ways(Move({"link/", "dest"})), Names({"link -> dest/link"}));
}

TEST_F(PlanBuilder, ADirectoryMayGetANewNameWithATrailingSlash) {
    EXPECT_EQ(Ways(Copy({"tree", "new/"})), Names({"tree -> new"}));
}

TEST_F(PlanBuilder, AFileCannotGetANewNameWithATrailingSlash) {
    EXPECT_EQ(Refusal(Copy({"a.txt", "new/"})),
              Names({"usage", "cannot create regular file 'new/': Not a directory"}));
    EXPECT_EQ(Refusal(Copy({"a.txt", "new/."})),
              Names({"usage", "cannot create regular file 'new/.': Not a directory"}));
}

TEST_F(PlanBuilder, ANewNameCannotEndInTheParent) {
    EXPECT_EQ(Refusal(Copy({"tree", "new/.."})),
              Names({"usage", "target 'new/..': No such file or directory"}));
}

TEST_F(PlanBuilder, ContentsOfADirectoryWithoutANameGoIntoTheDestination) {
    EXPECT_EQ(Ways(Copy({"tree/.", "dest"})), Names({"tree -> dest"}));
    EXPECT_EQ(Ways(Copy({"tree/..", "dest"})), Names({"tree/.. -> dest"}));
    EXPECT_EQ(Ways(Copy({"tree/./", "new"})), Names({"tree -> new"}));
    EXPECT_EQ(Plan(Copy({".", "dest"})).Items.front().SourcePath, Directory.Path());
    EXPECT_EQ(Ways(Copy({"//", "dest"})), Names({"/ -> dest"}));
}

TEST_F(PlanBuilder, ADirectoryWithoutANameIsShownByTheOneItHas) {
    const TarvaneTransferPlan plan = Plan(Copy({"tree/.", "dest"}));
    EXPECT_EQ(plan.Items.front().Name, "tree");
    EXPECT_TRUE(plan.Items.front().bDestinationRenamed);
    EXPECT_EQ(Plan(Copy({"/", "dest"})).Items.front().Name, "/");
}

TEST_F(PlanBuilder, ADirectoryWithoutANameCannotBeMoved) {
    EXPECT_EQ(Refusal(Move({".", "dest"})),
              Names({"usage", "cannot move '.': it has no name of its own"}));
    EXPECT_EQ(Refusal(Move({"tree/./", "dest"})),
              Names({"usage", "cannot move 'tree/./': it has no name of its own"}));
    EXPECT_EQ(Refusal(Move({"..", "dest"})),
              Names({"usage", "cannot move '..': it has no name of its own"}));
    EXPECT_EQ(Refusal(Move({"/", "dest"})),
              Names({"usage", "cannot move '/': it has no name of its own"}));
}

TEST_F(PlanBuilder, NamesEveryMissingSource) {
    EXPECT_EQ(Refusal(Copy({"no", "a.txt", "tree/neither", "dest"})),
              Names({"failed", "cannot stat 'no': No such file or directory",
                     "cannot stat 'tree/neither': No such file or directory"}));
}

TEST_F(PlanBuilder, NamesMissingSourcesWhateverIsWrongWithTheDestination) {
    const std::string missing = "cannot stat 'no': No such file or directory";
    EXPECT_EQ(Refusal(Copy({"no", "a.txt", "b.txt"})),
              Names({"usage", missing, "target 'b.txt': Not a directory"}));
    EXPECT_EQ(Refusal(Copy({"no", "new/.."})),
              Names({"usage", missing, "target 'new/..': No such file or directory"}));
    EXPECT_EQ(Refusal(Copy({"no", "b.txt/x"})),
              Names({"failed", "failed to access 'b.txt/x': Not a directory", missing}));
    EXPECT_EQ(Refusal(Copy({"no", "cdda:/dev/sr0/1"})),
              Names({"usage", "cannot write to an audio CD: 'cdda:/dev/sr0/1'", missing}));
    TransferRequest request = Copy({"no"});
    request.TargetDirectory = "new";
    EXPECT_EQ(Refusal(request),
              Names({"usage", missing, "target directory 'new': No such file or directory"}));
}

TEST_F(PlanBuilder, NamesMissingSourcesBesideOthersThatAreWrong) {
    EXPECT_EQ(Refusal(Move({".", "no", "cdda:", "dest"})),
              Names({"usage", "cannot move '.': it has no name of its own",
                     "cannot stat 'no': No such file or directory", "'cdda:' names no drive"}));
    EXPECT_EQ(Refusal(Copy({"a.txt", "no", "./a.txt", "b.txt", "b.txt", "dest"})),
              Names({"usage", "cannot stat 'no': No such file or directory",
                     "source 'a.txt' is given more than once",
                     "source 'b.txt' is given more than once"}));
}

TEST_F(PlanBuilder, SaysOnceWhatIsMissingTwice) {
    EXPECT_EQ(Refusal(Copy({"no", "no", "dest"})),
              Names({"failed", "cannot stat 'no': No such file or directory"}));
}

// The only source is missing, so that nothing says what was to get the name.
TEST_F(PlanBuilder, AMissingSourceMayHaveBeenADirectory) {
    EXPECT_EQ(Refusal(Copy({"no", "new/"})),
              Names({"failed", "cannot stat 'no': No such file or directory"}));
}

TEST_F(PlanBuilder, ASlashBehindAFileNamesNothing) {
    EXPECT_EQ(Refusal(Copy({"a.txt/", "dest"})),
              Names({"failed", "cannot stat 'a.txt/': Not a directory"}));
}

TEST_F(PlanBuilder, ADanglingLinkIsNoSource) {
    fs::create_symlink("nowhere", "link");
    EXPECT_EQ(Refusal(Move({"link", "dest"})),
              Names({"failed", "cannot stat 'link': dangling symbolic link"}));
}

TEST_F(PlanBuilder, ADestinationThatCannotBeReachedIsAFailure) {
    EXPECT_EQ(Refusal(Copy({"a.txt", "b.txt/x"})),
              Names({"failed", "failed to access 'b.txt/x': Not a directory"}));
    fs::create_symlink("loop", "loop");
    EXPECT_EQ(Refusal(Copy({"a.txt", "loop"})),
              Names({"failed", "failed to access 'loop': Too many levels of symbolic links"}));
}

TEST_F(PlanBuilder, TwoSourcesCannotLandOnOneName) {
    WriteFile(Directory / "tree/a.txt", "other");
    EXPECT_EQ(Refusal(Copy({"a.txt", "tree/a.txt", "dest"})),
              Names({"usage", "'a.txt' and 'tree/a.txt' would both become 'dest/a.txt'"}));
}

TEST_F(PlanBuilder, ASourceCannotBeGivenTwice) {
    EXPECT_EQ(Refusal(Copy({"a.txt", "./a.txt", "dest"})),
              Names({"usage", "source 'a.txt' is given more than once"}));
}

TEST_F(PlanBuilder, TheLabelIsTheDirectoryThatTheSourcesComeFrom) {
    EXPECT_EQ(Plan(Copy({"a.txt", "b.txt", "dest"})).SourceLabel, Directory.Path());
    EXPECT_EQ(Plan(Copy({"tree/inner.txt", "dest"})).SourceLabel, Directory / "tree");
    EXPECT_EQ(Plan(Copy({"tree/inner.txt", "a.txt", "dest"})).SourceLabel, Directory.Path());
    EXPECT_EQ(Plan(Copy({"tree/.", "dest"})).SourceLabel, Directory / "tree");
}

TEST_F(PlanBuilder, StaysUsableWithoutACurrentDirectory) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove("../gone");
    EXPECT_EQ(Ways(Copy({(Directory / "a.txt").native(), (Directory / "dest").native()})),
              Names({"a.txt -> dest/a.txt"}));
    fs::current_path(Directory.Path());
}

} // namespace
