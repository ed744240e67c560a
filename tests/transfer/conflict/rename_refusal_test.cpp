#include "free_name.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "mounts.h"
#include "temporary_directory.h"

namespace {

class RenameCheck : public testing::Test {
protected:
    TemporaryDirectory Directory;
};

TEST_F(RenameCheck, AcceptsAFreeName) {
    EXPECT_EQ(RenameRefusal(Directory / "new.txt"), "");
}

TEST_F(RenameCheck, AcceptsMissingDirectoriesBecauseTheyAreMade) {
    EXPECT_EQ(RenameRefusal(Directory / "new/er/a.txt"), "");
}

TEST_F(RenameCheck, RefusesATakenName) {
    WriteFile(Directory / "a.txt", "");
    EXPECT_EQ(RenameRefusal(Directory / "a.txt"), "That name exists already.");
    EXPECT_EQ(RenameRefusal(Directory.Path()), "That name exists already.");
}

TEST_F(RenameCheck, RefusesALinkThatLeadsNowhere) {
    std::filesystem::create_symlink("nowhere", Directory / "link");
    EXPECT_EQ(RenameRefusal(Directory / "link"), "That name exists already.");
}

TEST_F(RenameCheck, RefusesATrailingSlash) {
    EXPECT_EQ(RenameRefusal(Directory / "new/"), "A name cannot end with '/'.");
}

TEST_F(RenameCheck, RefusesANameThatIsTooLong) {
    EXPECT_EQ(RenameRefusal(Directory / std::string(256, 'n')), "That name is too long.");
}

TEST_F(RenameCheck, RefusesANameInsideAFile) {
    WriteFile(Directory / "a.txt", "");
    EXPECT_EQ(RenameRefusal(Directory / "a.txt/new"), "That would be inside a file.");
}

// The engine makes "new" first, and then the name leads to what stands there.
TEST_F(RenameCheck, RefusesAWayOutOfAMissingDirectory) {
    WriteFile(Directory / "a.txt", "");
    const std::string refusal = "'..' cannot follow a directory that does not exist.";
    EXPECT_EQ(RenameRefusal(Directory / "new/../a.txt"), refusal);
    EXPECT_EQ(RenameRefusal(Directory / "new/er/../../b.txt"), refusal);
    EXPECT_EQ(RenameRefusal(Directory / "new/.."), refusal);
    EXPECT_EQ(RenameRefusal(Directory / "new/../.."), refusal);
    EXPECT_EQ(RenameRefusal(Directory / "new/."), "A name cannot be '.'.");
    std::filesystem::create_directory(Directory / "inner");
    EXPECT_EQ(RenameRefusal(Directory / "inner/../a.txt"), "That name exists already.");
    EXPECT_EQ(RenameRefusal(Directory / "inner/../b.txt"), "");
    EXPECT_EQ(RenameRefusal(Directory / "inner/../new/./b.txt"), "");
}

TEST_F(RenameCheck, RefusesADirectoryThatCannotBeLookedThrough) {
    std::filesystem::create_symlink("loop", Directory / "loop");
    EXPECT_EQ(RenameRefusal(Directory / "loop/new"),
              "That directory cannot be used: Too many levels of symbolic links.");
}

TEST_F(RenameCheck, RefusesADirectoryThatTakesNoFiles) {
    const ActingAsNobody nobody;
    EXPECT_EQ(RenameRefusal(Directory / "missing/new"),
              "Nothing can be created in that directory: Permission denied.");
}

} // namespace
