// What the conflict choices make of a plan, and what they refuse before anything is touched.

#include "plan_builder.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "plan_fixture.h"

namespace {

namespace fs = std::filesystem;

class PlanChoices : public PlanFixture {};

TEST_F(PlanChoices, EveryPlanAsks) {
    for (const FileConflictChoice choice :
         {FileConflictChoice::Ask, FileConflictChoice::Overwrite, FileConflictChoice::Skip,
          FileConflictChoice::Older, FileConflictChoice::Compare, FileConflictChoice::Larger,
          FileConflictChoice::SizeDiffers, FileConflictChoice::KeepBoth,
          FileConflictChoice::Fail}) {
        TransferRequest request = Copy({"a.txt", "dest"});
        request.OnConflict = choice;
        EXPECT_EQ(Plan(request).ConflictPolicy, TarvaneTransferConflictPolicy::Ask)
            << static_cast<int>(choice);
    }
}

TEST_F(PlanChoices, FailNamesEveryTakenNameBeforeAnythingIsTouched) {
    WriteFile(Directory / "dest/a.txt", "old");
    WriteFile(Directory / "dest/b.txt", "old");
    TransferRequest request = Copy({"tree", "a.txt", "b.txt", "dest"});
    request.OnConflict = FileConflictChoice::Fail;
    EXPECT_EQ(Refusal(request), Names({"failed", "cannot create 'dest/a.txt': File exists",
                                       "cannot create 'dest/b.txt': File exists"}));
}

TEST_F(PlanChoices, FailOnDirectoriesNamesTheTakenDirectory) {
    fs::create_directory("dest/tree");
    TransferRequest request = Copy({"tree", "dest"});
    request.OnDirectoryConflict = DirectoryConflictChoice::Fail;
    EXPECT_EQ(Refusal(request), Names({"failed", "cannot create 'dest/tree': File exists"}));
}

TEST_F(PlanChoices, AFileDoesNotTakeADirectorysPlaceUnasked) {
    TransferRequest request = Copy({"a.txt", "dest"});
    request.bNoTargetDirectory = true;
    request.OnConflict = FileConflictChoice::Overwrite;
    EXPECT_EQ(Refusal(request),
              Names({"failed", "cannot overwrite directory 'dest' with non-directory 'a.txt'"}));
    request.OnConflict = FileConflictChoice::Ask;
    EXPECT_EQ(Ways(request), Names({"a.txt -> dest"}));
}

TEST_F(PlanChoices, ADirectoryDoesNotTakeAFilesPlaceUnasked) {
    TransferRequest request = Copy({"tree", "a.txt"});
    request.OnConflict = FileConflictChoice::Overwrite;
    EXPECT_EQ(Refusal(request),
              Names({"failed", "cannot overwrite non-directory 'a.txt' with directory 'tree'"}));
    request.OnConflict = FileConflictChoice::Ask;
    EXPECT_EQ(Ways(request), Names({"tree -> a.txt"}));
}

} // namespace
