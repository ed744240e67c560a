#include "preflight_phase.h"

#include <climits>
#include <cstddef>
#include <string>

#include "block_layout.h"
#include "key_guard.h"
#include "look_step.h"
#include "number_text.h"
#include "preflight_verdict.h"
#include "progress_texts.h"
#include "prompt.h"
#include "reporter.h"
#include "screen_text.h"

namespace {

// More of one kind would push the rest out of sight.
constexpr std::size_t kLinesPerGroup = 10;

RunOutcome Canceled(const EndRequest& Requests) {
    return CanceledBeforehand(Requests.IsAsked() ? std::optional(Requests.Signal()) : std::nullopt);
}

// Waits until the look is over or the run is to end.
class PreflightWait : public Activity {
public:
    PreflightWait(LookStep& RunningLook, const PromptContext& ContextToUse)
        : Look(RunningLook), Context(ContextToUse) {}

    void TakeKey(const KeyPress& Key) override {
        bCanceled = bCanceled || Key.Code == KeyCode::Escape;
    }

    bool IsOver() override { return Look.Attend() || IsCanceled(); }

    bool IsCanceled() const { return bCanceled || Context.Loop.Requests().IsAsked(); }

    void Draw() override { Context.Report.PreflightRuns(Look.EntriesSeen()); }
    std::string StatusText() override { return PreflightText(Look.EntriesSeen()); }
    int Descriptor() const override { return Look.Descriptor(); }

private:
    LookStep& Look;
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
        if (Key.Code == KeyCode::Escape || Key.Code == KeyCode::Enter || Key.IsCharacter('n')) {
            bAnswer = false;
        } else if (Key.IsCharacter('y')) {
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
        return Canceled(Context.Loop.Requests());
    case PreflightVerdict::Kind::Stop:
        return Verdict.Outcome;
    }
    return std::nullopt;
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

} // namespace

std::optional<RunOutcome> RunPreflightPhase(const TransferRequest& Request,
                                            const TarvaneTransferPlan& Plan,
                                            const PromptContext& Context, const KnownDiscs& Discs,
                                            FoundBeforehand& OutFound, StatusRecord* Record) {
    LookStep look(Request, Plan, Discs, Context.Report.WantsTotals(), Record);
    PreflightWait wait(look, Context);
    Context.Loop.Run(wait);
    Context.Shown.Clear();
    if (wait.IsCanceled()) {
        return Canceled(Context.Loop.Requests());
    }
    const PreflightVerdict verdict = look.Judge(Context.Screen.CanAsk());
    if (const PreflightResult* const result = look.Result()) {
        PrintFindings(Request, result->Findings, verdict.Decision, Context);
        Context.Report.PreflightIsOver(*result);
        OutFound = look.Found();
    }
    return FollowVerdict(verdict, Context);
}
