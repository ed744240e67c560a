// The styles of progress, fed with what the phases tell them.

#include "reporters.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "captured_descriptor.h"
#include "json_records.h"
#include "line_queue.h"
#include "live_block.h"
#include "needs.h"
#include "scripted_terminal.h"

namespace {

using std::chrono::milliseconds;

constexpr double kInterval = 5.0;

int StatusOf(const RunOutcome& /*Outcome*/) {
    return 0;
}

class ReporterTest : public testing::Test {
protected:
    ReporterTest() {
        Snapshot.StageText = "Stage: Copying | Copying items";
        Snapshot.OverallText = "Overall 1.0 KB / 2.0 KB | Items 0 / 1";
        Snapshot.HintText = "Canceling transfer.";
        Snapshot.TotalItems = 1;
        Flush.RemainingBytes = 1024;
    }

    ProgressView View() const { return {Job, Snapshot, Claims}; }

    void Pass(milliseconds Time) {
        const int noDescriptor = -1;
        const Terminal::TimePoint end = Screen.Now() + Time;
        while (Screen.Now() < end) {
            Screen.Wait(std::chrono::duration_cast<std::chrono::microseconds>(end - Screen.Now()),
                        noDescriptor);
        }
    }

    const SigpipeIgnored ClosedPipesAreErrors;
    const TarvaneTransferJob Job{false, 1, "here"};
    TarvaneTransferUiSnapshot Snapshot;
    ProgressClaims Claims{.Percent = 50};
    const FinishProgress Finishing{.Done = 12345, .Total = 50000};
    FlushProgress Flush;
    ScriptedTerminal Screen;
    Prompt Shown{Screen, StatusOf};
};

class LiveReporter : public ReporterTest {
protected:
    const std::unique_ptr<Reporter> Report = MakeLiveReporter(Screen, Shown);
};

} // namespace

TEST_F(LiveReporter, ShowsTheLookAndHowToCancelIt) {
    Report->PreflightRuns(12);
    EXPECT_EQ(Screen.Screen(), "Looking through the sources: 12 entries.\n"
                               "Press Esc to cancel.\n");
}

TEST_F(LiveReporter, ShowsTheJobAsABlock) {
    Report->JobRuns(View());
    std::string block;
    for (const ScreenLine& line :
         LiveBlock(BarCells::Ascii).Lines(Snapshot, Claims, Screen.Size())) {
        block += line.Text + "\n";
    }
    EXPECT_EQ(Screen.Screen(), block);
    EXPECT_NE(block.find("Stage: Copying"), std::string::npos);
}

TEST_F(LiveReporter, ShowsTheFinishingAndHowToEndIt) {
    Report->FinishRuns(Finishing);
    EXPECT_EQ(Screen.Screen(), "Setting modes and dates: 12,345 of 50,000 entries.\n"
                               "Esc leaves the rest without them.\n");
}

TEST_F(LiveReporter, ShowsTheFlushAndAWarning) {
    Report->FlushRuns(Flush);
    EXPECT_EQ(Screen.Screen(),
              "Writing to the disk: at most 1.0 KB left\n"
              "Not safe to unplug yet. Esc ends the wait; the copied files stay.\n");
}

TEST_F(LiveReporter, KeepsTheNewsInASmallWindow) {
    Screen.SetSize(80, 1);
    Report->PreflightRuns(12);
    EXPECT_EQ(Screen.Screen(), "Looking through the sources: 12 entries.\n");
    Report->FlushRuns(Flush);
    EXPECT_EQ(Screen.Screen(), "Writing to the disk: at most 1.0 KB left\n");
}

namespace {

class LinesReporter : public ReporterTest {
protected:
    const std::unique_ptr<Reporter> Report = MakeLinesReporter(Screen, Shown, kInterval);
};

} // namespace

TEST_F(LinesReporter, PrintsALineAfterEachInterval) {
    const std::string line = "Overall 1.0 KB / 2.0 KB | Items 0 / 1\n";
    Report->JobRuns(View());
    Pass(milliseconds(4999));
    Report->JobRuns(View());
    EXPECT_EQ(Screen.Screen(), "");
    Pass(milliseconds(1));
    Report->JobRuns(View());
    Report->JobRuns(View());
    EXPECT_EQ(Screen.Screen(), line);
    Pass(milliseconds(5000));
    Report->JobRuns(View());
    EXPECT_EQ(Screen.Screen(), line + line);
}

TEST_F(LinesReporter, PrintsTheLookTheFinishingAndTheFlushToo) {
    Report->PreflightRuns(12);
    Report->FinishRuns(Finishing);
    Report->FlushRuns(Flush);
    EXPECT_EQ(Screen.Screen(), "");
    Pass(milliseconds(5000));
    Report->PreflightRuns(12);
    Pass(milliseconds(5000));
    Report->FinishRuns(Finishing);
    Pass(milliseconds(5000));
    Report->FlushRuns(Flush);
    EXPECT_EQ(Screen.Screen(), "Looking through the sources: 12 entries.\n"
                               "Setting modes and dates: 12,345 of 50,000 entries.\n"
                               "Writing to the disk: at most 1.0 KB left\n");
}

TEST_F(LinesReporter, SaysOnceAndAtOnceThatTheJobIsToBeCanceled) {
    Snapshot.bCancelRequested = true;
    Report->JobRuns(View());
    Report->JobRuns(View());
    Report->JobIsOver(View());
    EXPECT_EQ(Screen.Screen(), "Canceling transfer.\n");
}

TEST_F(LinesReporter, SaysAtTheEndThatTheJobWasToBeCanceledWhenItWasFaster) {
    Snapshot.bCancelRequested = true;
    Report->JobIsOver(View());
    EXPECT_EQ(Screen.Screen(), "Canceling transfer.\n");
}

TEST_F(LinesReporter, LeavesTheLastLineToOthers) {
    Pass(milliseconds(10000));
    Report->JobIsOver(View());
    Report->FinishIsOver(Finishing);
    Report->FlushIsOver(Flush);
    EXPECT_EQ(Screen.Screen(), "");
    EXPECT_FALSE(Report->IsBroken());
    EXPECT_EQ(Report->Finish(), 0);
}

namespace {

class JsonReporter : public ReporterTest {
protected:
    // What Tell makes the reporter write.
    template <typename Action>
    std::string RecordsOf(Action Tell) {
        const CapturedDescriptor captured(STDOUT_FILENO);
        Tell();
        return captured.Text();
    }

    std::string Progress() const { return ProgressRecord(View()) + "\n"; }

    const std::unique_ptr<Reporter> Report = MakeJsonReporter(Screen, kInterval);
};

} // namespace

TEST_F(JsonReporter, WritesARecordAtOnceAndAfterEachInterval) {
    EXPECT_EQ(RecordsOf([this] {
                  Report->JobRuns(View());
                  Pass(milliseconds(4999));
                  Report->JobRuns(View());
              }),
              Progress());
    EXPECT_EQ(RecordsOf([this] {
                  Pass(milliseconds(1));
                  Report->JobRuns(View());
                  Report->JobRuns(View());
              }),
              Progress());
}

TEST_F(JsonReporter, WritesOnceAndAtOnceThatTheJobIsToBeCanceled) {
    RecordsOf([this] { Report->JobRuns(View()); });
    Snapshot.bCancelRequested = true;
    EXPECT_EQ(RecordsOf([this] {
                  Report->JobRuns(View());
                  Report->JobRuns(View());
              }),
              Progress());
}

TEST_F(JsonReporter, WritesTheLastStateWhateverTheInterval) {
    EXPECT_EQ(RecordsOf([this] {
                  Report->JobRuns(View());
                  Report->JobIsOver(View());
              }),
              Progress() + Progress());
}

TEST_F(JsonReporter, WritesWhatTheLookFoundAndItsTotals) {
    PreflightResult result;
    result.Findings.AddStop(PreflightFindingKind::DanglingLink, "/from/a");
    result.Findings.AddStop(PreflightFindingKind::DanglingLink, "/from/b");
    result.Entries = 2;
    EXPECT_EQ(RecordsOf([&] {
                  Report->PreflightRuns(1);
                  Report->PreflightIsOver(result);
              }),
              PreflightRecord(result.Findings.Kept()[0]) + "\n" +
                  PreflightRecord(result.Findings.Kept()[1]) + "\n" + TotalsRecord(result) + "\n");
}

TEST_F(JsonReporter, WritesTheFinishingAfterEachIntervalAndAtItsEnd) {
    const std::string record = FinishingRecord(Finishing) + "\n";
    EXPECT_EQ(RecordsOf([this] {
                  Report->FinishRuns(Finishing);
                  Report->FinishRuns(Finishing);
              }),
              record);
    EXPECT_EQ(RecordsOf([this] { Report->FinishIsOver(Finishing); }), record);
}

TEST_F(JsonReporter, WritesTheFlushAfterEachIntervalAndAtItsEnd) {
    const std::string record = FlushRecord(Flush) + "\n";
    EXPECT_EQ(RecordsOf([this] {
                  Report->FlushRuns(Flush);
                  Report->FlushRuns(Flush);
              }),
              record);
    EXPECT_EQ(RecordsOf([this] { Report->FlushIsOver(Flush); }), record);
}

TEST_F(JsonReporter, WritesOneRecordOfAFlushThatHasFinished) {
    Flush.bFinished = true;
    EXPECT_EQ(RecordsOf([this] {
                  Report->FlushRuns(Flush);
                  Report->FlushIsOver(Flush);
              }),
              FlushRecord(Flush) + "\n");
}

TEST_F(JsonReporter, WritesAnswersAndTheEnd) {
    const SettledConflict settled{.Answered = {.Conflict = {},
                                               .Action = TarvaneTransferConflictAction::Skip,
                                               .RenamePath = {},
                                               .bByUser = true},
                                  .Outcome = ConflictOutcome::Skipped};
    const RunOutcome outcome{.Result = RunResult::Succeeded, .Text = "Copied 1 item(s)."};
    const int status = 7;
    EXPECT_EQ(RecordsOf([&] {
                  Report->ConflictIsSettled(settled);
                  Report->RunIsOver(outcome, status);
              }),
              ConflictRecord(settled) + "\n" + DoneRecord(outcome, status) + "\n");
}

TEST_F(JsonReporter, TellsThatItsReaderHasGone) {
    EXPECT_FALSE(Report->IsBroken());
    int error = 0;
    {
        const CapturedDescriptor captured(STDOUT_FILENO, BrokenPipe());
        Report->JobIsOver(View());
        error = Report->Finish();
    }
    EXPECT_TRUE(Report->IsBroken());
    EXPECT_EQ(error, EPIPE);
}

TEST_F(JsonReporter, TellsThatTheDiskIsFullWithoutBeingBroken) {
    NeedDeviceNode("/dev/full");
    int error = 0;
    {
        const CapturedDescriptor captured(STDOUT_FILENO, open("/dev/full", O_WRONLY | O_CLOEXEC));
        Report->JobIsOver(View());
        error = Report->Finish();
    }
    EXPECT_FALSE(Report->IsBroken());
    EXPECT_EQ(error, ENOSPC);
}

namespace {

// Behind a reader that is busy at first.
class JsonReporterWaiting : public JsonReporter {
protected:
    // What the reader gets when it takes everything between Before and After.
    template <typename First, typename Second>
    std::string Received(First Before, Second After) {
        const auto [reader, writer] = FullPipe();
        std::string text;
        {
            const CapturedDescriptor captured(STDOUT_FILENO, writer);
            Before();
            ReadPipe(reader);
            After();
            text = ReadPipe(reader);
        }
        close(reader);
        return text;
    }
};

} // namespace

TEST_F(JsonReporterWaiting, LeavesOutProgressThatWouldBeLate) {
    const std::string received = Received(
        [this] {
            Report->FlushRuns(Flush);
            Pass(milliseconds(5000));
            Report->FlushRuns(Flush);
            Pass(milliseconds(5000));
            Report->JobRuns(View());
        },
        [this] { Report->Finish(); });
    EXPECT_EQ(received, FlushRecord(Flush) + "\n");
}

TEST_F(JsonReporterWaiting, LeavesOutNoLastState) {
    const SettledConflict settled;
    const RunOutcome outcome;
    const int status = 0;
    const std::string received = Received(
        [&] {
            Report->ConflictIsSettled(settled);
            Report->JobIsOver(View());
            Report->FlushIsOver(Flush);
            Report->RunIsOver(outcome, status);
        },
        [this] { Report->Finish(); });
    EXPECT_EQ(received, ConflictRecord(settled) + "\n" + Progress() + FlushRecord(Flush) + "\n" +
                            DoneRecord(outcome, status) + "\n");
}

TEST_F(JsonReporterWaiting, WritesWhatWaitsWhileTheJobRuns) {
    RecordsOf([this] { Report->JobRuns(View()); });
    EXPECT_EQ(Received([this] { Report->JobIsOver(View()); }, [this] { Report->JobRuns(View()); }),
              Progress());
}

TEST_F(JsonReporterWaiting, WritesWhatWaitsWhileTheFlushRuns) {
    RecordsOf([this] { Report->FlushRuns(Flush); });
    EXPECT_EQ(Received([this] { Report->JobIsOver(View()); }, [this] { Report->FlushRuns(Flush); }),
              Progress());
}
