// The look before a job as the user lives through it: its end, what it found, and the question.

#include "preflight_phase.h"

#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "at_prompt.h"
#include "captured_descriptor.h"
#include "no_processes_left.h"

namespace {

using std::chrono::milliseconds;

class PreflightPhase : public PhaseAtPrompt {
protected:
    UnreadDirectories Unread;

    PreflightPhase() { WriteFile(Root / "from/file", "data"); }

    std::optional<RunOutcome> Run(const TarvaneTransferPlan& Plan) {
        return RunPreflightPhase(Request, Plan, Context(), KnownDiscs(), Unread);
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
    std::string Findings(int Count) const {
        std::string lines;
        for (int i = 0; i < Count; ++i) {
            lines += "tarvane: the job will stop at the link '" +
                     PathOf("from/link" + std::to_string(i)) + "', which leads nowhere\n";
        }
        return lines;
    }

    TransferRequest Request;
};

} // namespace

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
                                           {Screen, Shown, loop, Report}, KnownDiscs(), Unread));
    }
}

TEST_F(PreflightPhase, EndsTheRunWhenItCannotLook) {
    const TarvaneTransferPlan plan = CopyOf({"file"});
    const NoProcessesLeft limit;
    const std::optional<RunOutcome> outcome = Run(plan);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->Result, RunResult::Failed);
    EXPECT_EQ(outcome->Text, "cannot look through the sources: Resource temporarily unavailable");
    EXPECT_EQ(Report.Log, std::vector<std::string>());
}

TEST_F(PreflightPhase, ListsFiveOfAKindAndAsksOnATerminal) {
    std::string shown;
    Screen.Script({Screen.Shows("Go on"), {}, [&] { shown = Screen.Screen(); }});
    Screen.PressWhen(ScriptedTerminal::Always(), {kEscapeKey});
    EXPECT_TRUE(Run(DanglingLinks(7)));
    EXPECT_EQ(shown, Findings(5) + "tarvane: and 2 more of these\ny yes  n or Enter no\nGo on with "
                                   "the copy? \n");
    EXPECT_EQ(Report.Count("look over 7"), 1);
}

TEST_F(PreflightPhase, ListsAllAndAsksNobodyElsewhere) {
    Screen.bAsks = false;
    EXPECT_FALSE(Run(DanglingLinks(7)));
    EXPECT_EQ(Screen.Screen(), Findings(7));
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
