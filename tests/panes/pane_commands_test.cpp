// What the keys of the panes stand for beyond the panes themselves. Needs root for a mount.

#include "pane_commands.h"

#include "child_processes.h"
#include "fake_drive.h"
#include "hanging_file_system.h"
#include "panes_fixture.h"

#include <unistd.h>
#include <utility>

namespace {

namespace fs = std::filesystem;

class PaneCommandsTest : public PanesFixture {
protected:
    testing::AssertionResult AllEnd() {
        return Becomes("all transfers are over", [&] { return Runs.CountRunning() == 0; });
    }
    // The disks may take a moment to answer.
    testing::AssertionResult IsPlanned() {
        return Becomes("there is a plan or none", [&] { return !Commands.IsBusy(); });
    }
    // Copies what is under the cursor with what the dialog offers.
    void CopyAsOffered() {
        Press('c');
        Press(KeyCode::Enter);
        EXPECT_TRUE(IsPlanned());
    }
    // A transfer that waits for an answer, out of sight.
    void LeaveOneWaiting(const std::string& Name) {
        WriteFile(Root / "to" / Name, "old");
        MoveTo(Name);
        Press('c');
        Press(KeyCode::Up);
        Press('b');
        ASSERT_TRUE(IsPlanned());
        ASSERT_TRUE(
            Becomes("it waits", [&] { return Runs.All().back().Run->OpenQuestion().has_value(); }));
        ASSERT_TRUE(Stack.IsEmpty());
    }

    const std::string Disc = std::string("cdda:") + kFakeDevice;
};

// A drive that gets ready only when it is told to.
class PlanThatWaits : public PaneCommandsTest {
protected:
    PlanThatWaits() {
        Panes.Active().GoTo(Disc);
        EXPECT_TRUE(BothAreRead());
        MoveTo("Track 01.wav");
        Drive.Before = [this](const std::string&) {
            while (!fs::exists(Root / "ready")) {
                usleep(1000);
            }
        };
        Press('c');
        Press(KeyCode::Enter);
        EXPECT_TRUE(Becomes("the drive is asked", [&] { return Commands.StatusText() == Waits; }));
    }

    ScopedDrive Drive{AudioDisc({150, 225}, 300)};
    const std::string Waits =
        std::string("Waiting for the drive ") + kFakeDevice + ": Esc gives up";
};

TEST_F(PaneCommandsTest, HaveAKeyEach) {
    const std::vector<std::pair<KeyPress, std::string>> commands = {
        {Letter('?'), "Help "},      {FunctionKey(1), "Help "},
        {Letter('R'), "Rename "},    {FunctionKey(2), "Rename "},
        {Letter('c'), "Copy "},      {FunctionKey(5), "Copy "},
        {Letter('m'), "Move "},      {FunctionKey(6), "Move "},
        {Letter('j'), "Jobs "},      {FunctionKey(9), "Jobs "},
        {Letter('+'), "Mark "},      {Letter('-'), "Unmark "},
        {Letter('g'), "Go to "},     {FunctionKey(7), "Make directory "},
        {FunctionKey(8), "Delete "}, {Key(KeyCode::Delete), "Delete "},
    };
    for (const auto& [key, title] : commands) {
        EXPECT_TRUE(Press(key)) << title;
        EXPECT_EQ(Dialogs().substr(0, title.size()), title);
        Press(KeyCode::Escape);
        EXPECT_TRUE(Stack.IsEmpty()) << title;
    }
}

TEST_F(PaneCommandsTest, DoNotKnowAllKeys) {
    for (const KeyPress& key : {Letter('x'), FunctionKey(11), Key(KeyCode::Other),
                                KeyPress{.Code = KeyCode::Alt, .Text = "c"},
                                KeyPress{.Code = KeyCode::Control, .Text = "c"}}) {
        EXPECT_FALSE(Press(key)) << key.Text;
        EXPECT_TRUE(Stack.IsEmpty());
    }
}

TEST_F(PaneCommandsTest, CopyToTheOtherPane) {
    Press(' ');
    Press(' ');
    Press('c');
    EXPECT_EQ(Dialogs().substr(0, 32), "Copy Copy 2 entries to: ROOT/to ");
    Press(KeyCode::Enter);
    ASSERT_TRUE(Says("[ Close ]"));
    EXPECT_EQ(Runs.Find(1)->Run->Outcome().Result, RunResult::Succeeded);
    EXPECT_EQ(TreeOf(Root / "to"), (Tree{{"a", "file new a"}, {"b", "file new b"}}));
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a", "b<"}));
    EXPECT_TRUE(Shows(Panes.Other(), {"/..<", "a", "b"}));
    Press(KeyCode::Enter);
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_EQ(RunsShown.StatusText(), Runs.Find(1)->Run->EndLines().front());
}

TEST_F(PaneCommandsTest, MoveToTheOtherPane) {
    Press('m');
    EXPECT_EQ(Dialogs().substr(0, 26), "Move Move 'a' to: ROOT/to ");
    Press(KeyCode::Enter);
    ASSERT_TRUE(IsPlanned());
    ASSERT_TRUE(AllEnd());
    EXPECT_EQ(TreeOf(Root / "to"), (Tree{{"a", "file new a"}}));
    EXPECT_TRUE(Shows(Panes.Active(), {"/..", "b<"}));
}

TEST_F(PaneCommandsTest, TransferOutOfSightWhenToldTo) {
    Press('c');
    Press(KeyCode::Up);
    Press('b');
    ASSERT_TRUE(IsPlanned());
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_EQ(RunsShown.StatusText(), "1 transfer runs: press j to see");
    EXPECT_TRUE(AllEnd());
    EXPECT_TRUE(Stack.IsEmpty());
}

TEST_F(PaneCommandsTest, TransferNothingWhenNothingIsChosen) {
    Press(KeyCode::Home);
    for (const char letter : {'c', 'm'}) {
        EXPECT_TRUE(Press(letter));
        EXPECT_TRUE(Stack.IsEmpty());
    }
    Press('c');
    MoveTo("a");
    Press('c');
    Press(KeyCode::Escape);
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_TRUE(Runs.All().empty());
}

TEST_F(PaneCommandsTest, SayWhyThereIsNoPlan) {
    for (const auto& [letter, title] : {std::pair('c', "Copy"), std::pair('m', "Move")}) {
        WriteFile(Root / "from/a", "");
        ASSERT_TRUE(Becomes("it is there", [&] { return RowsOf(Panes.Active()).size() == 3; }));
        MoveTo("a");
        Press(letter);
        fs::remove(Root / "from/a");
        Press(KeyCode::Enter);
        ASSERT_TRUE(IsPlanned());
        EXPECT_EQ(Dialogs(), title + std::string(" cannot stat 'ROOT/from/a': No such file or "
                                                 "directory [ Close ]"));
        Press(KeyCode::Enter);
        EXPECT_TRUE(Stack.IsEmpty());
        ASSERT_TRUE(Shows(Panes.Active(), {"/..", "b<"}));
    }
    EXPECT_TRUE(Runs.All().empty());
    EXPECT_FALSE(Commands.IsBusy());
}

TEST_F(PaneCommandsTest, LeaveTheMarksWhereThereIsNoPlan) {
    WriteFile(Root / "to/x", "a file");
    Press(' ');
    Press(' ');
    Press('c');
    Press(KeyCode::End);
    Press('/');
    Press('x');
    Press(KeyCode::Enter);
    ASSERT_TRUE(IsPlanned());
    EXPECT_EQ(Dialogs(), "Copy target 'ROOT/to/x': Not a directory [ Close ]");
    Press(KeyCode::Enter);
    EXPECT_EQ(Panes.Active().List().Marked().Entries, 2U);
    CopyAsOffered();
    ASSERT_TRUE(AllEnd());
    EXPECT_EQ(Panes.Active().List().Marked().Entries, 0U);
}

TEST_F(PaneCommandsTest, TellThatNothingWasCopiedOntoItself) {
    Press('=');
    ASSERT_TRUE(BothAreRead());
    CopyAsOffered();
    ASSERT_TRUE(Says("The job will stop at entries that are their own destination: ROOT/from/a"));
    Press('n');
    EXPECT_EQ(Runs.Find(1)->Run->Outcome().Result, RunResult::Canceled);
    EXPECT_EQ(TreeOf(Root / "from"), (Tree{{"a", "file new a"}, {"b", "file new b"}}));
}

TEST_F(PaneCommandsTest, WriteNothingToADisc) {
    const ScopedDrive drive(AudioDisc({150}, 300));
    Panes.Other().GoTo(Disc);
    ASSERT_TRUE(BothAreRead());
    Press('c');
    EXPECT_EQ(Dialogs(), "Copy Nothing can be written to a disc. [ Close ]");
    Press(KeyCode::Escape);
    Press('m');
    EXPECT_EQ(Dialogs(), "Move Nothing can be written to a disc. [ Close ]");
}

TEST_F(PaneCommandsTest, CopyFromADiscWhateverIsWanted) {
    const ScopedDrive drive(AudioDisc({150}, 300));
    Panes.Active().GoTo(Disc);
    ASSERT_TRUE(BothAreRead());
    MoveTo("Track 01.wav");
    Press('m');
    EXPECT_EQ(Dialogs().substr(0, 10), "Copy Copy ");
}

TEST_F(PlanThatWaits, IsSaidAndGivenUpByEscape) {
    EXPECT_TRUE(Commands.IsBusy());
    EXPECT_EQ(Commands.StatusText(), Waits);
    Attend();
    EXPECT_TRUE(Commands.IsBusy());
    Press('c');
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_TRUE(Press(KeyCode::Escape));
    EXPECT_FALSE(Commands.IsBusy());
    EXPECT_EQ(Commands.StatusText(), "");
    EXPECT_FALSE(Commands.StopPlanning());
    EXPECT_TRUE(NoChildIsLeft());
    Attend();
    EXPECT_TRUE(Runs.All().empty());
}

TEST_F(PlanThatWaits, BeginsWhenTheDriveIsReady) {
    WriteFile(Root / "ready", "");
    ASSERT_TRUE(Becomes("it begins", [&] { return !Runs.All().empty(); }));
    EXPECT_FALSE(Commands.IsBusy());
    EXPECT_EQ(Dialogs().substr(0, 6), "Copy: ");
    Runs.Find(1)->Run->Cancel();
    EXPECT_TRUE(AllEnd());
}

TEST_F(PlanThatWaits, LeavesTheMarksThatWereMadeMeanwhile) {
    MoveTo("Track 02.wav");
    Press(' ');
    WriteFile(Root / "ready", "");
    ASSERT_TRUE(Becomes("it begins", [&] { return !Runs.All().empty(); }));
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "Track 01.wav", "*Track 02.wav<"}));
    Runs.Find(1)->Run->Cancel();
    EXPECT_TRUE(AllEnd());
}

TEST_F(PlanThatWaits, IsGivenUpByQuitting) {
    Press('q');
    EXPECT_TRUE(Commands.WantsToLeave());
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_FALSE(Commands.IsBusy());
}

TEST_F(PaneCommandsTest, WaitForADiskThatDoesNotAnswerUntilEscape) {
    EnterPrivateMountNamespace();
    const HangingFileSystem hung(Root / "hung");
    Press('c');
    Type(Root / "hung/new");
    Press(KeyCode::Enter);
    EXPECT_TRUE(Becomes("the disk is asked", [&] {
        return Commands.StatusText() == "Waiting for the disk: Esc gives up";
    }));
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_TRUE(Press(KeyCode::Escape));
    EXPECT_FALSE(Commands.IsBusy());
    EXPECT_TRUE(Runs.All().empty());
}

TEST_F(PaneCommandsTest, MarkByPattern) {
    WriteFile(Root / "from/b.txt", "");
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "a<", "b", "b.txt"}));
    Press('+');
    EXPECT_EQ(Dialogs(), "Mark Pattern: * Enter: use it Esc: leave");
    Type("b*");
    Press(KeyCode::Enter);
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a<", "*b", "*b.txt"}));
    Press('-');
    EXPECT_EQ(Dialogs(), "Unmark Pattern: * Enter: use it Esc: leave");
    Type("*.txt");
    Press(KeyCode::Enter);
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a<", "*b", "b.txt"}));
    Press('-');
    Press(KeyCode::Escape);
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a<", "*b", "b.txt"}));
}

TEST_F(PaneCommandsTest, SayThatAPatternMatchesNothing) {
    Press('+');
    Press('x');
    Press(KeyCode::Enter);
    EXPECT_EQ(Dialogs(), "Mark Pattern: *x Nothing here matches it. Enter: use it Esc: leave");
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a<", "b"}));
}

TEST_F(PaneCommandsTest, GoToAPlace) {
    const char* const before = getenv("HOME");
    const std::string home = before == nullptr ? "" : before;
    setenv("HOME", (Root / "to").c_str(), 1);
    Press('g');
    setenv("HOME", home.c_str(), 1);
    Press(KeyCode::Enter);
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_EQ(Panes.Active().Reading(), Root / "to");
    EXPECT_EQ(Panes.Other().Reading(), std::nullopt);
}

TEST_F(PaneCommandsTest, GiveAFileToAProgramOnce) {
    EXPECT_TRUE(Press(FunctionKey(3)));
    std::optional<FileProgram> wanted = Commands.TakeProgram();
    ASSERT_TRUE(wanted);
    EXPECT_EQ(wanted->Variable, std::string("PAGER"));
    EXPECT_EQ(wanted->Otherwise, std::string("less"));
    EXPECT_EQ(wanted->File, Root / "from/a");
    EXPECT_FALSE(Commands.TakeProgram());
    Press(FunctionKey(4));
    wanted = Commands.TakeProgram();
    ASSERT_TRUE(wanted);
    EXPECT_EQ(wanted->Variable, std::string("EDITOR"));
    EXPECT_EQ(wanted->Otherwise, std::string("vi"));
}

TEST_F(PaneCommandsTest, OpenNothingButFiles) {
    fs::create_directory(Root / "from/sub");
    MakeFifo(Root / "from/pipe");
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "sub", "a<", "b", "pipe"}));
    for (const std::string name : {"sub", "pipe"}) {
        MoveTo(name);
        EXPECT_TRUE(Press(FunctionKey(3))) << name;
        EXPECT_FALSE(Commands.TakeProgram()) << name;
    }
    Press(KeyCode::Home);
    EXPECT_TRUE(Press(FunctionKey(4)));
    EXPECT_FALSE(Commands.TakeProgram());
}

TEST_F(PaneCommandsTest, LeaveAtOnceWhenNothingRuns) {
    EXPECT_FALSE(Commands.WantsToLeave());
    EXPECT_TRUE(Press('q'));
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_TRUE(Commands.WantsToLeave());
}

TEST_F(PaneCommandsTest, LeaveTransfersOnlyWithAYes) {
    LeaveOneWaiting("a");
    Press(FunctionKey(10));
    EXPECT_EQ(Dialogs(), "Quit 1 transfer runs. Cancel and quit? [ Yes ] [ No ]");
    Press(KeyCode::Enter);
    EXPECT_FALSE(Commands.WantsToLeave());
    EXPECT_EQ(Runs.CountRunning(), 1U);
    LeaveOneWaiting("b");
    Press('q');
    EXPECT_EQ(Dialogs(), "Quit 2 transfers run. Cancel and quit? [ Yes ] [ No ]");
    Press('y');
    EXPECT_TRUE(Commands.WantsToLeave());
    ASSERT_TRUE(AllEnd());
    EXPECT_EQ(Runs.Find(1)->Run->Outcome().Result, RunResult::Canceled)
        << Runs.Find(1)->Run->Outcome().Text;
    EXPECT_EQ(ReadFile(Root / "to/a"), "old");
}

// What has the transfers canceled must not begin another one.
TEST_F(PaneCommandsTest, LeaveWithoutThePlanThatWaits) {
    LeaveOneWaiting("a");
    ScopedDrive drive(AudioDisc({150}, 300));
    Panes.Active().GoTo(Disc);
    ASSERT_TRUE(BothAreRead());
    MoveTo("Track 01.wav");
    drive.Before = [](const std::string&) {
        while (true) {
            pause();
        }
    };
    Press('c');
    Press(KeyCode::Enter);
    ASSERT_TRUE(Commands.IsBusy());
    Press('q');
    Press('y');
    EXPECT_FALSE(Commands.IsBusy());
    ASSERT_TRUE(AllEnd());
    EXPECT_EQ(Runs.All().size(), 1U);
}

} // namespace
