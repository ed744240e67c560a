// A running job as the user lives through it: what ends it, and what answers its questions.

#include "job_phase.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "at_prompt.h"
#include "captured_descriptor.h"
#include "link_names.h"
#include "without_time.h"

namespace {

// Runs on the worker before the sound, which comes after the job has finished.
std::function<void()> gBeforeSound;

} // namespace

void RealPlaySound() noexcept REAL(PlayTarvaneTransferCompleteSound);
void WrappedPlaySound() noexcept WRAPPED(PlayTarvaneTransferCompleteSound);

void WrappedPlaySound() noexcept {
    if (gBeforeSound) {
        gBeforeSound();
    }
    RealPlaySound();
}

namespace {

using std::chrono::milliseconds;
using Action = TarvaneTransferConflictAction;

constexpr const char* kCanceled = "Copy canceled. Partial destination files may remain.";

class JobPhase : public PhaseAtPrompt {
protected:
    JobPhase() { std::filesystem::create_directory(Root / "to"); }

    RunOutcome Run(const TarvaneTransferPlan& Plan) {
        return RunJobPhase(Request, Plan, Found, Context());
    }

    void ExpectOutcome(const RunOutcome& Outcome, RunResult Result, const std::string& Text,
                       std::optional<int> EndSignal = std::nullopt) {
        EXPECT_EQ(Outcome.Result, Result);
        EXPECT_EQ(WithoutTime(Outcome.Text), Text);
        EXPECT_EQ(Outcome.EndSignal, EndSignal);
        EXPECT_EQ(Report.Log.back().substr(0, 9), "job over ");
        EXPECT_TRUE(Screen.IsThrough());
    }

    int StatusOfLeaving(const TarvaneTransferPlan& Plan) {
        try {
            Run(Plan);
        } catch (const ScriptedExit& exited) {
            return exited.Status;
        }
        return 0;
    }
    static constexpr const char* kLeft = "tarvane: left before the transfer has stopped: the "
                                         "program ends when the drive or disk answers, and ";

    // A file at both ends.
    void Take(const std::string& Name) {
        WriteFile(Root / "from" / Name, "new " + Name);
        WriteFile(Root / "to" / Name, "old " + Name);
    }
    std::string Title(const std::string& Name) const {
        return "File exists: " + PathOf("to/" + Name);
    }
    Tree Destination() const { return TreeOf(Root / "to"); }

    TransferRequest Request;
    FoundBeforehand Found;
};

// A copy whose first read is held.
class HeldJob : public JobPhase {
protected:
    // Frames and keys come when the engine has got as far as that.
    HeldJob() {
        Screen.StopClockUntil([this] { return Drive.Holds(); });
    }

    RunOutcome Run() { return JobPhase::Run(CopyOf({kTrack})); }
    std::function<void()> Release() {
        return [this] { Drive.Release(); };
    }
    void ReleaseWhenCanceled() { Screen.Script({Reports("job to cancel"), {}, ReleaseToTheEnd()}); }
    // Until the engine is through with it.
    std::function<void()> ReleaseToTheEnd() {
        return [this] {
            Drive.Release();
            ExpectJobToEnd();
        };
    }

    HeldDrive Drive{"read"};
};

} // namespace

TEST_F(JobPhase, CopiesAndReportsTheEnd) {
    WriteFile(Root / "from/a", "data");
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Succeeded, "Copied 1 entry, 4 B.");
    EXPECT_EQ(Report.Log.back(), "job over Copied 1 item(s).");
    EXPECT_EQ(Destination(), (Tree{{"a", "file data"}}));
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(JobPhase, IsNotReportedAsRunningOnceItHasFinished) {
    SharedLatch latch;
    gBeforeSound = [&latch] { latch.Wait(); };
    WriteFile(Root / "from/a", "data");
    std::size_t reports = 0;
    Screen.Script({ScriptedTerminal::Always(), {}, ExpectJobToEnd});
    Screen.Script({ScriptedTerminal::Always(), {}, [&] { reports = Report.Log.size(); }});
    Screen.Script({Screen.Later(milliseconds(300)), {}, [&] {
                       EXPECT_EQ(Report.Log.size(), reports);
                       latch.Open();
                   }});
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Succeeded, "Copied 1 entry, 4 B.");
    gBeforeSound = nullptr;
}

TEST_F(JobPhase, FailsWithTheJobsSentence) {
    ExpectOutcome(Run(CopyOf({"missing"})), RunResult::Failed,
                  PathOf("from/missing") + ": Source does not exist.");
}

TEST_F(JobPhase, DoesNotMissWhatLiesInASkippedDirectory) {
    WriteFile(Root / "from/dir/secret/file", "data");
    WriteFile(Root / "from/a", "data");
    std::filesystem::create_directory(Root / "to/dir");
    Request.OnConflict = FileConflictChoice::Overwrite;
    Request.OnDirectoryConflict = DirectoryConflictChoice::Skip;
    Found.Unread = {{Root / "from/dir/secret"}, 1};
    ExpectOutcome(Run(CopyOf({"dir", "a"})), RunResult::Succeeded,
                  "Copied 1 entry, 4 B; 3 skipped.");
}

TEST_F(HeldJob, IsReportedTenTimesASecond) {
    const Terminal::TimePoint start = Screen.Now();
    Screen.Script({Reports("job", 6), {}, Release()});
    ExpectOutcome(Run(), RunResult::Succeeded, "Copied 1 entry, 1.9 MB.");
    EXPECT_GE(Screen.Now() - start, milliseconds(540));
}

TEST_F(HeldJob, WakesTheLoopAtItsEnd) {
    Screen.Script({Reports("job"), {}, [this] {
                       EXPECT_FALSE(Screen.IsWoken());
                       Drive.Release();
                       ExpectToBeWoken();
                   }});
    ExpectOutcome(Run(), RunResult::Succeeded, "Copied 1 entry, 1.9 MB.");
}

TEST_F(HeldJob, TakesItsBlockAway) {
    Screen.Script({Reports("job"), {}, [this] {
                       Shown.Show({{"block"}}, Screen.Size());
                       Drive.Release();
                   }});
    Run();
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(HeldJob, IsCanceledByEsc) {
    Screen.PressWhen(Reports("job"), {kEscapeKey});
    ReleaseWhenCanceled();
    ExpectOutcome(Run(), RunResult::Canceled, kCanceled);
    EXPECT_EQ(Destination(), Tree());
}

TEST_F(HeldJob, IsCanceledByNoOtherKey) {
    Screen.PressWhen(Reports("job"), {PressedKey('q'), kEnterKey});
    Screen.Script({Screen.Later(milliseconds(300)), {}, Release()});
    ExpectOutcome(Run(), RunResult::Succeeded, "Copied 1 entry, 1.9 MB.");
}

TEST_F(HeldJob, IsCanceledByAnInterruptLikeByEsc) {
    Screen.RaiseWhen(Reports("job"), SIGINT);
    ReleaseWhenCanceled();
    ExpectOutcome(Run(), RunResult::Canceled, kCanceled);
}

TEST_F(HeldJob, EndsByATerminatingSignal) {
    Screen.RaiseWhen(Reports("job"), SIGTERM);
    ReleaseWhenCanceled();
    ExpectOutcome(Run(), RunResult::Canceled, kCanceled, SIGTERM);
}

TEST_F(HeldJob, EndsByATerminatingSignalEvenWhenItWasFaster) {
    Screen.Script({Reports("job"), {{SIGTERM}, {}}, ReleaseToTheEnd()});
    ExpectOutcome(Run(), RunResult::Succeeded, "Copied 1 entry, 1.9 MB.", SIGTERM);
}

TEST_F(HeldJob, HasSucceededWhenItWasFasterThanEsc) {
    Screen.Script({Reports("job"), {{}, {kEscapeKey}}, ReleaseToTheEnd()});
    ExpectOutcome(Run(), RunResult::Succeeded, "Copied 1 entry, 1.9 MB.");
}

TEST_F(HeldJob, IsCanceledAtOnceWhenNobodyReadsItsRecords) {
    Terminal::TimePoint broken;
    Screen.Script({Reports("job"), {}, [&] {
                       Report.bBroken = true;
                       broken = Screen.Now();
                   }});
    Screen.Script({Reports("job to cancel"), {}, [&] {
                       EXPECT_EQ(Screen.Now(), broken);
                       Drive.Release();
                       ExpectJobToEnd();
                   }});
    ExpectOutcome(Run(), RunResult::Canceled, kCanceled, SIGPIPE);
}

// The user was first.
TEST_F(HeldJob, KeepsTheSignalWhenItsRecordsBreakWhileItEnds) {
    Screen.Script({Reports("job"), {{SIGTERM}, {}}, [&] { Report.bBroken = true; }});
    ReleaseWhenCanceled();
    ExpectOutcome(Run(), RunResult::Canceled, kCanceled, SIGTERM);
}

TEST_F(HeldJob, AnswersAStatusRequest) {
    // Before the drive is read nothing is counted.
    Screen.RaiseWhen([this] { return Drive.Holds(); }, SIGUSR1);
    Screen.Script({Screen.Shows("Items"), {}, Release()});
    Run();
    EXPECT_EQ(Screen.Screen().find("Overall 0 B / 1.9 MB | Items 0 / 1"), 0U) << Screen.Screen();
}

TEST_F(HeldJob, SaysWhatItLeavesBehindWhenItHasToLeave) {
    Screen.RaiseWhen(Reports("job"), SIGINT);
    Screen.Script({Screen.Later(milliseconds(100)), {{SIGINT}, {}}, Release()});
    EXPECT_EQ(StatusOfLeaving(CopyOf({kTrack})), 1000 + SIGINT);
    EXPECT_EQ(Screen.Screen(), std::string(kLeft) + "a partial copy of '" + kTrack +
                                   "' may stay in '" + PathOf("to") + "'\n");
}

TEST_F(JobPhase, SaysWhereAPartialCopyOfWhatLiesInADirectoryMayStay) {
    WriteFile(Root / "from/tree/sub/file", "new");
    WriteFile(Root / "to/tree/sub/file", "old");
    Request.OnDirectoryConflict = DirectoryConflictChoice::Merge;
    Screen.RaiseWhen(Screen.Shows("File exists"), SIGQUIT);
    EXPECT_EQ(StatusOfLeaving(CopyOf({"tree"})), 1000 + SIGQUIT);
    const std::string end = kLeft + ("a partial copy of '" + PathOf("from/tree/sub")) +
                            "' may stay in '" + PathOf("to/tree") + "'\n";
    EXPECT_TRUE(Screen.Screen().ends_with(end)) << Screen.Screen();
}

TEST_F(JobPhase, LeavesNothingToSayOnceItIsOver) {
    WriteFile(Root / "from/a", "data");
    Run(CopyOf({"a"}));
    EXPECT_THROW(Shown.Leave(SIGTERM), ScriptedExit);
    EXPECT_EQ(Screen.Screen(), "");
}

namespace {

struct KeyCase {
    std::vector<KeyPress> Keys;
    std::string Answer;
    Tree Destination;
    std::string End;
};

class NameInTheWay : public JobPhase {
protected:
    NameInTheWay() { Take("a"); }
};

} // namespace

TEST_F(NameInTheWay, IsAnsweredByKeys) {
    const KeyPress back{KeyCode::Backspace, {}};
    const std::vector<KeyCase> cases = {
        {{PressedKey('o')}, "overwrite", {{"a", "file new a"}}, "Copied 1 entry, 5 B; 1 replaced."},
        {{PressedKey('s')}, "skip", {{"a", "file old a"}}, "Nothing copied; 1 skipped."},
        {{kEnterKey}, "skip", {{"a", "file old a"}}, "Nothing copied; 1 skipped."},
        {{PressedKey('b')},
         "compare: skip when equal, overwrite when not",
         {{"a", "file new a"}},
         "Copied 1 entry, 5 B; 1 replaced."},
        {{PressedKey('k')},
         "keep both | " + PathOf("to/a-2"),
         {{"a", "file old a"}, {"a-2", "file new a"}},
         "Copied 1 entry, 5 B; 1 renamed."},
        {{PressedKey('r'), back, PressedKey('9'), kEnterKey},
         "rename | " + PathOf("to/a-9"),
         {{"a", "file old a"}, {"a-9", "file new a"}},
         "Copied 1 entry, 5 B; 1 renamed."},
    };
    std::string lines;
    for (const KeyCase& each : cases) {
        std::filesystem::remove_all(Root / "to");
        WriteFile(Root / "to/a", "old a");
        AnswerWhenShown("skip all", each.Keys);
        ExpectOutcome(Run(CopyOf({"a"})), RunResult::Succeeded, each.End);
        EXPECT_EQ(Destination(), each.Destination);
        lines += Title("a") + " | " + each.Answer + "\n";
        EXPECT_EQ(Screen.Screen(), lines);
    }
}

TEST_F(NameInTheWay, IsNotExchangedForAnotherOne) {
    WriteFile(Root / "to/b", "taken");
    const KeyPress back{KeyCode::Backspace, {}};
    AnswerWhenShown("skip all", {PressedKey('r'), back, back, back, PressedKey('b'), kEnterKey});
    Screen.PressWhen(Screen.Shows("That name exists already."), {back, PressedKey('c'), kEnterKey});
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Succeeded, "Copied 1 entry, 5 B; 1 renamed.");
    EXPECT_EQ(Destination(), (Tree{{"a", "file old a"}, {"b", "file taken"}, {"c", "file new a"}}));
}

TEST_F(NameInTheWay, IsShownAndReplacedAsTheLinkThatItIs) {
    std::filesystem::rename(Root / "to/a", Root / "elsewhere");
    std::filesystem::create_symlink("../elsewhere", Root / "to/a");
    AnswerWhenShown("is a link to ../elsewhere", {PressedKey('o')});
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Succeeded, "Copied 1 entry, 5 B; 1 replaced.");
    EXPECT_EQ(Destination(), (Tree{{"a", "file new a"}}));
    EXPECT_EQ(ReadFile(Root / "elsewhere"), "old a");
    EXPECT_EQ(Screen.Screen(), "Link exists: " + PathOf("to/a") + " | overwrite\n");
}

TEST_F(NameInTheWay, CancelsTheJobOnEsc) {
    Screen.PressWhen(Screen.Shows(Title("a")), {kEscapeKey});
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Canceled, kCanceled);
    EXPECT_EQ(Screen.Screen(), Title("a") + " | cancel\n");
    EXPECT_EQ(Destination(), (Tree{{"a", "file old a"}}));
    ASSERT_TRUE(Loop.Requests().IsAsked());
    EXPECT_EQ(Loop.Requests().Signal(), SIGINT);
}

TEST_F(NameInTheWay, TellsTheReporterWhatTheUserAnswered) {
    AnswerWhenShown(Title("a"), {PressedKey('k')});
    Run(CopyOf({"a"}));
    ASSERT_EQ(Report.Answers.size(), 1U);
    EXPECT_EQ(Report.Answers[0].Conflict.DestinationPath, PathOf("to/a"));
    EXPECT_EQ(Report.Answers[0].Action, Action::Rename);
    EXPECT_EQ(Report.Answers[0].RenamePath, PathOf("to/a-2"));
    EXPECT_TRUE(Report.Answers[0].bByUser);
}

TEST_F(NameInTheWay, TellsTheReporterWhatAChoiceAnswered) {
    Request.OnConflict = FileConflictChoice::Overwrite;
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Succeeded, "Copied 1 entry, 5 B; 1 replaced.");
    ASSERT_EQ(Report.Answers.size(), 1U);
    EXPECT_EQ(Report.Answers[0].Action, Action::Overwrite);
    EXPECT_FALSE(Report.Answers[0].bByUser);
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(NameInTheWay, IsNotCountedWhenItIsSkipped) {
    WriteFile(Root / "from/b", "12345");
    Request.OnConflict = FileConflictChoice::Skip;
    const RunOutcome outcome = Run(CopyOf({"a", "b"}));
    ASSERT_TRUE(outcome.Counts.has_value());
    EXPECT_EQ(outcome.Counts->Entries, 1U);
    EXPECT_EQ(outcome.Counts->Bytes, 5U);
}

// The engine skips by itself then; the first name and the directory are answered.
TEST_F(NameInTheWay, IsCountedAlsoWhenNobodyHearsOfIt) {
    for (const char* name : {"dir/b", "dir/c", "e"}) {
        Take(name);
    }
    WriteFile(Root / "from/dir/new", "new");
    Request.OnConflict = FileConflictChoice::Skip;
    Report.bReportsEachConflict = false;
    const RunOutcome outcome = Run(CopyOf({"a", "dir", "e"}));
    ExpectOutcome(outcome, RunResult::Succeeded, "Copied 1 entry, 3 B; 4 skipped.");
    EXPECT_EQ(Report.Outcomes,
              (std::vector<ConflictOutcome>{ConflictOutcome::Skipped, ConflictOutcome::Merged}));
}

TEST_F(NameInTheWay, IsReplacedByTheEngineWhereNothingElseIsInTheWay) {
    Take("b");
    Take("c");
    Request.OnConflict = FileConflictChoice::Overwrite;
    Report.bReportsEachConflict = false;
    Found.TakenFiles = 3;
    ExpectOutcome(Run(CopyOf({"a", "b", "c"})), RunResult::Succeeded,
                  "Copied 3 entries, 15 B; 3 replaced.");
    EXPECT_EQ(Report.Outcomes.size(), 1U);
    EXPECT_EQ(Destination(), (Tree{{"a", "file new a"}, {"b", "file new b"}, {"c", "file new c"}}));
}

TEST_F(NameInTheWay, IsToldWhereTheReporterWantsEach) {
    Take("b");
    Request.OnConflict = FileConflictChoice::Skip;
    Run(CopyOf({"a", "b"}));
    EXPECT_EQ(Report.Outcomes,
              (std::vector<ConflictOutcome>{ConflictOutcome::Skipped, ConflictOutcome::Skipped}));
}

// Its bytes were counted before, and do not count as skipped.
TEST_F(NameInTheWay, IsNoShorterFileWhenItIsATrackThatIsSkipped) {
    const HeldDrive drive("nothing");
    WriteFile(Root / "to/track", "old");
    Request.OnConflict = FileConflictChoice::Skip;
    Report.bReportsEachConflict = false;
    ExpectOutcome(Run(CopyOf({"a", kTrack})), RunResult::Succeeded, "Nothing copied; 2 skipped.");
}

TEST_F(NameInTheWay, TellsTheReporterWhatBecameOfEachName) {
    Take("b");
    WriteFile(Root / "from/same", "equal");
    WriteFile(Root / "to/same", "equal");
    Request.OnConflict = FileConflictChoice::Compare;
    Run(CopyOf({"a", "same", "b"}));
    EXPECT_EQ(Report.Outcomes,
              (std::vector<ConflictOutcome>{ConflictOutcome::Replaced, ConflictOutcome::Skipped,
                                            ConflictOutcome::Replaced}));
}

TEST_F(NameInTheWay, TellsTheReporterThatTheJobEndedAtIt) {
    Request.OnConflict = FileConflictChoice::Fail;
    Run(CopyOf({"a"}));
    EXPECT_EQ(Report.Outcomes, std::vector<ConflictOutcome>{ConflictOutcome::Unfinished});
}

TEST_F(NameInTheWay, FailsWithTheSentenceOfTheChoice) {
    Request.OnConflict = FileConflictChoice::Fail;
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Failed,
                  "cannot create '" + PathOf("to/a") + "': File exists");
}

TEST_F(NameInTheWay, IsNotAnsweredByWhatWasTypedBefore) {
    Screen.PressWhen(Screen.Shows(Title("a")), {PressedKey('o')});
    Screen.PressWhen(Screen.Later(milliseconds(500)), {PressedKey('o')});
    Screen.PressWhen(Screen.Later(milliseconds(500)), {PressedKey('o')});
    Screen.PressWhen(Screen.Later(milliseconds(700)), {PressedKey('s')});
    Run(CopyOf({"a"}));
    EXPECT_EQ(Screen.Screen(), Title("a") + " | skip\n");
}

// Without waiting for the next frame.
TEST_F(NameInTheWay, IsAskedAboutAtOnce) {
    Screen.StopClockUntil(Screen.Shows(Title("a")));
    Screen.PressWhen(Screen.Shows(Title("a")), {kEscapeKey});
    Run(CopyOf({"a"}));
    EXPECT_TRUE(Screen.IsThrough());
}

TEST_F(NameInTheWay, PutsTheCursorBehindTheQuestion) {
    Screen.Script({Screen.Shows(Title("a")), {{}, {kEscapeKey}}, [&] {
                       EXPECT_TRUE(Screen.Written().ends_with("\r? ")) << Screen.Written();
                   }});
    Run(CopyOf({"a"}));
}

TEST_F(NameInTheWay, AsksNoMoreWhenASignalHasCanceledTheJob) {
    Screen.StopClockUntil(IsNoJobRunning);
    Screen.RaiseWhen(Screen.Shows(Title("a")), SIGTERM);
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Canceled, kCanceled, SIGTERM);
    EXPECT_EQ(Screen.Screen(), "");
    EXPECT_TRUE(Report.Answers.empty());
}

TEST_F(NameInTheWay, StopsInTheBackgroundAndAsksWhenItComesBack) {
    Screen.bForeground = false;
    AnswerWhenShown(Title("a"), {PressedKey('o')});
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Succeeded, "Copied 1 entry, 5 B; 1 replaced.");
    EXPECT_EQ(Screen.Calls(),
              (std::vector<std::string>{"stop " + std::to_string(SIGTTIN), "keys"}));
}

TEST_F(HeldJob, TakesNoWaitForAnAnswerForAStall) {
    WriteFile(Root / "to/track", "old");
    Screen.StopClockUntil(ScriptedTerminal::Always());
    Screen.Script({Screen.Shows(Title("track")), {}});
    Screen.PressWhen(Screen.Later(milliseconds(9000)), {PressedKey('o')});
    Screen.Script({Screen.Later(milliseconds(500)), {}, [this] {
                       EXPECT_EQ(Report.LongestStall, 0);
                       Drive.Release();
                   }});
    ExpectOutcome(Run(), RunResult::Succeeded, "Copied 1 entry, 1.9 MB; 1 replaced.");
}

TEST_F(JobPhase, AsksForEachNameAndIsAttentiveAfterAnAnswer) {
    Take("a");
    Take("b");
    AnswerWhenShown(Title("a"), {PressedKey('o')});
    Screen.Script({ScriptedTerminal::Always(), {}, [this] {
                       Screen.StopClockUntil(Screen.Shows(Title("b")));
                   }});
    Screen.Script({Screen.Shows(Title("b")), {}});
    Screen.PressWhen(Screen.Later(milliseconds(200)), {PressedKey('s')});
    ExpectOutcome(Run(CopyOf({"a", "b"})), RunResult::Succeeded,
                  "Copied 1 entry, 5 B; 1 skipped, 1 replaced.");
    EXPECT_EQ(Screen.Screen(), Title("a") + " | overwrite\n" + Title("b") + " | skip\n");
    EXPECT_EQ(Report.Answers.size(), 2U);
}

TEST_F(JobPhase, IsNotAnsweredByWhoeverTypesOnAfterAnAnswer) {
    Take("a");
    Take("b");
    AnswerWhenShown(Title("a"), {PressedKey('o')});
    Screen.PressWhen(ScriptedTerminal::Always(), {PressedKey('o')});
    Screen.PressWhen(Screen.Later(milliseconds(300)), {PressedKey('o')});
    Screen.PressWhen(Screen.Later(milliseconds(700)), {PressedKey('s')});
    Run(CopyOf({"a", "b"}));
    EXPECT_EQ(Screen.Screen(), Title("a") + " | overwrite\n" + Title("b") + " | skip\n");
}

TEST_F(JobPhase, AsksOnTheTerminalWhereMessagesGoElsewhere) {
    Screen.bOutputTerminal = false;
    Take("a");
    AnswerWhenShown(Title("a"), {PressedKey('o')});
    const CapturedDescriptor log(STDERR_FILENO);
    ExpectOutcome(Run(CopyOf({"a"})), RunResult::Succeeded, "Copied 1 entry, 5 B; 1 replaced.");
    EXPECT_EQ(Destination(), (Tree{{"a", "file new a"}}));
    EXPECT_EQ(log.Text(), Screen.Screen());
    EXPECT_EQ(log.Text(), Title("a") + " | overwrite\n");
}

TEST_F(JobPhase, RemembersAnAnswerForAllFiles) {
    Take("a");
    Take("b");
    AnswerWhenShown(Title("a"), {PressedKey('O')});
    ExpectOutcome(Run(CopyOf({"a", "b"})), RunResult::Succeeded,
                  "Copied 2 entries, 10 B; 2 replaced.");
    EXPECT_EQ(Screen.Screen(), Title("a") + " | overwrite all\n");
    EXPECT_EQ(Destination(), (Tree{{"a", "file new a"}, {"b", "file new b"}}));
    EXPECT_EQ(Report.Answers.size(), 2U);
}

TEST_F(JobPhase, RemembersAnAnswerForAllDirectories) {
    for (const char* name : {"a", "b"}) {
        WriteFile(Root / "from" / name / "new", name);
        WriteFile(Root / "to" / name / "old", name);
    }
    AnswerWhenShown("merge all", {PressedKey('M')});
    EXPECT_EQ(Run(CopyOf({"a", "b"})).Result, RunResult::Succeeded);
    EXPECT_EQ(Screen.Screen(), "Directory exists: " + PathOf("to/a") + " | merge all\n");
    EXPECT_EQ(Destination(), (Tree{{"a", "dir"},
                                   {"a/new", "file a"},
                                   {"a/old", "file a"},
                                   {"b", "dir"},
                                   {"b/new", "file b"},
                                   {"b/old", "file b"}}));
}

// The engine tells nobody that it waits, so the loop has to look.
TEST_F(HeldJob, IsLookedAtOftenerThanItIsDrawn) {
    Terminal::TimePoint drawn;
    Screen.Script({Reports("job"), {}, [&] { drawn = Screen.Now(); }});
    Screen.Script({Screen.Later(milliseconds(30)), {}, [&] {
                       EXPECT_LE(Screen.Now() - drawn, milliseconds(50));
                       Drive.Release();
                   }});
    ExpectOutcome(Run(), RunResult::Succeeded, "Copied 1 entry, 1.9 MB.");
}
