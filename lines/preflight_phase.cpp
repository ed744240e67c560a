#include "preflight_phase.h"

#include <cstdint>
#include <string>

#include "block_layout.h"
#include "key_guard.h"
#include "preflight_run.h"
#include "preflight_verdict.h"
#include "progress_texts.h"
#include "prompt.h"
#include "reporter.h"

namespace {

// On a terminal more of one kind would push the rest out of sight.
constexpr std::uint64_t kListedOnScreen = 5;

RunOutcome CanceledOutcome(EndRequest& Requests) {
    RunOutcome outcome{.Result = RunResult::Canceled,
                       .Text = "Canceled before anything was touched."};
    if (Requests.IsAsked()) {
        outcome.EndSignal = Requests.Signal();
    }
    return outcome;
}

// Waits until the look is over or the run is to end.
class PreflightWait : public Activity {
public:
    PreflightWait(PreflightRun& RunningPreflight, const PromptContext& ContextToUse)
        : Preflight(RunningPreflight), Context(ContextToUse) {}

    void TakeKey(const KeyPress& Key) override {
        bCanceled = bCanceled || Key.Code == KeyCode::Escape;
    }

    bool IsOver() override { return Preflight.IsOver() || IsCanceled(); }

    bool IsCanceled() const { return bCanceled || Context.Loop.Requests().IsAsked(); }

    void Draw() override { Context.Report.PreflightRuns(Preflight.EntriesSeen()); }
    std::string StatusText() override { return PreflightText(Preflight.EntriesSeen()); }
    int Descriptor() const override { return Preflight.OverFd(); }

private:
    PreflightRun& Preflight;
    const PromptContext& Context;
    bool bCanceled = false;
};

// Waits for a yes or a no. Enter alone does not go on.
class GoOnQuestion : public Activity {
public:
    GoOnQuestion(std::string QuestionToAsk, const PromptContext& ContextToUse)
        : Question(std::move(QuestionToAsk)), Context(ContextToUse) {
        Guard.QuestionAppears(Context.Loop.Now());
    }

    bool IsYes() const { return bAnswer.value_or(false); }

    void TakeKey(const KeyPress& Key) override {
        if (bAnswer || !Guard.LetsThrough(Key, Context.Loop.Now())) {
            return;
        }
        if (Key.Code == KeyCode::Escape || Key.Code == KeyCode::Enter || Key.Text == "n") {
            bAnswer = false;
        } else if (Key.Text == "y") {
            bAnswer = true;
        }
    }

    bool IsOver() override { return bAnswer || Context.Loop.Requests().IsAsked(); }
    bool NeedsAnswer() const override { return true; }
    std::string StatusText() override { return "Waiting for an answer."; }

    void Draw() override {
        const TerminalSize size = Context.Screen.Size();
        const int width = LayoutWidth(size);
        const std::vector<ScreenLine> lines =
            FitToRows({WordsPart(1, "y yes  n or Enter no", width), WordsPart(2, Question, width)},
                      size.Rows);
        Context.Shown.Show(lines, size, BlockCursor{lines.size() - 1, lines.back().Text + " "});
    }

private:
    std::string Question;
    const PromptContext& Context;
    KeyGuard Guard;
    std::optional<bool> bAnswer;
};

bool AskWhetherToGoOn(const std::string& Question, const PromptContext& Context) {
    GoOnQuestion asked(Question, Context);
    Context.Loop.Run(asked);
    Context.Shown.Clear();
    Context.Shown.PrintBesideQuestions(Question + (asked.IsYes() ? " yes" : " no"));
    return asked.IsYes();
}

std::optional<RunOutcome> FollowVerdict(const PreflightVerdict& Verdict,
                                        const PromptContext& Context) {
    switch (Verdict.Decision) {
    case PreflightVerdict::Kind::GoOn:
        return std::nullopt;
    case PreflightVerdict::Kind::Ask:
        if (AskWhetherToGoOn(Verdict.Question, Context)) {
            return std::nullopt;
        }
        return CanceledOutcome(Context.Loop.Requests());
    case PreflightVerdict::Kind::Stop:
        return Verdict.Outcome;
    }
    return std::nullopt;
}

UnreadDirectories UnreadIn(const PreflightFindings& Findings) {
    constexpr auto kUnreadable = PreflightFindingKind::UnreadableDirectory;
    UnreadDirectories unread{.Count = Findings.Count(kUnreadable)};
    for (const PreflightFinding& finding : Findings.Kept()) {
        if (finding.Kind == kUnreadable) {
            unread.First.push_back(finding.Path);
        }
    }
    return unread;
}

} // namespace

std::optional<RunOutcome> RunPreflightPhase(const TransferRequest& Request,
                                            const TarvaneTransferPlan& Plan,
                                            const PromptContext& Context, const KnownDiscs& Discs,
                                            UnreadDirectories& OutUnread) {
    PreflightRun preflight(Plan, Discs);
    PreflightWait wait(preflight, Context);
    Context.Loop.Run(wait);
    Context.Shown.Clear();
    if (wait.IsCanceled()) {
        return CanceledOutcome(Context.Loop.Requests());
    }
    if (!preflight.Failure().empty()) {
        return RunOutcome{.Result = RunResult::Failed,
                          .Text = "cannot look through the sources: " + preflight.Failure()};
    }
    const PreflightResult& result = preflight.Result();
    const bool bCanAsk = Context.Screen.CanAsk();
    const std::uint64_t listed = bCanAsk ? kListedOnScreen : PreflightFindings::kKeptPerKind;
    const PreflightVerdict verdict = JudgePreflight(Request, result, bCanAsk);
    const bool bAsks = verdict.Decision == PreflightVerdict::Kind::Ask;
    for (const std::string& sentence : DescribeFindings(result.Findings, listed)) {
        const std::string line = "tarvane: " + sentence;
        bAsks ? Context.Shown.PrintBesideQuestions(line) : Context.Shown.PrintLine(line);
    }
    Context.Report.PreflightIsOver(result);
    OutUnread = UnreadIn(result.Findings);
    return FollowVerdict(verdict, Context);
}
