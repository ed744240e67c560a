// The loop on a scripted terminal: every wish of the user and the system, and who is told of it.

#include "interface_loop.h"

#include <chrono>
#include <csignal>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "scripted_terminal.h"

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using Words = std::vector<std::string>;

// Thrown where the program would have left.
struct Left {
    int Signal = 0;
};

class LoggingSurface : public LoopSurface {
public:
    explicit LoggingSurface(Words& LogToWrite) : Log(LogToWrite) {}

    bool Pump() override { return !bReaderGone; }
    void Clear() override { Log.emplace_back("clear"); }
    void Abandon() override { Log.emplace_back("abandon"); }
    void PrintLine(const std::string& Text) override { Log.push_back("print " + Text); }
    bool TakeFrameRequest() override { return std::exchange(bWantsFrame, false); }
    void Leave(int Signal) override { throw Left{Signal}; }

    bool bReaderGone = false;
    bool bWantsFrame = false;

private:
    Words& Log;
};

// Goes on for so long and writes down what it is told.
class LoggingActivity : public Activity {
public:
    LoggingActivity(Terminal& TerminalToUse, Words& LogToWrite, milliseconds Duration)
        : Screen(TerminalToUse), Log(LogToWrite), Start(Screen.Now()), End(Start + Duration) {}

    void TakeKey(const KeyPress& Key) override { Log.push_back("key " + Key.Text); }
    bool IsOver() override { return (OverWhen && OverWhen()) || Screen.Now() >= End; }
    void Draw() override {
        DrawnAt.push_back(std::chrono::duration_cast<milliseconds>(Screen.Now() - Start));
        Log.emplace_back("draw");
    }
    std::string StatusText() override { return "going on"; }
    int Descriptor() const override { return WakingDescriptor; }
    microseconds LongestWait() const override { return Longest; }
    bool NeedsAnswer() const override { return bAsks; }

    std::vector<milliseconds> DrawnAt;
    microseconds Longest = std::chrono::hours(1);
    int WakingDescriptor = -1;
    bool bAsks = false;
    std::function<bool()> OverWhen;

private:
    Terminal& Screen;
    Words& Log;
    Terminal::TimePoint Start;
    Terminal::TimePoint End;
};

class InterfaceLoopTest : public testing::Test {
protected:
    LoggingActivity For(milliseconds Duration) { return {Screen, Log, Duration}; }

    // Runs until the loop leaves by a signal; 0 when it does not.
    int SignalThatLeaves(milliseconds Duration) {
        LoggingActivity activity = For(Duration);
        try {
            Loop.Run(activity);
        } catch (const Left& left) {
            return left.Signal;
        }
        return 0;
    }

    Words Log;
    ScriptedTerminal Screen;
    LoggingSurface Surface{Log};
    InterfaceLoop Loop{Screen, Surface};
};

using Times = std::vector<milliseconds>;

TEST_F(InterfaceLoopTest, DrawsNothingForWhatIsOverAtOnce) {
    LoggingActivity activity = For(milliseconds(39));
    Loop.Run(activity);
    EXPECT_EQ(Log, Words());
}

TEST_F(InterfaceLoopTest, DrawsTenTimesASecond) {
    LoggingActivity activity = For(milliseconds(350));
    Loop.Run(activity);
    EXPECT_EQ(activity.DrawnAt,
              (Times{milliseconds(40), milliseconds(140), milliseconds(240), milliseconds(340)}));
}

TEST_F(InterfaceLoopTest, DrawsAtOnceWhenHurried) {
    LoggingActivity activity = For(milliseconds(90));
    Loop.HurryFrame();
    Loop.Run(activity);
    EXPECT_EQ(activity.DrawnAt, Times{milliseconds(0)});
}

TEST_F(InterfaceLoopTest, DrawsAgainWhereALineHasTakenThePlace) {
    LoggingActivity activity = For(milliseconds(100));
    Screen.Script({Screen.After(milliseconds(40)), {}, [this] { Surface.bWantsFrame = true; }});
    Loop.Run(activity);
    EXPECT_EQ(activity.DrawnAt, (Times{milliseconds(40), milliseconds(40)}));
}

TEST_F(InterfaceLoopTest, LooksAsOftenAsTheActivityAsks) {
    LoggingActivity activity = For(milliseconds(30));
    activity.Longest = milliseconds(15);
    const Terminal::TimePoint start = Screen.Now();
    Loop.Run(activity);
    EXPECT_EQ(Screen.Now() - start, milliseconds(30));
}

TEST_F(InterfaceLoopTest, WakesWhenTheDescriptorIsReadable) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    LoggingActivity activity = For(milliseconds(1000));
    activity.WakingDescriptor = ends[0];
    Screen.Script({Screen.After(milliseconds(40)), {}, [&] {
                       EXPECT_FALSE(Screen.IsWoken());
                       EXPECT_EQ(write(ends[1], "x", 1), 1);
                       EXPECT_TRUE(Screen.IsWoken());
                   }});
    activity.OverWhen = [&ends] {
        pollfd ready{ends[0], POLLIN, 0};
        return poll(&ready, 1, 0) > 0;
    };
    const Terminal::TimePoint start = Screen.Now();
    Loop.Run(activity);
    EXPECT_EQ(Screen.Now() - start, milliseconds(40));
    close(ends[0]);
    close(ends[1]);
}

TEST_F(InterfaceLoopTest, HandsKeysOverInTheirOrderAndDrawsAtOnce) {
    LoggingActivity activity = For(milliseconds(30));
    Screen.PressWhen(ScriptedTerminal::Always(), {PressedKey('a'), PressedKey('b')});
    Loop.Run(activity);
    EXPECT_EQ(Log, (Words{"key a", "key b", "draw"}));
}

TEST_F(InterfaceLoopTest, TakesKeysFromATerminal) {
    LoggingActivity activity = For(milliseconds(10));
    Loop.Run(activity);
    EXPECT_EQ(Screen.Calls(), Words{"keys"});
}

TEST_F(InterfaceLoopTest, LeavesTheKeysAloneWhereNoTerminalShowsAnything) {
    Screen.bOutputTerminal = false;
    LoggingActivity activity = For(milliseconds(200));
    Loop.Run(activity);
    EXPECT_EQ(Screen.Calls(), Words());
}

TEST_F(InterfaceLoopTest, TakesTheKeysForAnAnswerOnlyWhereMessagesGoElsewhere) {
    Screen.bOutputTerminal = false;
    LoggingActivity activity = For(milliseconds(500));
    Screen.Script({Screen.After(milliseconds(100)), {}, [&] { activity.bAsks = true; }});
    Screen.PressWhen(Screen.Later(milliseconds(150)), {PressedKey('y')});
    Screen.Script({ScriptedTerminal::Always(), {}, [&] { activity.bAsks = false; }});
    Loop.Run(activity);
    EXPECT_EQ(Screen.Calls(), (Words{"keys", "no keys"}));
    EXPECT_EQ(std::count(Log.begin(), Log.end(), "key y"), 1);
}

TEST_F(InterfaceLoopTest, TakesKeysWhenItComesToTheForeground) {
    Screen.bForeground = false;
    LoggingActivity activity = For(milliseconds(300));
    Screen.Script({Screen.After(milliseconds(100)), {}, [this] { Screen.bForeground = true; }});
    Loop.Run(activity);
    EXPECT_EQ(Screen.Calls(), Words{"keys"});
}

TEST_F(InterfaceLoopTest, AnInterruptAsksForTheEndAndLeavesTheRestToTheActivity) {
    LoggingActivity activity = For(milliseconds(10000));
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGINT);
    Loop.Run(activity);
    ASSERT_TRUE(Loop.Requests().IsAsked());
    EXPECT_EQ(Loop.Requests().Signal(), SIGINT);
}

TEST_F(InterfaceLoopTest, LeavesAtTheSecondInterrupt) {
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGINT);
    Screen.RaiseWhen(Screen.Later(milliseconds(100)), SIGINT);
    EXPECT_EQ(SignalThatLeaves(milliseconds(1000)), SIGINT);
}

TEST_F(InterfaceLoopTest, TakesInterruptsThatComeTogetherForOne) {
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGINT);
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGINT);
    EXPECT_EQ(SignalThatLeaves(milliseconds(1000)), 0);
    ASSERT_TRUE(Loop.Requests().IsAsked());
    EXPECT_EQ(Loop.Requests().Signal(), SIGINT);
}

TEST_F(InterfaceLoopTest, LeavesTwoSecondsAfterATerminatingSignal) {
    for (const int signal : {SIGTERM, SIGHUP}) {
        InterfaceLoop loop(Screen, Surface);
        Screen.RaiseWhen(ScriptedTerminal::Always(), signal);
        LoggingActivity longer = For(milliseconds(10000));
        const Terminal::TimePoint start = Screen.Now();
        try {
            loop.Run(longer);
            ADD_FAILURE() << "it does not leave";
        } catch (const Left& left) {
            EXPECT_EQ(left.Signal, signal);
            EXPECT_GE(Screen.Now() - start, milliseconds(2000));
            EXPECT_LE(Screen.Now() - start, milliseconds(2100));
        }
    }
}

TEST_F(InterfaceLoopTest, GivesTheActivityItsTimeAfterATerminatingSignal) {
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGTERM);
    EXPECT_EQ(SignalThatLeaves(milliseconds(1900)), 0);
    EXPECT_EQ(Loop.Requests().Signal(), SIGTERM);
}

TEST_F(InterfaceLoopTest, LeavesAtOnceWhenItIsToQuit) {
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGQUIT);
    const Terminal::TimePoint start = Screen.Now();
    EXPECT_EQ(SignalThatLeaves(milliseconds(1000)), SIGQUIT);
    EXPECT_EQ(Screen.Now(), start);
}

TEST_F(InterfaceLoopTest, StopsWithoutItsBlockAndKeysAndComesBackWithThem) {
    LoggingActivity activity = For(milliseconds(90));
    Screen.RaiseWhen(Screen.After(milliseconds(40)), SIGTSTP);
    Loop.Run(activity);
    EXPECT_EQ(Log, (Words{"draw", "clear", "abandon", "draw"}));
    EXPECT_EQ(activity.DrawnAt, (Times{milliseconds(40), milliseconds(40)}));
    EXPECT_EQ(Screen.Calls(),
              (Words{"keys", "no keys", "stop " + std::to_string(SIGTSTP), "keys"}));
}

TEST_F(InterfaceLoopTest, TouchesNothingWhenItIsStoppedInTheBackground) {
    Screen.bForeground = false;
    Screen.bForegroundAfterStop = false;
    LoggingActivity activity = For(milliseconds(30));
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGTSTP);
    Loop.Run(activity);
    EXPECT_EQ(Log, (Words{"abandon", "draw"}));
    EXPECT_EQ(Screen.Calls(), Words{"stop " + std::to_string(SIGTSTP)});
}

// After a stop that no signal announces.
TEST_F(InterfaceLoopTest, SetsTheKeysAndDrawsAnewWhenItIsContinued) {
    LoggingActivity activity = For(milliseconds(30));
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGCONT);
    Loop.Run(activity);
    EXPECT_EQ(Log, (Words{"abandon", "draw"}));
    EXPECT_EQ(Screen.Calls(), (Words{"keys", "no keys", "keys"}));
}

TEST_F(InterfaceLoopTest, DrawsAtOnceInAWindowOfAnotherSize) {
    LoggingActivity activity = For(milliseconds(30));
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGWINCH);
    Loop.Run(activity);
    EXPECT_EQ(activity.DrawnAt, Times{milliseconds(0)});
}

TEST_F(InterfaceLoopTest, AnswersAStatusRequestWithOneLine) {
    LoggingActivity activity = For(milliseconds(300));
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGUSR1);
    Loop.Run(activity);
    EXPECT_EQ(std::count(Log.begin(), Log.end(), "print going on"), 1);
}

TEST_F(InterfaceLoopTest, EndsByAHangUpWhenTheTerminalIsClosed) {
    Screen.bClosed = true;
    EXPECT_EQ(SignalThatLeaves(milliseconds(10000)), SIGHUP);
}

TEST_F(InterfaceLoopTest, EndsByTheLatestSignalAfterTheTerminalIsClosed) {
    Screen.bClosed = true;
    Screen.RaiseWhen(Screen.After(milliseconds(500)), SIGTERM);
    EXPECT_EQ(SignalThatLeaves(milliseconds(10000)), SIGTERM);
}

// As under nohup.
TEST_F(InterfaceLoopTest, GoesOnWithoutATerminalWhereHangUpsAreIgnored) {
    Screen.bClosed = true;
    Screen.IgnoredSignals = {SIGHUP};
    EXPECT_EQ(SignalThatLeaves(milliseconds(10000)), 0);
    EXPECT_FALSE(Loop.Requests().IsAsked());
}

TEST_F(InterfaceLoopTest, EndsLikeAWriterToABrokenPipeWhenNobodyReadsItsMessages) {
    Screen.bOutputTerminal = false;
    Surface.bReaderGone = true;
    EXPECT_EQ(SignalThatLeaves(milliseconds(10000)), SIGPIPE);
}

TEST_F(InterfaceLoopTest, StopsForAnAnswerInTheBackgroundBeforeItDraws) {
    Screen.bForeground = false;
    LoggingActivity activity = For(milliseconds(90));
    activity.bAsks = true;
    Loop.HurryFrame();
    Loop.Run(activity);
    EXPECT_EQ(Log, (Words{"abandon", "draw"}));
    EXPECT_EQ(Screen.Calls(), (Words{"stop " + std::to_string(SIGTTIN), "keys"}));
}

TEST_F(InterfaceLoopTest, DrawsNothingAfterAStopBeforeItKnowsWhatHasComeMeanwhile) {
    Screen.bForeground = false;
    LoggingActivity activity = For(milliseconds(30));
    activity.bAsks = true;
    activity.OverWhen = [this] { return Loop.Requests().IsAsked(); };
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGTERM);
    Loop.HurryFrame();
    Loop.Run(activity);
    EXPECT_EQ(Log, Words{"abandon"});
}

// As a shell ends a stopped job: both signals come before the program is in the foreground again.
TEST_F(InterfaceLoopTest, StopsForNoAnswerOnceItIsToEnd) {
    Screen.bForegroundAfterStop = false;
    // The question is there until what asks it has been canceled.
    LoggingActivity activity = For(milliseconds(30));
    activity.bAsks = true;
    const auto toTheBackground = [this] { Screen.bForeground = false; };
    Screen.Script({ScriptedTerminal::Always(), {{SIGTSTP}, {}}, toTheBackground});
    Screen.RaiseWhen(ScriptedTerminal::Always(), SIGTERM);
    Loop.Run(activity);
    EXPECT_EQ(Screen.Calls(), (Words{"keys", "no keys", "stop " + std::to_string(SIGTSTP)}));
    EXPECT_EQ(Loop.Requests().Signal(), SIGTERM);
}

TEST_F(InterfaceLoopTest, DrawsAtOnceAfterAStopForAnAnswer) {
    Screen.bForeground = false;
    LoggingActivity activity = For(milliseconds(30));
    activity.bAsks = true;
    Loop.Run(activity);
    EXPECT_EQ(activity.DrawnAt, Times{milliseconds(0)});
}

TEST_F(InterfaceLoopTest, DoesNotStopForAnAnswerInTheForeground) {
    LoggingActivity activity = For(milliseconds(90));
    activity.bAsks = true;
    Loop.Run(activity);
    EXPECT_EQ(Screen.Calls(), Words{"keys"});
}

// A shell that has left its job behind: the background of a terminal, and nobody to say `fg`.
TEST_F(InterfaceLoopTest, EndsWhereAStopForAnAnswerIsNone) {
    Screen.bForeground = Screen.bForegroundAfterStop = Screen.bStops = false;
    LoggingActivity activity = For(milliseconds(1000));
    activity.bAsks = true;
    activity.OverWhen = [this] { return Loop.Requests().IsAsked(); };
    const Terminal::TimePoint start = Screen.Now();
    Loop.Run(activity);
    ASSERT_TRUE(Loop.Requests().IsAsked());
    EXPECT_EQ(Loop.Requests().Signal(), SIGHUP);
    EXPECT_LE(Screen.Now() - start, milliseconds(100));
    EXPECT_EQ(Screen.Calls(), Words{"stop " + std::to_string(SIGTTIN)});
}

TEST_F(InterfaceLoopTest, EndsWhereNobodyIsLeftToAnswer) {
    Screen.bClosed = true;
    Screen.IgnoredSignals = {SIGHUP};
    LoggingActivity activity = For(milliseconds(10000));
    activity.bAsks = true;
    try {
        Loop.Run(activity);
        ADD_FAILURE() << "it does not leave";
    } catch (const Left& left) {
        EXPECT_EQ(left.Signal, SIGHUP);
    }
}

} // namespace
