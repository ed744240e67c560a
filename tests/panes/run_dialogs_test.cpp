// The dialogs of transfers: how far they are, their questions, and the list of them.

#include "run_dialogs.h"

#include "panes_fixture.h"
#include "plan_builder.h"

#include <csignal>
#include <variant>

namespace {

namespace fs = std::filesystem;
using Action = TarvaneTransferConflictAction;
using Stage = TransferRun::Stage;

class RunDialogsTest : public PanesFixture {
protected:
    std::uint64_t Start(const Strings& Names) {
        TransferRequest request;
        for (const std::string& name : Names) {
            request.Operands.push_back(Root / "from" / name);
        }
        request.TargetDirectory = Root / "to";
        request.OnConflict = FileConflictChoice::Ask;
        request.Flush = FlushChoice::Never;
        const BuiltPlan plan = BuildPlan(request, nullptr);
        return Runs.Start(request, std::get<TarvaneTransferPlan>(plan));
    }
    // The names are taken, so that the job asks about each.
    std::uint64_t StartAsking(const Strings& Names) {
        for (const std::string& name : Names) {
            WriteFile(Root / "from" / name, "new " + name);
            WriteFile(Root / "to" / name, "old");
        }
        return Start(Names);
    }
    // The look finds what somebody has to be asked about.
    std::uint64_t StartJudged() {
        fs::create_directory(Root / "elsewhere");
        fs::create_directory_symlink(Root / "elsewhere", Root / "from/link");
        return Start({"link", "b"});
    }

    TransferRun& RunOf(std::uint64_t Id) { return *Runs.Find(Id)->Run; }
    testing::AssertionResult Waits(std::uint64_t Id) {
        return Becomes("it waits", [&] { return Runs.Find(Id)->WaitsForPerson(); });
    }
    testing::AssertionResult IsAsked() {
        return Becomes("somebody is asked", [&] { return RunsShown.IsAsking(); });
    }
    testing::AssertionResult IsOver(std::uint64_t Id) {
        return Becomes("it is over", [&] { return Runs.Find(Id)->IsOver(); });
    }
    bool DialogsSay(const std::string& Words) { return Dialogs().find(Words) != std::string::npos; }
};

const std::string kWaitsStatus = "A transfer waits for an answer: press a";

TEST_F(RunDialogsTest, SayWhatGoesOnInOneLine) {
    EXPECT_EQ(RunsShown.StatusText(), "");
    const std::uint64_t first = StartAsking({"1"});
    EXPECT_EQ(RunsShown.StatusText(), "1 transfer runs: press j to see");
    const std::uint64_t second = StartAsking({"2"});
    EXPECT_EQ(RunsShown.StatusText(), "2 transfers run: press j to see");
    ASSERT_TRUE(Waits(first));
    ASSERT_TRUE(Waits(second));
    EXPECT_TRUE(RunsShown.NeedsSomebody());
    EXPECT_EQ(RunsShown.StatusText(), kWaitsStatus);
    RunsShown.ShowFirstQuestion();
    EXPECT_EQ(RunsShown.StatusText(), "2 transfers run: press j to see");
    Press('s');
    ASSERT_TRUE(IsOver(first));
    EXPECT_EQ(RunsShown.StatusText(), kWaitsStatus);
    RunsShown.ShowFirstQuestion();
    Press('o');
    ASSERT_TRUE(IsOver(second));
    EXPECT_EQ(RunsShown.StatusText(), RunOf(second).EndLines().front());
    EXPECT_EQ(RunsShown.StatusText().substr(0, 14), "Copied 1 entry");
    EXPECT_FALSE(RunsShown.NeedsSomebody());
    EXPECT_EQ(Ends, 2);
}

TEST_F(RunDialogsTest, ShowHowFarARunIsAndWhatItCameTo) {
    const std::uint64_t id = Start({"a"});
    RunsShown.ShowProgress(id);
    EXPECT_TRUE(DialogsSay("Copy: ROOT/from Looking through the sources"));
    ASSERT_TRUE(IsOver(id));
    EXPECT_TRUE(Says(RunOf(id).EndLines().front()));
    EXPECT_TRUE(DialogsSay("[ Close ]"));
    EXPECT_FALSE(DialogsSay("Run again"));
    Press(KeyCode::Escape);
    EXPECT_TRUE(Stack.IsEmpty());
}

TEST_F(RunDialogsTest, ShowOneRunAtATime) {
    const std::uint64_t first = StartAsking({"1"});
    const std::uint64_t second = StartAsking({"2"});
    RunsShown.ShowProgress(first);
    RunsShown.ShowProgress(second);
    Press('b');
    EXPECT_TRUE(Stack.IsEmpty());
    RunsShown.ShowProgress(second);
    EXPECT_FALSE(Stack.IsEmpty());
    RunsShown.ShowProgress(second + 1);
}

TEST_F(RunDialogsTest, LeadFromARunThatIsShownToTheQuestionOfAnother) {
    const std::uint64_t shown = Start({"a"});
    RunsShown.ShowProgress(shown);
    ASSERT_TRUE(IsOver(shown));
    const std::uint64_t waiting = StartAsking({"1"});
    ASSERT_TRUE(Says("Another transfer waits for an answer: press a. [ Answer ] [ Close ]"));
    Press('a');
    EXPECT_TRUE(DialogsSay("ROOT/to/1"));
    Press('o');
    ASSERT_TRUE(IsOver(waiting));
    ASSERT_TRUE(Becomes("nobody is needed", [&] { return !DialogsSay("Another transfer"); }));
    EXPECT_EQ(ReadFile(Root / "to/1"), "new 1");
}

TEST_F(RunDialogsTest, OpenTheQuestionOfTheRunInFrontByThemselves) {
    const std::uint64_t id = StartAsking({"1", "2"});
    RunsShown.ShowProgress(id);
    ASSERT_TRUE(IsAsked());
    EXPECT_EQ(Bells, 0);
    EXPECT_TRUE(DialogsSay("ROOT/to/1"));
    Press('o');
    EXPECT_FALSE(RunsShown.IsAsking());
    ASSERT_TRUE(IsAsked());
    EXPECT_TRUE(DialogsSay("ROOT/to/2"));
    Press('s');
    ASSERT_TRUE(IsOver(id));
    EXPECT_EQ(ReadFile(Root / "to/1"), "new 1");
    EXPECT_EQ(ReadFile(Root / "to/2"), "old");
    EXPECT_EQ(Bells, 0);
    Attend();
    EXPECT_TRUE(DialogsSay("[ Close ]"));
}

TEST_F(RunDialogsTest, TakeNoKeyForAQuestionThatHasJustAppeared) {
    const std::uint64_t id = StartAsking({"1"});
    RunsShown.ShowProgress(id);
    ASSERT_TRUE(IsAsked());
    Stack.TakeKey(Letter('o'), Now);
    EXPECT_TRUE(RunsShown.IsAsking());
    Press('o');
    EXPECT_FALSE(RunsShown.IsAsking());
}

TEST_F(RunDialogsTest, RingOnceForARunOutOfSightAndWait) {
    const std::uint64_t id = StartAsking({"1", "2"});
    ASSERT_TRUE(Waits(id));
    for (int i = 0; i < 5; ++i) {
        Attend();
    }
    EXPECT_EQ(Bells, 1);
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_FALSE(RunsShown.IsAsking());
    const std::uint64_t other = StartAsking({"3"});
    ASSERT_TRUE(Waits(other));
    Attend();
    EXPECT_EQ(Bells, 2);
    // That of the first run, in front of which nothing lies.
    EXPECT_TRUE(Press('a'));
    EXPECT_TRUE(RunsShown.IsAsking());
    EXPECT_TRUE(DialogsSay("ROOT/to/1"));
}

TEST_F(RunDialogsTest, AskNothingWhenNothingIsToBeAsked) {
    EXPECT_TRUE(Press('a'));
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_FALSE(RunsShown.IsAsking());
}

TEST_F(RunDialogsTest, GiveTheAnswerToTheQuestionThatWasRead) {
    const std::uint64_t id = StartAsking({"1", "2"});
    RunsShown.ShowProgress(id);
    ASSERT_TRUE(IsAsked());
    // Somebody else answers meanwhile, and the next question is there before the key.
    const std::uint64_t read = RunOf(id).OpenQuestion()->Id;
    RunOf(id).Answer(read, {.Action = Action::Skip});
    ASSERT_TRUE(BecomesTrue("the next one is open", [&] {
        Runs.Attend(Now);
        return RunOf(id).OpenQuestion() && RunOf(id).OpenQuestion()->Id != read;
    }));
    Press('o');
    EXPECT_TRUE(RunOf(id).OpenQuestion());
    EXPECT_FALSE(RunsShown.IsAsking());
    ASSERT_TRUE(IsAsked());
    EXPECT_TRUE(DialogsSay("ROOT/to/2"));
    EXPECT_FALSE(DialogsSay("ROOT/to/1"));
    Press('s');
    ASSERT_TRUE(IsOver(id));
    EXPECT_EQ(TreeOf(Root / "to"), (Tree{{"1", "file old"}, {"2", "file old"}}));
}

TEST_F(RunDialogsTest, ShowTheNextQuestionWhenThatOneWasAnsweredElsewhere) {
    const std::uint64_t id = StartAsking({"1", "2"});
    RunsShown.ShowProgress(id);
    ASSERT_TRUE(IsAsked());
    const std::uint64_t shown = RunOf(id).OpenQuestion()->Id;
    RunOf(id).Answer(shown, {.Action = Action::Skip});
    // No round of the loop sees the run without a question.
    ASSERT_TRUE(BecomesTrue("the next one is open", [&] {
        Runs.Attend(Now);
        return RunOf(id).OpenQuestion() && RunOf(id).OpenQuestion()->Id != shown;
    }));
    Attend();
    EXPECT_FALSE(RunsShown.IsAsking());
    Attend();
    EXPECT_TRUE(DialogsSay("ROOT/to/2"));
    EXPECT_FALSE(DialogsSay("ROOT/to/1"));
}

TEST_F(RunDialogsTest, TakeAwayAQuestionThatIsNotOpenAnyMore) {
    const std::uint64_t id = StartAsking({"1"});
    ASSERT_TRUE(Waits(id));
    RunsShown.ShowFirstQuestion();
    EXPECT_FALSE(Stack.IsEmpty());
    RunOf(id).Cancel();
    ASSERT_TRUE(IsOver(id));
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_FALSE(RunsShown.IsAsking());
    EXPECT_EQ(ReadFile(Root / "to/1"), "old");
}

TEST_F(RunDialogsTest, AskWhetherToGoOnAfterTheLook) {
    const std::uint64_t id = StartJudged();
    ASSERT_TRUE(Waits(id));
    Attend();
    EXPECT_EQ(Bells, 1);
    EXPECT_EQ(RunsShown.StatusText(), kWaitsStatus);
    RunsShown.ShowFirstQuestion();
    EXPECT_EQ(Dialogs(), "Copy: ROOT/from Links lead to directories, which will be copied with "
                         "their contents: ROOT/from/link Go on with the copy? [ Yes ] [ No ]");
    Stack.TakeKey(Letter('y'), Now);
    EXPECT_TRUE(RunsShown.IsAsking());
    Press('y');
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_FALSE(RunsShown.IsAsking());
    ASSERT_TRUE(IsOver(id));
    EXPECT_EQ(RunOf(id).Outcome().Result, RunResult::Succeeded);
    EXPECT_TRUE(fs::is_directory(Root / "to/link"));
}

TEST_F(RunDialogsTest, CancelARunThatIsNotToGoOn) {
    const std::uint64_t id = StartJudged();
    RunsShown.ShowProgress(id);
    ASSERT_TRUE(IsAsked());
    EXPECT_EQ(Bells, 0);
    EXPECT_TRUE(DialogsSay("Go on with the copy?"));
    Press(KeyCode::Enter);
    EXPECT_FALSE(RunsShown.IsAsking());
    EXPECT_EQ(RunOf(id).Outcome().Result, RunResult::Canceled);
    EXPECT_TRUE(Says("Run again"));
    EXPECT_TRUE(fs::is_empty(Root / "to"));
}

TEST_F(RunDialogsTest, NoticeTheEndOfARunThatIsCanceledBeforeItsJob) {
    const std::uint64_t id = StartJudged();
    ASSERT_TRUE(Waits(id));
    RunOf(id).Cancel();
    Attend();
    EXPECT_EQ(Ends, 1);
    EXPECT_EQ(RunsShown.StatusText(), RunOf(id).EndLines().front());
    Attend();
    EXPECT_EQ(Ends, 1);
}

TEST_F(RunDialogsTest, TakeAwayTheVerdictOfARunThatHasEnded) {
    const std::uint64_t id = StartJudged();
    RunsShown.ShowProgress(id);
    ASSERT_TRUE(IsAsked());
    RunsShown.CancelInFront();
    Attend();
    EXPECT_FALSE(RunsShown.IsAsking());
    EXPECT_FALSE(DialogsSay("Go on with the copy?"));
    EXPECT_EQ(RunOf(id).Outcome().Result, RunResult::Canceled);
    Press(KeyCode::Escape);
    EXPECT_TRUE(Stack.IsEmpty());
}

TEST_F(RunDialogsTest, ListNoMoreThanTenFindingsOfAKind) {
    fs::create_directory(Root / "elsewhere");
    fs::create_directory(Root / "from/links");
    for (int i = 10; i < 22; ++i) {
        fs::create_directory_symlink(Root / "elsewhere", Root / "from/links" / std::to_string(i));
    }
    const std::uint64_t id = Start({"links"});
    ASSERT_TRUE(Waits(id));
    RunsShown.ShowFirstQuestion();
    EXPECT_TRUE(DialogsSay("and 2 more Go on with the copy?")) << Dialogs();
}

TEST_F(RunDialogsTest, CancelWhatIsInFrontAndNothingElse) {
    const std::uint64_t front = StartAsking({"1"});
    const std::uint64_t other = StartAsking({"2"});
    RunsShown.CancelInFront();
    RunsShown.ShowProgress(front);
    ASSERT_TRUE(Waits(other));
    ASSERT_TRUE(IsAsked());
    RunsShown.CancelInFront();
    ASSERT_TRUE(IsOver(front));
    EXPECT_EQ(RunOf(front).Outcome().Result, RunResult::Canceled);
    EXPECT_FALSE(RunsShown.IsAsking());
    EXPECT_FALSE(Runs.Find(other)->IsOver());
    RunsShown.CancelInFront();
    Attend();
    EXPECT_EQ(RunOf(front).Outcome().Result, RunResult::Canceled);
}

TEST_F(RunDialogsTest, CancelTheRunWhoseQuestionLiesOverTheOneInFront) {
    const std::uint64_t asking = StartAsking({"1"});
    const std::uint64_t front = StartAsking({"2"});
    ASSERT_TRUE(Waits(asking));
    RunsShown.ShowFirstQuestion();
    RunsShown.ShowProgress(front);
    RunsShown.CancelInFront();
    ASSERT_TRUE(IsOver(asking));
    EXPECT_EQ(RunOf(asking).Outcome().Result, RunResult::Canceled);
    EXPECT_FALSE(Runs.Find(front)->IsOver());
}

TEST_F(RunDialogsTest, CancelByTheKeyOfTheProgress) {
    const std::uint64_t id = StartAsking({"1"});
    RunsShown.ShowProgress(id);
    Press(KeyCode::Escape);
    EXPECT_TRUE(RunOf(id).IsCanceled() || Runs.Find(id)->IsOver());
    ASSERT_TRUE(IsOver(id));
    EXPECT_EQ(RunOf(id).Outcome().Result, RunResult::Canceled);
    EXPECT_TRUE(Says("Run again"));
}

TEST_F(RunDialogsTest, RunAgainFromTheProgress) {
    const std::uint64_t id = StartAsking({"1"});
    RunsShown.ShowProgress(id);
    Press(KeyCode::Escape);
    ASSERT_TRUE(Says("Run again"));
    fs::remove(Root / "to/1");
    Press('r');
    ASSERT_EQ(Runs.All().size(), 2U);
    EXPECT_TRUE(DialogsSay("Looking through the sources"));
    ASSERT_TRUE(IsOver(id + 1));
    EXPECT_EQ(ReadFile(Root / "to/1"), "new 1");
    ASSERT_TRUE(Says("[ Close ]"));
    Press(KeyCode::Enter);
    EXPECT_TRUE(Stack.IsEmpty());
}

TEST_F(RunDialogsTest, ListWhatThereIs) {
    RunsShown.ShowList();
    EXPECT_TRUE(DialogsSay("Nothing has been copied or moved yet."));
    const std::uint64_t id = StartAsking({"1"});
    ASSERT_TRUE(Waits(id));
    Attend();
    EXPECT_TRUE(DialogsSay("Waiting for conflict choice"));
    EXPECT_TRUE(DialogsSay("[ Show ] [ Answer ] [ Cancel transfer ] [ Close ]"));
    Press('a');
    EXPECT_TRUE(RunsShown.IsAsking());
    Press('o');
    ASSERT_TRUE(IsOver(id));
    ASSERT_TRUE(Says("Done"));
    Press(KeyCode::Escape);
    EXPECT_TRUE(Stack.IsEmpty());
    EXPECT_EQ(ReadFile(Root / "to/1"), "new 1");
}

TEST_F(RunDialogsTest, CancelAndRunAgainFromTheList) {
    const std::uint64_t id = StartAsking({"1"});
    RunsShown.ShowList();
    ASSERT_TRUE(Waits(id));
    Attend();
    Press('c');
    ASSERT_TRUE(IsOver(id));
    Attend();
    fs::remove(Root / "to/1");
    EXPECT_TRUE(DialogsSay("[ Run again ]"));
    Press('r');
    EXPECT_EQ(Runs.All().size(), 2U);
    ASSERT_TRUE(IsOver(id + 1));
    EXPECT_EQ(ReadFile(Root / "to/1"), "new 1");
}

TEST_F(RunDialogsTest, ShowARunFromTheListAndComeBack) {
    const std::uint64_t id = StartAsking({"1"});
    ASSERT_TRUE(Waits(id));
    RunsShown.ShowList();
    Press(KeyCode::Enter);
    EXPECT_TRUE(DialogsSay("[ In background ]"));
    ASSERT_TRUE(IsAsked());
    Press('s');
    ASSERT_TRUE(IsOver(id));
    Attend();
    Press(KeyCode::Escape);
    EXPECT_TRUE(DialogsSay("Jobs"));
    Press(KeyCode::Escape);
    EXPECT_TRUE(Stack.IsEmpty());
}

TEST_F(RunDialogsTest, LeaveTheQuestionOfOneWhileThatOfAnotherIsShown) {
    const std::uint64_t shown = StartAsking({"1"});
    const std::uint64_t front = StartAsking({"2"});
    ASSERT_TRUE(Waits(shown));
    RunsShown.ShowFirstQuestion();
    RunsShown.ShowProgress(front);
    ASSERT_TRUE(Waits(front));
    Attend();
    EXPECT_TRUE(RunOf(shown).Answered().empty());
    RunOf(shown).Cancel();
    ASSERT_TRUE(IsOver(shown));
    ASSERT_TRUE(IsAsked());
    EXPECT_TRUE(DialogsSay("ROOT/to/2"));
}

TEST_F(RunDialogsTest, KeepUpWithManyRuns) {
    const std::uint64_t first = StartAsking({"1"});
    RunsShown.ShowProgress(first);
    ASSERT_TRUE(IsAsked());
    for (int i = 0; i < 20; ++i) {
        Start({"a"});
    }
    Press('s');
    ASSERT_TRUE(IsOver(first));
    EXPECT_TRUE(Says("[ Close ]"));
}

} // namespace
