// Entries made, renamed and deleted from a pane.

#include "entry_commands.h"

#include "fake_drive.h"
#include "mounts.h"
#include "panes_fixture.h"

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class EntryCommandsTest : public PanesFixture {
protected:
    testing::AssertionResult IsDone() {
        return Becomes("the work is done", [&] { return !Entries.IsBusy(); });
    }
    void DeleteAllIn(const std::string& Directory) {
        Panes.Active().GoTo(Root / "from" / Directory);
        ASSERT_TRUE(BothAreRead());
        Press('*');
        Press(FunctionKey(8));
        Press('y');
        ASSERT_TRUE(IsDone());
    }
    // Types it where something is, and takes it.
    void Enter(const std::string& Text) {
        Type(Text);
        Press(KeyCode::Enter);
    }
};

TEST_F(EntryCommandsTest, MakesADirectoryAndPutsTheCursorOnIt) {
    EXPECT_TRUE(Press(FunctionKey(7)));
    EXPECT_EQ(Dialogs(), "Make directory Name: Enter: use it Esc: leave");
    Enter("new");
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_TRUE(Entries.IsBusy());
    EXPECT_EQ(Entries.StatusText(), "Make directory: 0 entries");
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "new<", "a", "b"}));
    EXPECT_EQ(Entries.StatusText(), "");
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_TRUE(fs::is_directory(Root / "from/new"));
}

TEST_F(EntryCommandsTest, PutsTheCursorOnWhatHoldsTheNewName) {
    fs::create_directory(Root / "from/sub");
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "sub", "a<", "b"}));
    Press(FunctionKey(7));
    Enter("sub/new");
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "sub<", "a", "b"}));
    EXPECT_TRUE(fs::is_directory(Root / "from/sub/new"));
    MoveTo("a");
    Press(FunctionKey(2));
    Enter("sub/a");
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "sub<", "b"}));
    EXPECT_EQ(ReadFile(Root / "from/sub/a"), "new a");
}

TEST_F(EntryCommandsTest, ShowsItInTheOtherPaneToo) {
    Press('=');
    ASSERT_TRUE(Shows(Panes.Other(), {"/..<", "a", "b"}));
    Press(FunctionKey(7));
    Enter("new");
    EXPECT_TRUE(Shows(Panes.Other(), {"/..<", "new", "a", "b"}));
}

TEST_F(EntryCommandsTest, RefusesNamesThatCannotBe) {
    Press(FunctionKey(7));
    Enter("");
    EXPECT_EQ(Dialogs(), "Make directory Name: A name is needed. Enter: use it Esc: leave");
    Enter("a");
    EXPECT_EQ(Dialogs(),
              "Make directory Name: a That name exists already. Enter: use it Esc: leave");
    EXPECT_FALSE(Entries.IsBusy());
    Press(KeyCode::Escape);
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_FALSE(Entries.IsBusy());
}

TEST_F(EntryCommandsTest, RenamesAndKeepsTheCursorOnTheEntry) {
    EXPECT_TRUE(Press('R'));
    EXPECT_EQ(Dialogs(), "Rename New name: a Enter: use it Esc: leave");
    Enter("z");
    EXPECT_EQ(Entries.StatusText(), "Rename: 0 entries");
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "b", "z<"}));
    EXPECT_EQ(ReadFile(Root / "from/z"), "new a");
}

TEST_F(EntryCommandsTest, LeavesANameThatStaysAlone) {
    Press(FunctionKey(2));
    Press(KeyCode::Enter);
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_FALSE(Entries.IsBusy());
    Press(FunctionKey(2));
    Enter("b");
    EXPECT_EQ(Dialogs(), "Rename New name: b That name exists already. Enter: use it Esc: leave");
}

TEST_F(EntryCommandsTest, SaysWhyAnEntryCouldNotBeRenamed) {
    Press(FunctionKey(2));
    fs::remove(Root / "from/a");
    Enter("z");
    ASSERT_TRUE(IsDone());
    EXPECT_EQ(Dialogs(), "Rename cannot rename 'ROOT/from/a' to 'ROOT/from/z': No such file or "
                         "directory [ Close ]");
    Press(KeyCode::Enter);
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_TRUE(Shows(Panes.Active(), {"/..", "b<"}));
}

TEST_F(EntryCommandsTest, DeletesOnlyWithAYes) {
    for (const KeyCode no : {KeyCode::Enter, KeyCode::Escape}) {
        EXPECT_TRUE(Press(KeyCode::Delete));
        EXPECT_EQ(Dialogs(), "Delete Delete 'a'? [ Yes ] [ No ]");
        Press(no);
        EXPECT_TRUE(Stack.IsEmpty());
        EXPECT_FALSE(Entries.IsBusy());
    }
    EXPECT_TRUE(fs::exists(Root / "from/a"));
    Press(FunctionKey(8));
    Press('y');
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "b<"}));
    EXPECT_TRUE(Stack.IsEmpty());
}

TEST_F(EntryCommandsTest, SaysWhatIsDeleted) {
    WriteFile(Root / "from/sub/inside", "");
    fs::create_directory_symlink("sub", Root / "from/link");
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "link", "sub", "a<", "b"}));
    const auto asked = [&] {
        Press(FunctionKey(8));
        const std::string words = Dialogs();
        Press(KeyCode::Escape);
        return words;
    };
    MoveTo("sub");
    EXPECT_EQ(asked(), "Delete Delete 'sub' with all that is in it? [ Yes ] [ No ]");
    MoveTo("link");
    EXPECT_EQ(asked(), "Delete Delete 'link'? [ Yes ] [ No ]");
    Press(' ');
    EXPECT_EQ(asked(), "Delete Delete 'link'? [ Yes ] [ No ]");
    MoveTo("link");
    Press(' ');
    MoveTo("a");
    Press(' ');
    Press(' ');
    EXPECT_EQ(asked(), "Delete Delete 2 entries? [ Yes ] [ No ]");
    MoveTo("sub");
    Press(' ');
    EXPECT_EQ(asked(), "Delete Delete 3 entries with all that is in it? [ Yes ] [ No ]");
    Press(FunctionKey(8));
    Press('y');
    EXPECT_EQ(Entries.StatusText().substr(0, 8), "Delete: ");
    EXPECT_TRUE(Shows(Panes.Active(), {"/..", "link<"}));
}

// Needs root for the mount.
TEST_F(EntryCommandsTest, SaysWhatCouldNotBeDeletedAndHowMuchMore) {
    EnterPrivateMountNamespace();
    std::string lines;
    for (int i = 10; i < 22; ++i) {
        const std::string name = "full/" + std::to_string(i);
        WriteFile(Root / "from" / name, "");
        lines += i < 20 ? "cannot delete 'ROOT/from/" + name + "': Read-only file system " : "";
    }
    const ScopedMount mount = BindReadOnly(Root / "from/full", Root / "from/full");
    DeleteAllIn("full");
    EXPECT_EQ(Dialogs(), "Delete " + lines + "and 2 more [ Close ]");
}

// Needs root for the mount.
TEST_F(EntryCommandsTest, TakesNoKeyForWhatItSaysUnasked) {
    EnterPrivateMountNamespace();
    WriteFile(Root / "from/full/file", "");
    const ScopedMount mount = BindReadOnly(Root / "from/full", Root / "from/full");
    DeleteAllIn("full");
    ASSERT_FALSE(Stack.IsEmpty());
    Stack.TakeKey({.Code = KeyCode::Text, .Text = "c"}, Now);
    EXPECT_FALSE(Stack.IsEmpty());
    Press('c');
    EXPECT_TRUE(Stack.IsEmpty());
}

TEST_F(EntryCommandsTest, EndsADeletionWhereItIs) {
    constexpr int kMany = 20000;
    for (int i = 0; i < kMany; ++i) {
        WriteFile(Root / "from/many" / std::to_string(i), "");
    }
    Panes.Active().GoTo(Root / "from", "many");
    ASSERT_TRUE(BothAreRead());
    Press(FunctionKey(8));
    Press('y');
    ASSERT_TRUE(Entries.IsBusy());
    EXPECT_TRUE(Press(KeyCode::Escape));
    EXPECT_FALSE(Entries.IsBusy());
    const std::size_t left = ListingOf(Root / "from/many").size();
    EXPECT_GT(left, 0U);
    ASSERT_TRUE(BothAreRead());
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_EQ(ListingOf(Root / "from/many").size(), left);
    EXPECT_FALSE(Press(KeyCode::Escape));
}

TEST_F(EntryCommandsTest, DoesOneThingAtATime) {
    Press(FunctionKey(8));
    Press('y');
    ASSERT_TRUE(Entries.IsBusy());
    for (const int number : {2, 7, 8}) {
        EXPECT_TRUE(Press(FunctionKey(number)));
        EXPECT_TRUE(Stack.IsEmpty()) << number;
    }
    EXPECT_TRUE(IsDone());
}

// On a drive that does not get ready.
TEST_F(EntryCommandsTest, LeadsNobodyAwayFromWhereTheyHaveGoneMeanwhile) {
    ScopedDrive drive(AudioDisc({150}, 40500));
    drive.Before = [](const std::string&) {
        while (true) {
            pause();
        }
    };
    const std::string disc = std::string("cdda:") + kFakeDevice;
    Press(FunctionKey(7));
    Enter("new");
    Panes.Active().GoTo(disc);
    ASSERT_TRUE(IsDone());
    EXPECT_EQ(Panes.Active().Reading(), disc);
    Press(KeyCode::Escape);
    EXPECT_TRUE(Shows(Panes.Active(), {"/..", "new", "a<", "b"}));
}

TEST_F(EntryCommandsTest, LeavesTheCursorOfAnotherPlaceAlone) {
    WriteFile(Root / "to/a", "");
    ASSERT_TRUE(Shows(Panes.Other(), {"/..<", "a"}));
    Press('R');
    Enter("z");
    Press(KeyCode::Tab);
    ASSERT_TRUE(IsDone());
    EXPECT_TRUE(Shows(Panes.Other(), {"/..", "b<", "z"}));
    WriteFile(Root / "to/z", "");
    EXPECT_TRUE(Shows(Panes.Active(), {"/..<", "a", "z"}));
}

TEST_F(EntryCommandsTest, NeedsAnEntry) {
    Press(KeyCode::Home);
    for (const int number : {2, 8}) {
        EXPECT_TRUE(Press(FunctionKey(number)));
        EXPECT_TRUE(Stack.IsEmpty()) << number;
    }
}

TEST_F(EntryCommandsTest, ChangesNothingOnADisc) {
    const ScopedDrive drive(AudioDisc({150}, 40500));
    Panes.Active().GoTo(std::string("cdda:") + kFakeDevice);
    ASSERT_TRUE(BothAreRead());
    MoveTo("Track 01.wav");
    for (const int number : {2, 7, 8}) {
        EXPECT_TRUE(Press(FunctionKey(number)));
        EXPECT_TRUE(Stack.IsEmpty()) << number;
    }
}

} // namespace
