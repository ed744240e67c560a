// What of a command line is for the panes: no words at all, or places to show.

#include <filesystem>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "parsed_command_line.h"
#include "temporary_directory.h"

namespace {

namespace fs = std::filesystem;

// In a directory of their own.
class PanesCommandLine : public testing::Test {
protected:
    void SetUp() override {
        Before = fs::current_path();
        fs::current_path(Root.Path());
        fs::create_directory("music");
        fs::create_directory("backup");
        WriteFile(Root / "file", "data");
    }
    void TearDown() override { fs::current_path(Before); }

    TemporaryDirectory Root;
    fs::path Before;
};

TEST_F(PanesCommandLine, NoWordsShowTheWorkingDirectoryTwice) {
    EXPECT_EQ(Panes({}), Words({".", "."}));
}

TEST_F(PanesCommandLine, OneOrTwoDirectoriesAreShown) {
    EXPECT_EQ(Panes({"music"}), Words({"music", "."}));
    EXPECT_EQ(Panes({"music", "backup/"}), Words({"music", "backup/"}));
    EXPECT_EQ(Panes({".", ".."}), Words({".", ".."}));
    EXPECT_EQ(Panes({"/", (Root / "music").native()}), Words({"/", (Root / "music").native()}));
}

TEST_F(PanesCommandLine, DiscsArePlacesWithoutALook) {
    EXPECT_EQ(Panes({"cdda:/dev/sr0"}), Words({"cdda:/dev/sr0", "."}));
    EXPECT_EQ(Panes({"music", "cdda:/nowhere"}), Words({"music", "cdda:/nowhere"}));
}

TEST_F(PanesCommandLine, LinksToDirectoriesAreDirectories) {
    fs::create_directory_symlink("music", "link");
    EXPECT_EQ(Panes({"link"}), Words({"link", "."}));
}

TEST_F(PanesCommandLine, PlacesKeepTheirBytes) {
    for (const char* name : {"new\nline", "\xff\xfe", " ", "日本", "[z]"}) {
        fs::create_directory(name);
        EXPECT_EQ(Panes({name, name}), Words({name, name}));
    }
}

TEST_F(PanesCommandLine, AThirdPlaceIsTooMany) {
    EXPECT_EQ(Mistakes({"music", "backup", "music"}), Words({"extra operand 'music'"}));
    EXPECT_EQ(Mistakes({"./nothing", "file", "music", "."}), Words({"extra operand 'music'"}));
}

TEST_F(PanesCommandLine, EachPlaceThatCannotBeShownIsNamed) {
    EXPECT_EQ(Mistakes({"./nothing"}),
              Words({"cannot show './nothing': No such file or directory"}));
    EXPECT_EQ(Mistakes({"music", "file"}), Words({"cannot show 'file': Not a directory"}));
    EXPECT_EQ(Mistakes({"./nothing", "./file"}),
              Words({"cannot show './nothing': No such file or directory",
                     "cannot show './file': Not a directory"}));
    EXPECT_EQ(Mistakes({"music", ""}), Words({"cannot show '': No such file or directory"}));
    EXPECT_EQ(Mistakes({"file/below"}), Words({"cannot show 'file/below': Not a directory"}));
}

TEST_F(PanesCommandLine, CommandsComeBeforeDirectoriesOfTheirNames) {
    for (const char* command : {"copy", "move", "tracks", "help"}) {
        fs::create_directory(command);
        EXPECT_FALSE(std::holds_alternative<PanesRequest>(Parse({command}))) << command;
        const std::string path = std::string("./") + command;
        EXPECT_EQ(Panes({path}), Words({path, "."}));
        EXPECT_EQ(Panes({"music", command}), Words({"music", command}));
    }
}

TEST_F(PanesCommandLine, AnyOtherFirstWordIsAMistypedCommand) {
    EXPECT_EQ(Mistake({"file"}),
              "unknown command 'file'; the commands are copy, move, tracks and help");
    EXPECT_EQ(Mistake({"mov", "music"}), "unknown command 'mov'; did you mean 'move'?");
    EXPECT_EQ(Mistake({""}), "unknown command ''; the commands are copy, move, tracks and help");
    fs::create_directory("mov");
    EXPECT_EQ(Panes({"mov", "music"}), Words({"mov", "music"}));
}

TEST_F(PanesCommandLine, OptionsAreNoPlaces) {
    fs::create_directory("-x");
    EXPECT_EQ(Mistake({"-x"}), "unrecognized option '-x' before the command");
    EXPECT_EQ(Mistake({"-x", "music"}), "unrecognized option '-x' before the command");
    EXPECT_EQ(Panes({"./-x", "-x"}), Words({"./-x", "-x"}));
    EXPECT_TRUE(std::holds_alternative<InformationText>(Parse({"--help", "music"})));
}

} // namespace
