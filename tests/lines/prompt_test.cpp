// What a prompt leaves on the screen, and on standard error where that is no terminal.

#include "prompt.h"

#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "captured_descriptor.h"
#include "scripted_terminal.h"

namespace {

// Shows in the exit status what the program has ended by.
int StatusOf(const RunOutcome& Outcome) {
    return Outcome.Result == RunResult::Canceled ? 1000 + Outcome.EndSignal.value_or(0) : 0;
}

class PromptTest : public testing::Test {
protected:
    PromptTest() { std::signal(SIGPIPE, SIG_IGN); }

    void Show(const std::vector<std::string>& Texts) {
        std::vector<ScreenLine> lines;
        for (const std::string& text : Texts) {
            lines.push_back({text});
        }
        Shown.Show(lines, Screen.Size());
    }

    // The status that the program exits with; -1 when it stays.
    int StatusOfLeavingBy(int Signal) {
        try {
            Shown.Leave(Signal);
        } catch (const ScriptedExit& exited) {
            return exited.Status;
        }
        return -1;
    }

    ScriptedTerminal Screen;
    Prompt Shown{Screen, StatusOf};
};

} // namespace

TEST_F(PromptTest, ShowsABlockInPlaceOfTheOneBefore) {
    Show({"one", "two"});
    Show({"three"});
    EXPECT_EQ(Screen.Screen(), "three\n");
}

TEST_F(PromptTest, LeavesNoBlockWhenAnExceptionEndsIt) {
    {
        Prompt other(Screen, StatusOf);
        other.Show({{"question"}, {"name: x"}}, Screen.Size(), BlockCursor{1, "name:"});
    }
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(PromptTest, LeavesTheCursorWhereItIsToldTo) {
    Shown.Show({{"above"}, {"name: x"}}, Screen.Size(), BlockCursor{1, "name:"});
    EXPECT_TRUE(Screen.Written().ends_with("\rname:")) << Screen.Written();
}

TEST_F(PromptTest, PrintsALineAboveTheBlockAndAsksForTheBlockAgain) {
    Show({"block"});
    Shown.PrintLine("line");
    EXPECT_EQ(Screen.Screen(), "line\n");
    EXPECT_TRUE(Shown.TakeFrameRequest());
    EXPECT_FALSE(Shown.TakeFrameRequest());
    Show({"block"});
    EXPECT_EQ(Screen.Screen(), "line\nblock\n");
}

TEST_F(PromptTest, AsksForNoFrameWhenNothingWasPrinted) {
    Show({"block"});
    EXPECT_FALSE(Shown.TakeFrameRequest());
}

TEST_F(PromptTest, CleansWhatItPrints) {
    Shown.PrintLine("a\x1b[2Jb\nc");
    EXPECT_EQ(Screen.Screen(), "a?[2Jb?c\n");
}

TEST_F(PromptTest, PutsTheProgramsNameBeforeAMessage) {
    Shown.PrintMessage("no disc");
    EXPECT_EQ(Screen.Screen(), "tarvane: no disc\n");
}

TEST_F(PromptTest, LeavesTheWordsOfASentenceWhole) {
    Screen.SetSize(20, 24);
    Shown.PrintSentence("Do not unplug the disk /a/path/that/is/long yet.");
    Shown.PrintMessage("cannot create it\n");
    EXPECT_EQ(Screen.Screen(), "Do not unplug the\ndisk\n/a/path/that/is/long\nyet.\n"
                               "tarvane: cannot\ncreate it?\n");
}

TEST_F(PromptTest, ShowsPartsAsFarAsThereIsRoom) {
    Screen.SetSize(80, 1);
    Shown.ShowParts({{1, {{"less"}}}, {2, {{"more"}}}});
    EXPECT_EQ(Screen.Screen(), "more\n");
}

TEST_F(PromptTest, DrawsNothingInTheBackgroundOrBehindAStoppedOutput) {
    Screen.bForeground = false;
    Show({"block"});
    Screen.bForeground = true;
    Screen.bOutputStopped = true;
    Show({"block"});
    EXPECT_EQ(Screen.Written(), "");
}

TEST_F(PromptTest, TakesTheBlockAway) {
    Show({"one", "two"});
    Shown.Clear();
    EXPECT_EQ(Screen.Screen(), "");
}

TEST_F(PromptTest, LeavesAnAbandonedBlockAlone) {
    Show({"one"});
    Shown.Abandon();
    Show({"two"});
    EXPECT_EQ(Screen.Written(), "\x1b[?7l\rone\x1b[J\x1b[?7h\r\x1b[?7l\rtwo\x1b[J\x1b[?7h\r");
}

TEST_F(PromptTest, RingsTheBell) {
    Shown.RingBell();
    EXPECT_EQ(Screen.Written(), "\a");
}

TEST_F(PromptTest, LetsTheSignalThatAskedForTheEndComeOnceMore) {
    EndRequest requests;
    requests.Interrupt();
    Shown.Close(requests);
    EXPECT_EQ(Screen.Calls(), (std::vector<std::string>{
                                  "closed", "signal " + std::to_string(SIGINT) + " after 2 s"}));
}

TEST_F(PromptTest, WaitsForTheTerminalInTheEnd) {
    Shown.Finish();
    EXPECT_EQ(Screen.Calls(), std::vector<std::string>{"finished"});
}

TEST_F(PromptTest, TakesTheBlockAwayAndGivesTheTerminalBackWhenItCloses) {
    Show({"block"});
    Screen.EnterKeyMode();
    Shown.Close(EndRequest());
    EXPECT_EQ(Screen.Screen(), "");
    EXPECT_EQ(Screen.Calls(), (std::vector<std::string>{"keys", "no keys", "closed"}));
    Shown.PrintLine("done");
    EXPECT_EQ(Screen.Screen(), "done\n");
}

TEST_F(PromptTest, LeavesTheBlockBehindWithItsLastWords) {
    Show({"one", "two"});
    Shown.SetPartingSentence([] { return "left early"; });
    EXPECT_EQ(StatusOfLeavingBy(SIGTERM), 1000 + SIGTERM);
    EXPECT_EQ(Screen.Screen(), "one\ntwo\ntarvane: left early\n");
    EXPECT_EQ(Screen.Calls(), std::vector<std::string>{"closed"});
}

TEST_F(PromptTest, LeavesWithoutAWordWhenThereIsNothingToSay) {
    Show({"block"});
    EXPECT_EQ(StatusOfLeavingBy(SIGINT), 1000 + SIGINT);
    EXPECT_EQ(Screen.Screen(), "block\n");
}

TEST_F(PromptTest, DoesNotTouchAScreenThatBelongsToOthersWhenItLeaves) {
    Show({"block"});
    const std::string before = Screen.Written();
    Screen.bForeground = false;
    EXPECT_EQ(StatusOfLeavingBy(SIGINT), 1000 + SIGINT);
    EXPECT_EQ(Screen.Written(), before);
}

namespace {

class PlainPrompt : public PromptTest {
protected:
    PlainPrompt() { Screen.bRedraws = false; }
};

} // namespace

TEST_F(PlainPrompt, RepeatsNoLineThatStandsAlready) {
    Show({"title", "facts"});
    Show({"title", "facts"});
    Show({"title", "other facts"});
    Show({"title", "other facts", "answer"});
    EXPECT_EQ(Screen.Screen(), "title\nfacts\nother facts\nanswer\n");
}

TEST_F(PlainPrompt, ShowsAllOfTheNextBlock) {
    Show({"title"});
    Shown.Clear();
    Show({"title"});
    EXPECT_EQ(Screen.Screen(), "title\ntitle\n");
}

TEST_F(PlainPrompt, ShowsAllOfItsBlockAgainAfterAStop) {
    Show({"title"});
    Shown.Abandon();
    Show({"title"});
    EXPECT_EQ(Screen.Screen(), "title\ntitle\n");
}

namespace {

class PromptWithoutTerminal : public PromptTest {
protected:
    PromptWithoutTerminal() { Screen.bOutputTerminal = Screen.bRedraws = Screen.bAsks = false; }
};

// Messages go to a file, and somebody sits at the terminal.
class PromptBesideLog : public PromptTest {
protected:
    PromptBesideLog() { Screen.bOutputTerminal = false; }

    // What Step leaves in the file.
    template <typename Function>
    static std::string LogOf(const Function& Step) {
        const CapturedDescriptor captured(STDERR_FILENO);
        Step();
        return captured.Text();
    }
};

} // namespace

TEST_F(PromptWithoutTerminal, PrintsPlainLinesAndNothingElse) {
    std::string errors;
    {
        const CapturedDescriptor captured(STDERR_FILENO);
        Show({"block"});
        Shown.PrintLine("a\x1b[2Jb");
        Shown.RingBell();
        errors = captured.Text();
    }
    EXPECT_EQ(errors, "a?[2Jb\n");
    EXPECT_EQ(Screen.Written(), "");
    EXPECT_FALSE(Shown.TakeFrameRequest());
}

TEST_F(PromptWithoutTerminal, PrintsWhatBelongsToQuestionsOnce) {
    const CapturedDescriptor captured(STDERR_FILENO);
    Shown.PrintBesideQuestions("finding");
    EXPECT_EQ(captured.Text(), "finding\n");
    EXPECT_EQ(Screen.Written(), "");
}

TEST_F(PromptTest, PrintsWhatBelongsToQuestionsOnce) {
    Shown.PrintBesideQuestions("finding");
    EXPECT_EQ(Screen.Screen(), "finding\n");
}

TEST_F(PromptBesideLog, ShowsQuestionsOnTheTerminalAndPrintsTheRestIntoTheLog) {
    EXPECT_EQ(LogOf([this] {
                  Show({"question"});
                  Shown.PrintLine("progress");
              }),
              "progress\n");
    EXPECT_EQ(Screen.Screen(), "question\n");
}

TEST_F(PromptBesideLog, PrintsAnAnswerInPlaceOfItsQuestionAndIntoTheLog) {
    Show({"question", "answers"});
    EXPECT_EQ(LogOf([this] { Shown.PrintBesideQuestions("question a\x1b"); }), "question a?\n");
    EXPECT_EQ(Screen.Screen(), "question a?\n");
    EXPECT_TRUE(Shown.TakeFrameRequest());
}

TEST_F(PromptBesideLog, LeavesTheQuestionBehindWhenItLeaves) {
    Show({"question"});
    EXPECT_EQ(LogOf([this] { StatusOfLeavingBy(SIGINT); }), "");
    EXPECT_TRUE(Screen.Written().ends_with("\r\n")) << Screen.Written();
}

TEST_F(PromptWithoutTerminal, PrintsASentenceInOneLine) {
    Screen.SetSize(20, 24);
    std::string errors;
    {
        const CapturedDescriptor captured(STDERR_FILENO);
        Shown.PrintSentence("Do not unplug the disk yet.");
        errors = captured.Text();
    }
    EXPECT_EQ(errors, "Do not unplug the disk yet.\n");
}

TEST_F(PromptWithoutTerminal, PrintsItsLastWords) {
    Shown.SetPartingSentence([] { return "left early"; });
    std::string errors;
    int status = 0;
    {
        const CapturedDescriptor captured(STDERR_FILENO);
        status = StatusOfLeavingBy(SIGHUP);
        errors = captured.Text();
    }
    EXPECT_EQ(status, 1000 + SIGHUP);
    EXPECT_EQ(errors, "tarvane: left early\n");
}

TEST_F(PromptWithoutTerminal, TellsThatItsReaderHasGone) {
    bool bBefore = false;
    bool bAfter = true;
    {
        const CapturedDescriptor captured(STDERR_FILENO, BrokenPipe());
        bBefore = Shown.Pump();
        Shown.PrintLine("line");
        bAfter = Shown.Pump();
    }
    EXPECT_TRUE(bBefore);
    EXPECT_FALSE(bAfter);
}

TEST_F(PromptWithoutTerminal, WritesWhatWaitsAsSoonAsTheReaderTakesIt) {
    const auto [reader, writer] = FullPipe();
    std::string received;
    {
        const CapturedDescriptor captured(STDERR_FILENO, writer);
        Shown.PrintLine("line");
        ReadPipe(reader);
        Shown.Pump();
        received = ReadPipe(reader);
    }
    close(reader);
    EXPECT_EQ(received, "line\n");
}

TEST_F(PromptWithoutTerminal, FinishesOnlyWhenTheReaderHasEverything) {
    const auto [reader, writer] = FullPipe();
    std::string received;
    std::thread reading;
    {
        const CapturedDescriptor captured(STDERR_FILENO, writer);
        Shown.PrintLine("line");
        reading = std::thread([&received, end = reader] { received = ReadPipe(end); });
        Shown.Finish();
    }
    reading.join();
    received += ReadPipe(reader);
    close(reader);
    EXPECT_TRUE(received.ends_with(".line\n"));
}
