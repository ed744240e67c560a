#include "reporters.h"

#include <cerrno>
#include <chrono>
#include <string>
#include <unistd.h>

#include "json_records.h"
#include "line_queue.h"
#include "live_block.h"
#include "progress_texts.h"

namespace {

// Says when the next of a row of reports is due: at once, then after every interval.
class IntervalTimer {
public:
    IntervalTimer(Terminal& TerminalToUse, double IntervalSeconds)
        : Clock(TerminalToUse), Interval(std::chrono::duration_cast<Terminal::TimePoint::duration>(
                                    std::chrono::duration<double>(IntervalSeconds))) {}

    // True once for each report.
    bool TakeDue() {
        const Terminal::TimePoint now = Clock.Now();
        if (now < Next) {
            return false;
        }
        Next = now + Interval;
        return true;
    }

private:
    Terminal& Clock;
    Terminal::TimePoint::duration Interval;
    Terminal::TimePoint Next;
};

class LiveReporter : public Reporter {
public:
    LiveReporter(Terminal& TerminalToUse, Prompt& PromptToUse)
        : Screen(TerminalToUse), Shown(PromptToUse),
          Block(Screen.IsUtf8() ? BarCells::Blocks : BarCells::Ascii) {}

    void PreflightRuns(std::uint64_t EntriesSeen) override {
        const int width = LayoutWidth(Screen.Size());
        Shown.ShowParts(
            {WordsPart(2, PreflightText(EntriesSeen), width), WordsPart(1, kPreflightHint, width)});
    }

    void JobRuns(const ProgressView& View) override {
        const TerminalSize size = Screen.Size();
        Shown.Show(Block.Lines(View.Snapshot, View.Claims, size), size);
    }

    void FinishRuns(const FinishProgress& Progress) override {
        const int width = LayoutWidth(Screen.Size());
        Shown.ShowParts(
            {WordsPart(2, FinishText(Progress), width), WordsPart(1, kFinishHint, width)});
    }

    void FlushRuns(const FlushProgress& Progress) override {
        const int width = LayoutWidth(Screen.Size());
        Shown.ShowParts(
            {WordsPart(2, FlushText(Progress), width), WordsPart(1, kFlushHint, width)});
    }

private:
    Terminal& Screen;
    Prompt& Shown;
    LiveBlock Block;
};

class LinesReporter : public Reporter {
public:
    LinesReporter(Terminal& Clock, Prompt& PromptToUse, double IntervalSeconds)
        : Shown(PromptToUse), Timer(Clock, IntervalSeconds) {
        // A job that is over before the interval is has only its last line.
        Timer.TakeDue();
    }

    void PreflightRuns(std::uint64_t EntriesSeen) override {
        PrintWhenDue(PreflightText(EntriesSeen));
    }

    void JobRuns(const ProgressView& View) override {
        SayThatItIsCanceled(View.Snapshot);
        PrintWhenDue(JobText(View.Snapshot, View.Claims));
    }

    void JobIsOver(const ProgressView& View) override { SayThatItIsCanceled(View.Snapshot); }

    void FinishRuns(const FinishProgress& Progress) override { PrintWhenDue(FinishText(Progress)); }

    void FlushRuns(const FlushProgress& Progress) override { PrintWhenDue(FlushText(Progress)); }

private:
    void PrintWhenDue(const std::string& Text) {
        if (Timer.TakeDue()) {
            Shown.PrintLine(Text);
        }
    }

    void SayThatItIsCanceled(const TarvaneTransferUiSnapshot& Snapshot) {
        if (Snapshot.bCancelRequested && !bCancelSaid) {
            bCancelSaid = true;
            Shown.PrintLine(Snapshot.HintText);
        }
    }

    Prompt& Shown;
    IntervalTimer Timer;
    bool bCancelSaid = false;
};

class JsonReporter : public Reporter {
public:
    JsonReporter(Terminal& Clock, double IntervalSeconds)
        : Records(STDOUT_FILENO), Timer(Clock, IntervalSeconds) {}

    void PreflightIsOver(const PreflightResult& Result) override {
        for (const PreflightFinding& finding : Result.Findings.Kept()) {
            Records.Add(PreflightRecord(finding));
        }
        Records.Add(TotalsRecord(Result));
    }
    bool WantsTotals() const override { return true; }

    void JobRuns(const ProgressView& View) override {
        const bool bCancelNews = View.Snapshot.bCancelRequested && !bCancelSaid;
        bCancelSaid = View.Snapshot.bCancelRequested;
        if (Timer.TakeDue() || bCancelNews) {
            Records.Offer(ProgressRecord(View));
        }
        Records.Pump();
    }

    void JobIsOver(const ProgressView& View) override { Records.Add(ProgressRecord(View)); }

    void FinishRuns(const FinishProgress& Progress) override {
        if (Timer.TakeDue()) {
            Records.Offer(FinishingRecord(Progress));
        }
        Records.Pump();
    }

    void FinishIsOver(const FinishProgress& Progress) override {
        Records.Add(FinishingRecord(Progress));
    }

    void FlushRuns(const FlushProgress& Progress) override {
        // The end has a record of its own.
        if (!Progress.bFinished && Timer.TakeDue()) {
            Records.Offer(FlushRecord(Progress));
        }
        Records.Pump();
    }

    void FlushIsOver(const FlushProgress& Progress) override { Records.Add(FlushRecord(Progress)); }

    void ConflictIsSettled(const SettledConflict& Settled) override {
        Records.Add(ConflictRecord(Settled));
    }

    bool ReportsEachConflict() const override { return true; }

    void RunIsOver(const RunOutcome& Outcome, int ExitStatus) override {
        Records.Add(DoneRecord(Outcome, ExitStatus));
    }

    bool IsBroken() const override { return Records.Error() == EPIPE; }

    int Finish() override {
        Records.Finish();
        return Records.Error();
    }

private:
    LineQueue Records;
    IntervalTimer Timer;
    bool bCancelSaid = false;
};

} // namespace

std::unique_ptr<Reporter> MakeLiveReporter(Terminal& Screen, Prompt& Shown) {
    return std::make_unique<LiveReporter>(Screen, Shown);
}

std::unique_ptr<Reporter> MakeLinesReporter(Terminal& Screen, Prompt& Shown,
                                            double IntervalSeconds) {
    return std::make_unique<LinesReporter>(Screen, Shown, IntervalSeconds);
}

std::unique_ptr<Reporter> MakeJsonReporter(Terminal& Screen, double IntervalSeconds) {
    return std::make_unique<JsonReporter>(Screen, IntervalSeconds);
}

bool CanRedrawProgress(const Terminal& Screen) {
    return Screen.IsOutputTerminal() && Screen.CanRedraw();
}

std::unique_ptr<Reporter> MakeReporter(const PromptRequest& Request, Terminal& Screen,
                                       Prompt& Shown) {
    const ProgressStyle style = Request.Progress;
    if (style == ProgressStyle::Json) {
        return MakeJsonReporter(Screen, Request.IntervalSeconds);
    }
    if (Request.bQuiet || style == ProgressStyle::None) {
        return std::make_unique<Reporter>();
    }
    if (style != ProgressStyle::Lines && CanRedrawProgress(Screen)) {
        return MakeLiveReporter(Screen, Shown);
    }
    if (style == ProgressStyle::Lines || Screen.IsOutputTerminal()) {
        return MakeLinesReporter(Screen, Shown, Request.IntervalSeconds);
    }
    return std::make_unique<Reporter>();
}
