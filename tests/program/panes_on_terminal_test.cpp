// The panes of the real program on a real terminal: going through directories, marks, orders.

#include "mounts.h"
#include "panes_on_terminal.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class PanesToLookAt : public PanesOnTerminal {
protected:
    PanesToLookAt() {
        WriteFile(Root / "Music/Live/encore.flac", std::string(2048, 'e'));
        WriteFile(Root / "Music/apple.txt", std::string(300, 'a'));
        WriteFile(Root / "Music/bread.jpg", std::string(100, 'b'));
        WriteFile(Root / "Music/berry.iso", std::string(200, 'c'));
        WriteFile(Root / "Music/.secret", "s");
        fs::create_directory(Root / "Backup");
        SetModifiedTime(Root / "Music/apple.txt", 1709820309);
        SetModifiedTime(Root / "Music/bread.jpg", 1709820310);
        SetModifiedTime(Root / "Music/berry.iso", 1709820308);
    }

    void StartInMusic() {
        StartPanes({"Music", "Backup"});
        ASSERT_TRUE(Shows(Pane::Left, kMusic));
    }

    const std::vector<std::string> kMusic = {" /..", " /Live", "  apple.txt", "  berry.iso",
                                             "  bread.jpg"};
};

TEST_F(PanesToLookAt, OpenTheTwoPlacesThatAreGiven) {
    StartPanes({"Music", (Root / "Backup").string()});
    EXPECT_TRUE(Shows(Pane::Left, kMusic));
    EXPECT_TRUE(Shows(Pane::Right, {" /.."}));
    EXPECT_TRUE(IsAt(Pane::Left, PathOf("Music")));
    EXPECT_TRUE(IsAt(Pane::Right, PathOf("Backup")));
    EXPECT_EQ(RowText(23, 0, 80),
              "1Help   2Rename 3View   4Edit   5Copy   6Move   7Mkdir  8Delete 9Jobs   10Quit");
}

TEST_F(PanesToLookAt, OpenTheWorkingDirectoryTwiceWithoutArguments) {
    StartPanes();
    EXPECT_TRUE(Shows(Pane::Left, {" /..", " /Backup", " /Music"}));
    EXPECT_TRUE(Shows(Pane::Right, {" /..", " /Backup", " /Music"}));
    EXPECT_TRUE(IsAt(Pane::Left, Root.Path().string()));
    EXPECT_TRUE(IsAt(Pane::Right, Root.Path().string()));
}

TEST_F(PanesToLookAt, OpenTheWorkingDirectoryBesideASinglePlace) {
    StartPanes({"Music"});
    EXPECT_TRUE(IsAt(Pane::Left, PathOf("Music")));
    EXPECT_TRUE(IsAt(Pane::Right, Root.Path().string()));
}

TEST_F(PanesToLookAt, EnterADirectoryAndComeBackToIt) {
    StartPanes();
    Program->Type(kDown);
    Program->Type(kDown);
    ASSERT_TRUE(IsOn(Pane::Left, "/Music"));
    Program->Type("\r");
    ASSERT_TRUE(Shows(Pane::Left, kMusic));
    ASSERT_TRUE(IsOn(Pane::Left, "/.."));
    Program->Type(kDown);
    ASSERT_TRUE(IsOn(Pane::Left, "/Live"));
    Program->Type("\r");
    ASSERT_TRUE(Shows(Pane::Left, {" /..", "  encore.flac"}));
    Program->Type(kBackspace);
    ASSERT_TRUE(IsOn(Pane::Left, "/Live"));
    EXPECT_TRUE(Shows(Pane::Left, kMusic));
    Program->Type(kHome);
    ASSERT_TRUE(IsOn(Pane::Left, "/.."));
    Program->Type("\r");
    EXPECT_TRUE(IsOn(Pane::Left, "/Music"));
    EXPECT_TRUE(Shows(Pane::Right, {" /..", " /Backup", " /Music"}));
}

TEST_F(PanesToLookAt, TabGivesTheKeysToTheOtherPane) {
    StartPanes();
    Program->Type(std::string("\t") + kDown);
    ASSERT_TRUE(IsOn(Pane::Right, "/Backup"));
    EXPECT_TRUE(IsOn(Pane::Left, "/.."));
    Program->Type(std::string("\t") + kEnd);
    ASSERT_TRUE(IsOn(Pane::Left, "/Music"));
    EXPECT_TRUE(IsOn(Pane::Right, "/Backup"));
}

TEST_F(PanesToLookAt, SpaceAndInsertMarkAndGoDown) {
    StartInMusic();
    Program->Type(std::string(kDown) + " " + kInsert);
    ASSERT_TRUE(IsOn(Pane::Left, "berry.iso"));
    EXPECT_TRUE(Shows(Pane::Left, {" /..", "*/Live", "* apple.txt", "  berry.iso", "  bread.jpg"}));
    EXPECT_TRUE(Program->ShowsText(" Marked 2: 300 B and 1 directory "));
    Program->Type(std::string(kUp) + " ");
    EXPECT_TRUE(Program->ShowsText(" Marked 1 directory "));
}

TEST_F(PanesToLookAt, AsteriskInvertsTheMarks) {
    StartInMusic();
    Program->Type(std::string(kDown) + " *");
    ASSERT_TRUE(Shows(Pane::Left, {" /..", " /Live", "* apple.txt", "* berry.iso", "* bread.jpg"}));
    EXPECT_TRUE(Program->ShowsText(" Marked 3: 600 B "));
}

TEST_F(PanesToLookAt, PlusAndMinusMarkWhatAPatternMatches) {
    StartInMusic();
    Program->Type("+");
    ASSERT_TRUE(Program->ShowsText("Enter: use it"));
    Program->Type(std::string(kCtrlU) + "b*\r");
    ASSERT_TRUE(Shows(Pane::Left, {" /..", " /Live", "  apple.txt", "* berry.iso", "* bread.jpg"}));
    EXPECT_TRUE(Program->ShowsText(" Marked 2: 300 B "));
    Program->Type("-");
    ASSERT_TRUE(Program->ShowsText("Enter: use it"));
    Program->Type(std::string(kCtrlU) + "*.iso\r");
    EXPECT_TRUE(Program->ShowsText(" Marked 1: 100 B "));
}

TEST_F(PanesToLookAt, QuickSearchGoesToWhatBeginsSo) {
    StartInMusic();
    Program->Type("/B");
    ASSERT_TRUE(Program->ShowsText("Find: B"));
    Program->Type("r");
    ASSERT_TRUE(Program->ShowsText("Find: Br"));
    Program->Type(kEsc);
    ASSERT_TRUE(IsOn(Pane::Left, "bread.jpg"));
    Program->Type("/b");
    ASSERT_TRUE(Program->ShowsText("Find: b"));
    Program->Type(kDown);
    // No entry goes on so.
    Program->Type("x");
    Program->Type(kEsc);
    EXPECT_TRUE(IsOn(Pane::Left, "berry.iso"));
}

TEST_F(PanesToLookAt, SGoesThroughTheOrders) {
    StartInMusic();
    Program->Type("s");
    EXPECT_TRUE(Program->ShowsText("Extension ↑"));
    EXPECT_TRUE(Shows(Pane::Left, {" /..", " /Live", "  berry.iso", "  bread.jpg", "  apple.txt"}));
    Program->Type("s");
    EXPECT_TRUE(Program->ShowsText("Size ↓"));
    EXPECT_TRUE(Shows(Pane::Left, {" /..", " /Live", "  apple.txt", "  berry.iso", "  bread.jpg"}));
    Program->Type("s");
    EXPECT_TRUE(Program->ShowsText("Date ↓"));
    EXPECT_TRUE(Shows(Pane::Left, {" /..", " /Live", "  bread.jpg", "  apple.txt", "  berry.iso"}));
    Program->Type("S");
    EXPECT_TRUE(Program->ShowsText("Date ↑"));
    EXPECT_TRUE(Shows(Pane::Left, {" /..", " /Live", "  berry.iso", "  apple.txt", "  bread.jpg"}));
    Program->Type("s");
    EXPECT_TRUE(Shows(Pane::Left, kMusic));
}

TEST_F(PanesToLookAt, ADotShowsAndHidesHiddenEntries) {
    StartInMusic();
    Program->Type(".");
    EXPECT_TRUE(Shows(
        Pane::Left, {" /..", " /Live", "  .secret", "  apple.txt", "  berry.iso", "  bread.jpg"}));
    Program->Type(".");
    EXPECT_TRUE(Shows(Pane::Left, kMusic));
}

TEST_F(PanesToLookAt, EqualsShowsThePlaceInTheOtherPaneToo) {
    StartInMusic();
    Program->Type("=");
    EXPECT_TRUE(Shows(Pane::Right, kMusic));
    EXPECT_TRUE(IsAt(Pane::Right, PathOf("Music")));
    EXPECT_TRUE(IsAt(Pane::Left, PathOf("Music")));
}

TEST_F(PanesToLookAt, CtrlUSwapsThePanesAndKeepsTheKeys) {
    StartInMusic();
    Program->Type(kCtrlU);
    ASSERT_TRUE(Shows(Pane::Right, kMusic));
    EXPECT_TRUE(IsAt(Pane::Left, PathOf("Backup")));
    EXPECT_TRUE(IsAt(Pane::Right, PathOf("Music")));
    Program->Type(kDown);
    EXPECT_TRUE(IsOn(Pane::Right, "/Live"));
}

TEST_F(PanesToLookAt, WhatSomebodyElseMakesAppearsByItself) {
    StartInMusic();
    Program->Type(std::string(kEnd) + kUp);
    ASSERT_TRUE(IsOn(Pane::Left, "berry.iso"));
    WriteFile(Root / "Music/aaa", "new");
    EXPECT_TRUE(Shows(Pane::Left,
                      {" /..", " /Live", "  aaa", "  apple.txt", "  berry.iso", "  bread.jpg"}));
    EXPECT_TRUE(IsOn(Pane::Left, "berry.iso"));
    fs::remove(Root / "Music/aaa");
    EXPECT_TRUE(Shows(Pane::Left, kMusic));
}

TEST_F(PanesToLookAt, ARemovedDirectoryGivesWayToTheNearestAboveIt) {
    fs::create_directories(Root / "Backup/old/older");
    StartPanes(WideSetting({"Backup/old/older", "Music"}));
    fs::remove_all(Root / "Backup/old");
    EXPECT_TRUE(Program->ShowsText("│ '" + PathOf("Backup/old/older") + "' is no longer there. "));
    EXPECT_TRUE(IsAt(Pane::Left, PathOf("Backup")));
    EXPECT_TRUE(Shows(Pane::Left, {" /.."}));
    EXPECT_TRUE(IsAt(Pane::Right, PathOf("Music")));
}

TEST_F(PanesToLookAt, AnUnreadableDirectoryIsASentenceAndNobodyMoves) {
    fs::create_directory(Root / "Locked");
    fs::permissions(Root / "Locked", fs::perms::none);
    // Wherever it was built, nobody else may be let in.
    fs::copy_file(TARVANE_PROGRAM, Root / "program");
    ProgramInTerminal::Setting setting = WideSetting({});
    setting.Command = {PathOf("program")};
    {
        std::optional<ActingAsNobody> nobody;
        if (geteuid() == 0) {
            nobody.emplace();
        }
        StartPanes(setting);
    }
    Program->Type("/Lock\r");
    ASSERT_TRUE(IsOn(Pane::Left, "/Locked"));
    Program->Type("\r");
    EXPECT_TRUE(
        Program->ShowsText("│ Cannot read '" + PathOf("Locked") + "': Permission denied. "));
    EXPECT_TRUE(IsAt(Pane::Left, Root.Path().string()));
    EXPECT_TRUE(Shows(Pane::Left, {" /..", " /Backup", " /Locked", " /Music", "  program"}));
}

TEST_F(PanesToLookAt, AHundredThousandEntriesAnswer) {
    EnterPrivateMountNamespace();
    const ScopedMount memory = MountTmpfs(Root / "many", "nr_inodes=200k");
    for (int i = 100000; i < 200000; ++i) {
        std::ofstream file(memory.Path() / ("entry-" + std::to_string(i)));
    }
    StartPanes({"many", "Backup"});
    Program->Type(kEnd);
    ASSERT_TRUE(IsOn(Pane::Left, "entry-199999"));
    EXPECT_EQ(NamesIn(Pane::Left).size(), 17U);
    // A page of 17 rows, one of which stays in sight.
    Program->Type(kPageUp);
    ASSERT_TRUE(IsOn(Pane::Left, "entry-199983"));
    Program->Type("/entry-15\r");
    EXPECT_TRUE(IsOn(Pane::Left, "entry-150000"));
    Program->Type("*");
    EXPECT_TRUE(Program->ShowsText(" Marked 100000: 0 B "));
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
}

} // namespace
