#include "preflight_phase.h"

#include <climits>
#include <cstddef>
#include <string>

#include "block_layout.h"
#include "key_guard.h"
#include "number_text.h"
#include "preflight_run.h"
#include "preflight_verdict.h"
#include "progress_texts.h"
#include "prompt.h"
#include "reporter.h"
#include "screen_text.h"

namespace {

// More of one kind would push the rest out of sight.
constexpr std::size_t kLinesPerGroup = 10;

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
    UnreadDirectories unread{.Count = Findings.CountIf(IsUnreadDirectory)};
    for (const PreflightFinding& finding : Findings.Kept()) {
        if (IsUnreadDirectory(finding.Kind)) {
            unread.First.push_back(finding.Path);
        }
    }
    return unread;
}

// The lines of a paragraph. Words stay whole where a terminal is narrow, and paths in one piece.
std::vector<std::string> LinesOf(const FindingGroup& Group, const Terminal& Screen) {
    const int width = Screen.IsOutputTerminal() ? LayoutWidth(Screen.Size()) : INT_MAX;
    std::vector<std::string> lines = WrapWholeWords(Group.Sentence + ":", width);
    for (const std::string& line : Group.Lines) {
        lines.push_back("  " + line);
    }
    if (Group.More > 0) {
        lines.push_back("  and " + NumberText(Group.More) + " more");
    }
    return lines;
}

// The one refusal of a run that does not begin is its last line.
void PrintFindings(const TransferRequest& Request, const PreflightFindings& Findings,
                   PreflightVerdict::Kind Decision, const PromptContext& Context) {
    const bool bSaidAtTheEnd = Findings.CountRefusals() == 1 && !Request.bDryRun;
    for (const FindingGroup& group : GroupFindings(Findings, kLinesPerGroup)) {
        if (bSaidAtTheEnd && IsRefusal(group.Kind)) {
            continue;
        }
        const bool bRemoves = group.Kind == PreflightFindingKind::LinkToDirectoryOnMove;
        const TextStyle style = bRemoves ? TextStyle::Warning : TextStyle::Plain;
        for (const std::string& line : LinesOf(group, Context.Screen)) {
            if (Decision == PreflightVerdict::Kind::Ask) {
                Context.Shown.PrintBesideQuestions(line, style);
            } else {
                Context.Shown.PrintLine(line, style);
            }
        }
    }
}

PreflightScope ScopeOf(const TransferRequest& Request, const Reporter& Report) {
    if (Request.bDryRun) {
        return PreflightScope::Everything;
    }
    if (!Request.bPreflight) {
        return PreflightScope::GuardsOnly;
    }
    return Report.WantsTotals() ? PreflightScope::Everything : PreflightScope::Findings;
}

} // namespace

std::optional<RunOutcome> RunPreflightPhase(const TransferRequest& Request,
                                            const TarvaneTransferPlan& Plan,
                                            const PromptContext& Context, const KnownDiscs& Discs,
                                            FoundBeforehand& OutFound) {
    PreflightRun preflight({Plan, RulesOf(Request), ScopeOf(Request, Context.Report), Discs});
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
    const PreflightVerdict verdict = JudgePreflight(Request, result, Context.Screen.CanAsk());
    PrintFindings(Request, result.Findings, verdict.Decision, Context);
    Context.Report.PreflightIsOver(result);
    OutFound.Unread = UnreadIn(result.Findings);
    if (result.bTakesOnlyFiles) {
        OutFound.TakenFiles = result.Taken.Replaced + result.Taken.Skipped;
    }
    return FollowVerdict(verdict, Context);
}
