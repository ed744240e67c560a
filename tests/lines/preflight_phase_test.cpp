// The look before a job as the user lives through it: its end, what it found, and the question.

#include "preflight_phase.h"

#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "at_prompt.h"
#include "captured_descriptor.h"
#include "mounts.h"
#include "needs.h"
#include "no_processes_left.h"

namespace {

using std::chrono::milliseconds;

class PreflightPhase : public PhaseAtPrompt {
protected:
    FoundBeforehand Found;

    PreflightPhase() {
        WriteFile(Root / "from/file", "data");
        std::filesystem::create_directory(Root / "to");
    }

    std::optional<RunOutcome> Run(const TarvaneTransferPlan& Plan) {
        return RunPreflightPhase(Request, Plan, Context(), KnownDiscs(), Found);
    }

    void ExpectCanceledBy(std::optional<int> Signal, const std::optional<RunOutcome>& Outcome) {
        ASSERT_TRUE(Outcome);
        EXPECT_EQ(Outcome->Result, RunResult::Canceled);
        EXPECT_EQ(Outcome->Text, "Canceled before anything was touched.");
        EXPECT_EQ(Outcome->EndSignal, Signal);
    }

    // So many links that lead nowhere, in the plan's order.
    TarvaneTransferPlan DanglingLinks(int Count) {
        std::vector<std::string> names;
        for (int i = 0; i < Count; ++i) {
            names.push_back("link" + std::to_string(i));
            std::filesystem::create_symlink("nowhere", Root / "from" / names.back());
        }
        return CopyOf(names);
    }
    // The paragraph about so many of them.
    std::string Findings(int Count) const {
        std::string lines = "The job will stop at links that lead nowhere:\n";
        for (int i = 0; i < Count; ++i) {
            lines += "  " + PathOf("from/link" + std::to_string(i)) + "\n";
        }
        return lines;
    }

    TransferRequest Request;
};

} // namespace

TEST_F(PreflightPhase, HandsOnHowManyFilesAreTakenWhereNothingElseIs) {
    NeedRoot();
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountTmpfs(Root / "to", "size=1m");
    WriteFile(Root / "to/file", "old");
    Request.OnConflict = FileConflictChoice::Overwrite;
    EXPECT_FALSE(Run(CopyOf({"file"})));
    EXPECT_EQ(Found.TakenFiles, std::optional<std::uint64_t>(1));
    std::filesystem::create_hard_link(Root / "to/file", Root / "to/other");
    Found = {};
    EXPECT_FALSE(Run(CopyOf({"file"})));
    EXPECT_EQ(Found.TakenFiles, std::nullopt);
}

TEST_F(PreflightPhase, GoesOnWithoutAWordWhenNothingWasFound) {
    EXPECT_FALSE(Run(CopyOf({"file"})));
    EXPECT_EQ(Screen.Screen(), "");
    EXPECT_EQ(Report.Log.back(), "look over 1");
}

TEST_F(PreflightPhase, ReportsTheLookUntilItIsOver) {
    HeldDrive drive("header");
    Screen.Script({Reports("look 2", 3), {}, [&] { drive.Release(); }});
    EXPECT_FALSE(Run(CopyOf({"file", kTrack})));
    EXPECT_GE(Report.Count("look 2"), 3);
    EXPECT_EQ(Report.Log.back(), "look over 2");
}

TEST_F(PreflightPhase, IsWokenByTheEndOfTheLook) {
    HeldDrive drive("header");
    Screen.Script({Reports("look 2"), {}, [&] {
                       EXPECT_FALSE(Screen.IsWoken());
                       drive.Release();
                       ExpectToBeWoken();
                   }});
    EXPECT_FALSE(Run(CopyOf({"file", kTrack})));
}

TEST_F(PreflightPhase, TakesTheBlockOfTheLookAway) {
    HeldDrive drive("header");
    Screen.Script({Reports("look 2"), {}, [&] {
                       Shown.Show({{"block"}}, Screen.Size());
                       drive.Release();
                   }});
    EXPECT_FALSE(Run(CopyOf({"file", kTrack})));
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(PreflightPhase, AnswersAStatusRequest) {
    HeldDrive drive("header");
    Screen.RaiseWhen(Reports("look 2"), SIGUSR1);
    Screen.Script({Screen.Shows("Looking"), {}, [&] { drive.Release(); }});
    EXPECT_FALSE(Run(CopyOf({"file", kTrack})));
    EXPECT_EQ(Screen.Screen(), "Looking through the sources: 2 entries.\n");
}

TEST_F(PreflightPhase, IsCanceledByEscAtOnceEvenWhereTheLookHangs) {
    const HeldDrive drive("header");
    Terminal::TimePoint pressed;
    Screen.Script({Reports("look 2"), {{}, {kEscapeKey}}, [&] { pressed = Screen.Now(); }});
    ExpectCanceledBy(std::nullopt, Run(CopyOf({"file", kTrack})));
    EXPECT_LE(Screen.Now() - pressed, milliseconds(100));
    EXPECT_EQ(Report.Count("look over 2"), 0);
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(PreflightPhase, OfADryRunIsCanceledByEscToo) {
    Request.bDryRun = true;
    const HeldDrive drive("header");
    Screen.PressWhen(Reports("look 2"), {kEscapeKey});
    ExpectCanceledBy(std::nullopt, Run(CopyOf({"file", kTrack})));
}

TEST_F(PreflightPhase, IsCanceledByNoOtherKey) {
    HeldDrive drive("header");
    Screen.PressWhen(Reports("look 2"), {PressedKey('y'), kEnterKey});
    Screen.Script({Screen.Later(milliseconds(1000)), {}, [&] { drive.Release(); }});
    EXPECT_FALSE(Run(CopyOf({"file", kTrack})));
    EXPECT_EQ(Report.Log.back(), "look over 2");
}

TEST_F(PreflightPhase, IsCanceledByASignal) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const HeldDrive drive("header");
        InterfaceLoop loop(Screen, Shown);
        Report.Log.clear();
        Screen.RaiseWhen(Reports("look 2"), signal);
        ExpectCanceledBy(signal,
                         RunPreflightPhase(Request, CopyOf({"file", kTrack}),
                                           {Screen, Shown, loop, Report}, KnownDiscs(), Found));
    }
}

TEST_F(PreflightPhase, EndsTheRunWhenItCannotLook) {
    const TarvaneTransferPlan plan = CopyOf({"file"});
    for (const bool bPreflight : {true, false}) {
        Request.bPreflight = bPreflight;
        const NoProcessesLeft limit;
        const std::optional<RunOutcome> outcome = Run(plan);
        ASSERT_TRUE(outcome);
        EXPECT_EQ(outcome->Result, RunResult::Failed);
        EXPECT_EQ(outcome->Text,
                  "cannot look through the sources: Resource temporarily unavailable");
    }
    EXPECT_EQ(Report.Log, std::vector<std::string>());
}

TEST_F(PreflightPhase, ListsTenOfAKindAndAsksOnATerminal) {
    std::string shown;
    Screen.Script({Screen.Shows("Go on"), {}, [&] { shown = Screen.Screen(); }});
    Screen.PressWhen(ScriptedTerminal::Always(), {kEscapeKey});
    EXPECT_TRUE(Run(DanglingLinks(14)));
    EXPECT_EQ(shown, Findings(10) + "  and 4 more\ny yes  n or Enter no\nGo on with the copy? \n");
    EXPECT_EQ(Report.Count("look over 14"), 1);
}

TEST_F(PreflightPhase, ListsTheSameAndAsksNobodyElsewhere) {
    Screen.bAsks = false;
    EXPECT_FALSE(Run(DanglingLinks(7)));
    EXPECT_EQ(Screen.Screen(), Findings(7));
}

TEST_F(PreflightPhase, BreaksNoWordInANarrowWindow) {
    Screen.SetSize(24, 40);
    Screen.bAsks = false;
    EXPECT_FALSE(Run(DanglingLinks(1)));
    const std::string text = Screen.Written();
    EXPECT_TRUE(text.find("The job will stop at\nlinks that lead\nnowhere:\n  /") !=
                std::string::npos)
        << text;
}

TEST_F(PreflightPhase, BeginsInRedWithWhatRemovesFiles) {
    std::filesystem::create_directory(Root / "outside");
    std::filesystem::create_directory(Root / "from/tree");
    MakeFifo(Root / "from/pipe");
    MakeFifo(Root / "from/tree/pipe");
    std::filesystem::create_directory(Root / "to/tree");
    std::filesystem::create_directory_symlink(Root / "outside", Root / "from/tree/link");
    Request.bMove = true;
    Request.OnConflict = FileConflictChoice::Overwrite;
    Screen.bAsks = false;
    TarvaneTransferPlan plan = CopyOf({"tree"});
    plan.bMove = true;
    const std::optional<RunOutcome> outcome = Run(plan);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->Text, "the move would remove entries that were not selected; pass "
                             "--follow-links to allow it");
    const std::string sentence =
        "Links lead to directories, the contents of which will be copied and removed there:";
    EXPECT_EQ(Screen.Screen(), sentence + "\n  " + PathOf("from/tree/link") +
                                   "\nThe job will stop at pipes, sockets and devices:\n  " +
                                   PathOf("from/tree/pipe") + "\n");
    EXPECT_NE(Screen.Written().find(StyleOn(TextStyle::Warning) + sentence), std::string::npos);
}

TEST_F(PreflightPhase, SaysTheOneRefusalOnlyOnce) {
    WriteFile(Root / "to/file", "old");
    Request.OnConflict = FileConflictChoice::Fail;
    const std::optional<RunOutcome> outcome = Run(CopyOf({"file"}));
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->Result, RunResult::Failed);
    EXPECT_EQ(outcome->Text, "cannot create '" + PathOf("to/file") + "': File exists");
    EXPECT_EQ(Screen.Screen(), "");
    Request.bDryRun = true;
    EXPECT_EQ(Run(CopyOf({"file"}))->Result, RunResult::Failed);
    EXPECT_EQ(Screen.Screen(),
              "Names at the destination are taken:\n  " + PathOf("to/file") + "\n");
}

TEST_F(PreflightPhase, ListsTenRefusalsAndAsksNobody) {
    std::vector<std::string> names;
    std::string lines = "Names at the destination are taken:\n";
    for (int i = 0; i < 14; ++i) {
        names.push_back("name" + std::to_string(i));
        WriteFile(Root / "from" / names.back(), "new");
        WriteFile(Root / "to" / names.back(), "old");
        lines += i < 10 ? "  " + PathOf("to/" + names.back()) + "\n" : "";
    }
    Request.OnConflict = FileConflictChoice::Fail;
    const std::optional<RunOutcome> outcome = Run(CopyOf(names));
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->Text, "nothing was touched: 14 names are in the way");
    EXPECT_EQ(Screen.Screen(), lines + "  and 4 more\n");
}

TEST_F(PreflightPhase, SaysThatItMakesDirectoriesAndAsksNobody) {
    std::filesystem::remove(Root / "to");
    EXPECT_FALSE(Run(CopyOf({"file"})));
    EXPECT_EQ(Screen.Screen(),
              "The job makes directories that do not exist:\n  " + PathOf("to") + "\n");
}

// Leaving the look out leaves out what informs.
TEST_F(PreflightPhase, GuardsWhenItIsLeftOut) {
    Request.bPreflight = false;
    EXPECT_FALSE(Run(DanglingLinks(1)));
    EXPECT_EQ(Screen.Screen(), "");
    std::filesystem::create_symlink("nowhere", Root / "to/file");
    const std::optional<RunOutcome> outcome = Run(CopyOf({"file"}));
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->Text, "not writing through dangling symlink '" + PathOf("to/file") + "'");
}

TEST_F(PreflightPhase, PrintsFindingsThatNobodyIsAskedAboutWhereMessagesGo) {
    Screen.bOutputTerminal = false;
    Request.bDryRun = true;
    const CapturedDescriptor log(STDERR_FILENO);
    EXPECT_TRUE(Run(DanglingLinks(1)));
    EXPECT_EQ(log.Text(), Findings(1));
    EXPECT_EQ(Screen.Written(), "");
}

TEST_F(PreflightPhase, EndsADryRunAsTheVerdictSays) {
    Request.bDryRun = true;
    const std::optional<RunOutcome> clean = Run(CopyOf({"file"}));
    ASSERT_TRUE(clean);
    EXPECT_EQ(clean->Result, RunResult::Succeeded);
    EXPECT_EQ(clean->Text, "Would copy 1 entry, 4 B (4 bytes).");
    const std::optional<RunOutcome> failing = Run(DanglingLinks(1));
    ASSERT_TRUE(failing);
    EXPECT_EQ(failing->Result, RunResult::Failed);
    EXPECT_EQ(Screen.Screen(), Findings(1));
}

namespace {

class GoOnQuestion : public PreflightPhase {
protected:
    static constexpr const char* kQuestion = "Go on with the copy?";

    std::optional<RunOutcome> RunToQuestion() { return Run(DanglingLinks(1)); }

    void ExpectAnswered(const std::string& Answer) {
        EXPECT_EQ(Screen.Screen(), Findings(1) + kQuestion + " " + Answer + "\n");
        EXPECT_TRUE(Screen.IsThrough());
    }
    void ExpectNo(const std::optional<RunOutcome>& Outcome) {
        ASSERT_TRUE(Outcome);
        EXPECT_EQ(Outcome->Result, RunResult::Canceled);
        EXPECT_EQ(Outcome->Text, "Canceled before anything was touched.");
        EXPECT_EQ(Outcome->EndSignal, std::nullopt);
        ExpectAnswered("no");
    }
};

} // namespace

TEST_F(GoOnQuestion, GoesOnWithYes) {
    AnswerWhenShown(kQuestion, {PressedKey('y')});
    EXPECT_FALSE(RunToQuestion());
    ExpectAnswered("yes");
}

TEST_F(GoOnQuestion, StandsBelowItsFindingsOnTheTerminalWhereMessagesGoElsewhere) {
    Screen.bOutputTerminal = false;
    AnswerWhenShown(kQuestion, {PressedKey('y')});
    const CapturedDescriptor log(STDERR_FILENO);
    EXPECT_FALSE(RunToQuestion());
    ExpectAnswered("yes");
    EXPECT_EQ(log.Text(), Findings(1) + kQuestion + " yes\n");
}

TEST_F(GoOnQuestion, EndsWithNo) {
    AnswerWhenShown(kQuestion, {PressedKey('n')});
    ExpectNo(RunToQuestion());
}

TEST_F(GoOnQuestion, EndsWithEnterAlone) {
    AnswerWhenShown(kQuestion, {kEnterKey});
    ExpectNo(RunToQuestion());
}

TEST_F(GoOnQuestion, EndsWithEscAtOnce) {
    Screen.PressWhen(Screen.Shows(kQuestion), {kEscapeKey});
    ExpectNo(RunToQuestion());
}

TEST_F(GoOnQuestion, TakesTheFirstAnswerOfARound) {
    AnswerWhenShown(kQuestion, {PressedKey('x'), PressedKey('n'), PressedKey('y')});
    ExpectNo(RunToQuestion());
}

TEST_F(GoOnQuestion, TakesNoLetterWithAltOrCtrl) {
    AnswerWhenShown(kQuestion, {{KeyCode::Alt, "y"}, {KeyCode::Control, "y"}, PressedKey('n')});
    ExpectNo(RunToQuestion());
}

TEST_F(GoOnQuestion, IsNotAnsweredByWhatWasTypedBefore) {
    Screen.PressWhen(Screen.Shows(kQuestion), {PressedKey('y')});
    Screen.PressWhen(Screen.Later(milliseconds(500)), {PressedKey('y')});
    Screen.PressWhen(Screen.Later(milliseconds(500)), {PressedKey('y')});
    Screen.PressWhen(Screen.Later(milliseconds(700)), {PressedKey('n')});
    ExpectNo(RunToQuestion());
}

TEST_F(GoOnQuestion, IsShownAtOnceWithTheCursorBehindIt) {
    Screen.Script({Screen.Shows(kQuestion), {{}, {kEscapeKey}}, [&] {
                       EXPECT_TRUE(Screen.Written().ends_with("\rGo on with the copy? "));
                   }});
    ExpectNo(RunToQuestion());
}

TEST_F(GoOnQuestion, StandsAloneInASmallWindow) {
    std::string shown;
    Screen.SetSize(300, 1);
    Screen.Script({Screen.Shows(kQuestion), {{}, {kEscapeKey}}, [&] { shown = Screen.Screen(); }});
    ExpectNo(RunToQuestion());
    EXPECT_EQ(shown, Findings(1) + kQuestion + " \n");
}

TEST_F(GoOnQuestion, EndsWithASignal) {
    Screen.RaiseWhen(Screen.Shows(kQuestion), SIGTERM);
    ExpectCanceledBy(SIGTERM, RunToQuestion());
    ExpectAnswered("no");
}

TEST_F(GoOnQuestion, AnswersAStatusRequest) {
    Screen.RaiseWhen(Screen.Shows(kQuestion), SIGUSR1);
    Screen.PressWhen(Screen.Shows("Waiting for an answer.\ny yes"), {kEscapeKey});
    RunToQuestion();
    EXPECT_TRUE(Screen.IsThrough());
}

TEST_F(GoOnQuestion, StandsOnATerminalThatCannotRedraw) {
    Screen.bRedraws = false;
    AnswerWhenShown(kQuestion, {PressedKey('y')});
    EXPECT_FALSE(RunToQuestion());
    EXPECT_EQ(Screen.Screen(),
              Findings(1) + "y yes  n or Enter no\n" + kQuestion + "\n" + kQuestion + " yes\n");
}

TEST_F(GoOnQuestion, StopsInTheBackgroundAndAsksWhenItComesBack) {
    Screen.bForeground = false;
    AnswerWhenShown(kQuestion, {PressedKey('y')});
    EXPECT_FALSE(RunToQuestion());
    EXPECT_EQ(Screen.Calls(),
              (std::vector<std::string>{"stop " + std::to_string(SIGTTIN), "keys"}));
    ExpectAnswered("yes");
}
