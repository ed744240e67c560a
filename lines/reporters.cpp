#include "reporters.h"

#include "json_records.h"
#include "live_block.h"
#include "progress_texts.h"
#include "screen_text.h"

#include <cerrno>
#include <unistd.h>

bool LineClock::TakeDue() {
    const Clock::time_point now = Clock::now();
    if (now < Next) {
        return false;
    }
    Next = now + Interval;
    return true;
}

namespace {

class LiveOutput : public Reporter {
public:
    explicit LiveOutput(Prompt& Screen) : Console(Screen) {}

    void Looking(std::uint64_t EntriesSeen) override {
        ShowTexts({PreflightText(EntriesSeen), "Press Esc to skip this, Ctrl-C to cancel."});
    }

    void Running(const ProgressView& View) override {
        if (View.Snapshot.bFinished) {
            return;
        }
        const TerminalSize size = Console.Size();
        Console.Show(LiveBlockLines(View.Snapshot, View.Claims, size), size);
    }

    void Flushing(const FlushProgress& Progress) override {
        ShowTexts({FlushText(Progress), "Not safe to unplug yet. Esc ends the wait; the copied "
                                        "files stay."});
    }

private:
    void ShowTexts(const std::vector<std::string>& Texts) {
        const TerminalSize size = Console.Size();
        std::vector<BlockPart> parts;
        int importance = static_cast<int>(Texts.size());
        for (const std::string& text : Texts) {
            BlockPart part{importance--, {}};
            for (std::string& line : WrapAtWords(CleanForScreen(text), LayoutWidth(size))) {
                part.Lines.push_back({std::move(line)});
            }
            parts.push_back(std::move(part));
        }
        Console.Show(FitToRows(std::move(parts), size.Rows), size);
    }

    Prompt& Console;
};

class LinesOutput : public Reporter {
public:
    LinesOutput(Prompt& Log, const LineClock& Clock) : Console(Log), Lines(Clock) {}

    void Looking(std::uint64_t EntriesSeen) override { PrintWhenDue(PreflightText(EntriesSeen)); }

    void Running(const ProgressView& View) override {
        if (View.Snapshot.bCancelRequested && !bCancelSaid) {
            bCancelSaid = true;
            Console.PrintLine(View.Snapshot.HintText);
        }
        if (!View.Snapshot.bFinished) {
            PrintWhenDue(JobText(View.Snapshot, View.Claims));
        }
    }

    void Flushing(const FlushProgress& Progress) override { PrintWhenDue(FlushText(Progress)); }

private:
    void PrintWhenDue(const std::string& Line) {
        if (Lines.TakeDue()) {
            Console.PrintLine(Line);
        }
    }

    Prompt& Console;
    LineClock Lines;
    bool bCancelSaid = false;
};

class JsonOutput : public Reporter {
public:
    explicit JsonOutput(const LineClock& Clock) : Records(STDOUT_FILENO), Lines(Clock) {}

    void Looked(const PreflightResult& Result) override {
        for (const PreflightFinding& finding : Result.Findings.Kept()) {
            Records.Add(PreflightRecord(finding));
        }
        Records.Add(TotalsRecord(Result));
    }

    void Running(const ProgressView& View) override {
        const bool bCancelNews = View.Snapshot.bCancelRequested && !bCancelSaid;
        bCancelSaid = View.Snapshot.bCancelRequested;
        if (View.Snapshot.bFinished) {
            Records.Add(ProgressRecord(View));
        } else if (Lines.TakeDue() || bCancelNews) {
            Records.Offer(ProgressRecord(View));
        }
        Records.Pump();
    }

    void Answered(const AnsweredConflict& Answer) override { Records.Add(ConflictRecord(Answer)); }

    void Flushing(const FlushProgress& Progress) override {
        if (Progress.bFinished) {
            Records.Add(FlushRecord(Progress));
        } else if (Lines.TakeDue()) {
            Records.Offer(FlushRecord(Progress));
        }
        Records.Pump();
    }

    void Ended(const RunOutcome& Outcome, int ExitStatus) override {
        Records.Add(DoneRecord(Outcome, ExitStatus));
    }

    bool IsBroken() const override { return Records.Error() == EPIPE; }

    int Finish() override {
        Records.Finish();
        return Records.Error();
    }

private:
    OutputQueue Records;
    LineClock Lines;
    bool bCancelSaid = false;
};

} // namespace

std::unique_ptr<Reporter> MakeLiveOutput(Prompt& Console) {
    return std::make_unique<LiveOutput>(Console);
}

std::unique_ptr<Reporter> MakeLinesOutput(Prompt& Console, double IntervalSeconds) {
    LineClock clock(IntervalSeconds);
    // A job that is over before the interval is has only its last line.
    clock.TakeDue();
    return std::make_unique<LinesOutput>(Console, clock);
}

std::unique_ptr<Reporter> MakeJsonOutput(double IntervalSeconds) {
    return std::make_unique<JsonOutput>(LineClock(IntervalSeconds));
}
