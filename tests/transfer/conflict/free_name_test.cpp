#include "free_name.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "temporary_directory.h"

namespace {

class FreeName : public testing::Test {
protected:
    // The name found beside Name, without its directory; "none" when there is none.
    std::string Beside(const std::string& Name) const {
        const auto found = FreeNameBeside(Directory / Name);
        if (!found) {
            return "none";
        }
        EXPECT_EQ(found->parent_path(), Directory.Path());
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(*found)));
        return found->filename().native();
    }

    TemporaryDirectory Directory;
};

TEST_F(FreeName, GoesBetweenNameAndExtension) {
    EXPECT_EQ(Beside("cover.jpg"), "cover-2.jpg");
    EXPECT_EQ(Beside("Track 03.wav"), "Track 03-2.wav");
    EXPECT_EQ(Beside("a.b.c"), "a.b-2.c");
    EXPECT_EQ(Beside("x."), "x-2.");
}

TEST_F(FreeName, GoesToTheEndWithoutAnExtension) {
    EXPECT_EQ(Beside("README"), "README-2");
    EXPECT_EQ(Beside(".profile"), ".profile-2");
}

TEST_F(FreeName, KeepsTheDoubleExtensionOfAnArchive) {
    EXPECT_EQ(Beside("a.tar.gz"), "a-2.tar.gz");
    EXPECT_EQ(Beside(".tar.gz"), ".tar-2.gz");
}

TEST_F(FreeName, DoesNotCountOnFromANumberInTheName) {
    EXPECT_EQ(Beside("2024-03.csv"), "2024-03-2.csv");
}

TEST_F(FreeName, PassesOverTakenNames) {
    WriteFile(Directory / "a-2.txt", "");
    std::filesystem::create_directory(Directory / "a-3.txt");
    EXPECT_EQ(Beside("a.txt"), "a-4.txt");
}

TEST_F(FreeName, PassesOverALinkToNothing) {
    std::filesystem::create_symlink("nowhere", Directory / "a-2.txt");
    EXPECT_EQ(Beside("a.txt"), "a-3.txt");
}

TEST_F(FreeName, KeepsBytesThatAreNotText) {
    EXPECT_EQ(Beside("\xff\n[b].\xfe"), "\xff\n[b]-2.\xfe");
}

TEST_F(FreeName, ShortensANameOfTheGreatestLength) {
    EXPECT_EQ(Beside(std::string(251, 'n') + ".jpg"), std::string(249, 'n') + "-2.jpg");
    EXPECT_EQ(Beside(std::string(255, 'n')), std::string(253, 'n') + "-2");
}

TEST_F(FreeName, ShortensBetweenCharacters) {
    // 127 letters of two bytes; one byte of room is left over.
    std::string name;
    for (int count = 0; count < 127; ++count) {
        name += "\xc3\xa9";
    }
    EXPECT_EQ(Beside(name + "x"), name.substr(0, 252) + "-2");
}

TEST_F(FreeName, GivesUpAnExtensionThatLeavesNoRoom) {
    EXPECT_EQ(Beside("a." + std::string(253, 'e')), "a-2");
}

TEST_F(FreeName, IsNoneInADirectoryThatCannotBeLookedInto) {
    EXPECT_EQ(FreeNameBeside(Directory / std::string(5000, 'd') / "a.txt"), std::nullopt);
}

TEST_F(FreeName, IsNoneWhenAllAreTaken) {
    for (int number = 2; number <= 999; ++number) {
        std::filesystem::create_symlink("x", Directory / ("a-" + std::to_string(number)));
    }
    EXPECT_EQ(Beside("a"), "none");
}

} // namespace
