// What the panes of the real program do to entries: make, rename, delete, view, edit.

#include "panes_on_terminal.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

class PanesToWorkWith : public PanesOnTerminal {
protected:
    PanesToWorkWith() {
        WriteFile(Root / "here/apple.txt", "apple");
        WriteFile(Root / "here/bread.txt", "bread");
        fs::create_directory(Root / "there");
    }

    void StartHere(const Environment& Added = {}) {
        StartPanes({"here", "there"}, Added);
        ASSERT_TRUE(Shows(Pane::Left, {" /..", "  apple.txt", "  bread.txt"}));
    }
    void GoTo(const std::string& Name, const std::string& Shown) {
        Program->Type("/" + Name + "\r");
        ASSERT_TRUE(IsOn(Pane::Left, Shown));
    }
    void GoTo(const std::string& Name) { GoTo(Name, Name); }

    std::string Script(const std::string& Name, const std::string& Text) const {
        WriteFile(Root / Name, "#!/bin/sh\n" + Text);
        fs::permissions(Root / Name, fs::perms::owner_all);
        return PathOf(Name);
    }

    Tree Here() const { return TreeOf(Root / "here"); }

    const Tree kAtFirst{{"apple.txt", "file apple"}, {"bread.txt", "file bread"}};
};

TEST_F(PanesToWorkWith, F7MakesADirectoryAndGoesToIt) {
    StartHere();
    Program->Type(kF7);
    ASSERT_TRUE(Program->ShowsText("Make directory"));
    Program->Type("new one\r");
    ASSERT_TRUE(IsOn(Pane::Left, "/new one"));
    EXPECT_TRUE(Shows(Pane::Left, {" /..", " /new one", "  apple.txt", "  bread.txt"}));
    EXPECT_TRUE(fs::is_directory(Root / "here/new one"));
}

TEST_F(PanesToWorkWith, F7RefusesATakenNameAndEscLeaves) {
    StartHere();
    Program->Type(kF7);
    ASSERT_TRUE(Program->ShowsText("Make directory"));
    Program->Type("apple.txt\r");
    EXPECT_TRUE(Program->ShowsText("That name exists already."));
    Program->Type(kEsc);
    EXPECT_TRUE(Program->ShowsNoText("Make directory"));
    EXPECT_EQ(Here(), kAtFirst);
}

TEST_F(PanesToWorkWith, F2RenamesAndStaysOnTheEntry) {
    StartHere();
    GoTo("apple.txt");
    Program->Type(kF2);
    ASSERT_TRUE(Program->ShowsText("New name:"));
    Program->Type(std::string(kCtrlU) + "zest.txt\r");
    ASSERT_TRUE(IsOn(Pane::Left, "zest.txt"));
    EXPECT_TRUE(Shows(Pane::Left, {" /..", "  bread.txt", "  zest.txt"}));
    EXPECT_EQ(Here(), (Tree{{"bread.txt", "file bread"}, {"zest.txt", "file apple"}}));
}

TEST_F(PanesToWorkWith, F2RefusesTheNameOfAnotherEntry) {
    StartHere();
    GoTo("apple.txt");
    Program->Type(kF2);
    ASSERT_TRUE(Program->ShowsText("New name:"));
    Program->Type(std::string(kCtrlU) + "bread.txt\r");
    EXPECT_TRUE(Program->ShowsText("That name exists already."));
    Program->Type(kEsc);
    EXPECT_TRUE(Program->ShowsNoText("New name:"));
    EXPECT_EQ(Here(), kAtFirst);
}

TEST_F(PanesToWorkWith, F8AsksAndNoStandsFirst) {
    StartHere();
    GoTo("apple.txt");
    Program->Type(kF8);
    ASSERT_TRUE(Program->ShowsText("Delete 'apple.txt'?"));
    Program->Type("\r");
    EXPECT_TRUE(Program->ShowsNoText("Delete 'apple.txt'?"));
    EXPECT_EQ(Here(), kAtFirst);
}

TEST_F(PanesToWorkWith, DeleteDeletesAfterYes) {
    StartHere();
    GoTo("apple.txt");
    Program->Type(kDelete);
    ASSERT_TRUE(Program->ShowsText("Delete 'apple.txt'?"));
    Program->Type("y");
    EXPECT_TRUE(Shows(Pane::Left, {" /..", "  bread.txt"}));
    EXPECT_TRUE(IsOn(Pane::Left, "bread.txt"));
    EXPECT_EQ(Here(), (Tree{{"bread.txt", "file bread"}}));
}

TEST_F(PanesToWorkWith, TakeNoAnswerWhereTheWindowIsTooSmallForTheQuestion) {
    StartHere();
    GoTo("apple.txt");
    Program->Type(kDelete);
    ASSERT_TRUE(Program->ShowsText("Delete 'apple.txt'?"));
    Resize(40, 12);
    ASSERT_TRUE(Program->ShowsScreen("Terminal too small (60x16 needed)\n"));
    Program->Type("y");
    Program->Watch(0.5);
    Resize(80, 24);
    EXPECT_TRUE(Program->ShowsText("Delete 'apple.txt'?"));
    EXPECT_EQ(Here(), kAtFirst);
}

TEST_F(PanesToWorkWith, DeletesAllThatIsMarkedWithWhatIsInIt) {
    WriteFile(Root / "here/full/of/it", "x");
    StartPanes({"here", "there"});
    Program->Type("*");
    ASSERT_TRUE(Shows(Pane::Left, {" /..", "*/full", "* apple.txt", "* bread.txt"}));
    Program->Type(kF8);
    ASSERT_TRUE(Program->ShowsText("Delete 3 entries with all that is in it?"));
    Program->Type("y");
    EXPECT_TRUE(Shows(Pane::Left, {" /.."}));
    EXPECT_EQ(Here(), Tree{});
}

TEST_F(PanesToWorkWith, ALinkToADirectoryGoesAndItsTargetStays) {
    WriteFile(Root / "there/kept", "kept");
    fs::create_directory_symlink("../there", Root / "here/link");
    StartPanes({"here", "there"});
    GoTo("link", "~link");
    Program->Type(kF8);
    ASSERT_TRUE(Program->ShowsText("Delete 'link'?"));
    Program->Type("y");
    EXPECT_TRUE(Shows(Pane::Left, {" /..", "  apple.txt", "  bread.txt"}));
    EXPECT_EQ(Here(), kAtFirst);
    EXPECT_EQ(TreeOf(Root / "there"), (Tree{{"kept", "file kept"}}));
}

// Below: programs that get the terminal.

TEST_F(PanesToWorkWith, F3LendsTheTerminalToThePagerUntilItEnds) {
    const std::string pager = Script("pager", "printf 'viewing %s\\n' \"$1\"; read answer; "
                                              "printf '%s' \"$answer\" > '" +
                                                  PathOf("there/answer") + "'\n");
    StartHere({{"PAGER", pager}});
    GoTo("bread.txt");
    Program->Type(kF3);
    ASSERT_TRUE(Program->ShowsText("viewing " + PathOf("here/bread.txt")));
    // As many frames as anybody might draw meanwhile.
    ASSERT_TRUE(FallsSilent());
    EXPECT_TRUE(SameTerminalSettings(Program->SettingsAtFirst(), Program->Settings()));
    EXPECT_TRUE(Program->DrawsAsAtFirst());
    Program->Type("two\tq words\r");
    ASSERT_TRUE(Shows(Pane::Left, {" /..", "  apple.txt", "  bread.txt"}));
    EXPECT_TRUE(Shows(Pane::Right, {" /..", "  answer"}));
    EXPECT_EQ(ReadFile(Root / "there/answer"), "two\tq words");
    EXPECT_FALSE(SameTerminalSettings(Program->SettingsAtFirst(), Program->Settings()));
    EXPECT_FALSE(Program->DrawsAsAtFirst());
    EXPECT_TRUE(IsOn(Pane::Left, "bread.txt"));
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
    ExpectRestoredTerminal();
}

TEST_F(PanesToWorkWith, ACtrlCInThePagerIsNotForThePanes) {
    StartHere({{"PAGER", Script("pager", "echo viewing; read answer\n")}});
    GoTo("apple.txt");
    Program->Type(kF3);
    ASSERT_TRUE(Program->ShowsText("viewing"));
    Program->Type(kCtrlC);
    ASSERT_TRUE(Shows(Pane::Left, {" /..", "  apple.txt", "  bread.txt"}));
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
    ExpectRestoredTerminal();
}

TEST_F(PanesToWorkWith, SigtermEndsThePagerToo) {
    const std::string pager =
        Script("pager", "trap 'echo ended > \"" + PathOf("there/ended") +
                            "\"; exit' TERM; echo viewing; while :; do read answer; done\n");
    StartHere({{"PAGER", pager}});
    GoTo("apple.txt");
    Program->Type(kF3);
    ASSERT_TRUE(Program->ShowsText("viewing"));
    Program->Signal(SIGTERM);
    EXPECT_TRUE(Program->ExitsWith(128 + SIGTERM));
    EXPECT_EQ(ReadFile(Root / "there/ended"), "ended\n");
    ExpectRestoredTerminal();
}

TEST_F(PanesToWorkWith, F4ShowsWhatTheEditorHasChanged) {
    const std::string editor = Script("editor", "printf '%s' \"$1\" >> \"$2\"\n");
    StartHere({{"EDITOR", editor + " 'and more'"}});
    GoTo("apple.txt");
    Program->Type(kF4);
    EXPECT_TRUE(Program->ShowsText("13 B"));
    EXPECT_EQ(ReadFile(Root / "here/apple.txt"), "appleand more");
    EXPECT_TRUE(IsOn(Pane::Left, "apple.txt"));
}

TEST_F(PanesToWorkWith, F4HandsOnAnyNameWhole) {
    const std::string name = "-a \"b\" 'c'\n$(d); *";
    WriteFile(Root / "here" / name, "old");
    StartPanes({"here", "there"}, {{"EDITOR", Script("editor", "printf new > \"$1\"\n")}});
    Program->Type("/-a\r");
    ASSERT_TRUE(
        Holds("the cursor is on it", [this] { return Footer(Pane::Left).starts_with("-a "); }));
    Program->Type(kF4);
    EXPECT_TRUE(Holds("it is written", [&] { return ReadFile(Root / "here" / name) == "new"; }));
    ASSERT_TRUE(AreRead());
    EXPECT_EQ(Here(),
              (Tree{{"apple.txt", "file apple"}, {"bread.txt", "file bread"}, {name, "file new"}}));
}

TEST_F(PanesToWorkWith, SayThatAPagerCannotBeRun) {
    StartHere({{"PAGER", "here/apple.txt"}});
    GoTo("apple.txt");
    Program->Type(kF3);
    EXPECT_TRUE(Program->ShowsText("'here/apple.txt' cannot be run; the variable PAGER says"));
}

TEST_F(PanesToWorkWith, SayThatAPagerIsNotThere) {
    StartHere({{"PAGER", "no-such-pager"}});
    GoTo("apple.txt");
    Program->Type(kF3);
    ASSERT_TRUE(
        Program->ShowsText("'no-such-pager' cannot be run; the variable PAGER says which one to"));
    Program->Type("\r");
    Program->Type(kDown);
    ASSERT_TRUE(IsOn(Pane::Left, "bread.txt"));
    Program->Type("q");
    EXPECT_TRUE(Program->ExitsWith(0));
    ExpectRestoredTerminal();
}

} // namespace
