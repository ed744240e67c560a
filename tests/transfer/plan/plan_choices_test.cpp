// What the conflict choices make of a plan.

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

// Names are looked at later, where the whole of a tree is.
TEST_F(PlanChoices, TakenNamesDoNotMatter) {
    WriteFile(Directory / "dest/a.txt", "old");
    fs::create_symlink("nowhere", "dest/b.txt");
    fs::create_directory("dest/tree");
    TransferRequest request = Copy({"a.txt", "b.txt", "tree", "dest"});
    request.OnConflict = FileConflictChoice::Fail;
    request.OnDirectoryConflict = DirectoryConflictChoice::Fail;
    EXPECT_EQ(Ways(request),
              Names({"a.txt -> dest/a.txt", "b.txt -> dest/b.txt", "tree -> dest/tree"}));
}

} // namespace
