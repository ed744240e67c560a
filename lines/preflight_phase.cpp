#include "preflight_phase.h"

#include "preflight_thread.h"
#include "preflight_verdict.h"
#include "reporters.h"

#include "progress_texts.h"
#include <string>

namespace {

using Clock = Prompt::Clock;

// How long a look that is to stop may take before the run goes on without its result.
constexpr std::chrono::milliseconds kStopTime{500};
// On a terminal more of one kind would push the rest out of sight.
constexpr std::uint64_t kListedOnScreen = 5;
// Keys are dead for a moment, so that what was typed before the question cannot answer it.
constexpr std::chrono::milliseconds kDeadTime{700};

RunOutcome CanceledOutcome(Prompt& Console) {
    RunOutcome outcome{.Result = RunResult::Canceled,
                       .Text = "Canceled before anything was touched."};
    if (Console.End().IsAsked()) {
        outcome.EndSignal = Console.End().Signal();
    }
    return outcome;
}

bool HasEscape(const std::vector<KeyPress>& Keys) {
    for (const KeyPress& key : Keys) {
        if (key.Code == KeyCode::Escape) {
            return true;
        }
    }
    return false;
}

// Waits for the look. False when there is nothing to wait for any more: it hangs or the program is
// to end.
bool AwaitLook(PreflightThread& Look, Prompt& Console, Reporter& Output) {
    std::optional<Clock::time_point> deadline;
    while (!Look.IsOver()) {
        if (HasEscape(Console.Wait(Console.UntilFrame(), Look.OverFd())) && !deadline) {
            Look.RequestStop();
            deadline = Clock::now() + kStopTime;
        }
        if (Console.End().IsAsked() || (deadline && Clock::now() >= *deadline)) {
            return false;
        }
        if (Console.TakeStatusRequest()) {
            Console.PrintLine(PreflightText(Look.EntriesSeen()));
        }
        if (Console.TakeFrame()) {
            Output.Looking(Look.EntriesSeen());
        }
    }
    return true;
}

// Enter alone does not go on.
std::optional<bool> AnswerOf(const KeyPress& Key) {
    if (Key.Code == KeyCode::Escape || Key.Code == KeyCode::Enter || Key.Text == "n") {
        return false;
    }
    if (Key.Text == "y") {
        return true;
    }
    return std::nullopt;
}

std::optional<bool> AwaitAnswer(Prompt& Console, const std::string& Question) {
    const Clock::time_point liveFrom = Clock::now() + kDeadTime;
    while (!Console.End().IsAsked()) {
        for (const KeyPress& key : Console.Wait(Console.UntilFrame(), -1)) {
            const std::optional<bool> bAnswer = AnswerOf(key);
            if (bAnswer && (Clock::now() >= liveFrom || key.Code == KeyCode::Escape)) {
                return bAnswer;
            }
        }
        Console.CallForAnswer();
        if (Console.TakeStatusRequest()) {
            Console.PrintLine("Waiting for an answer.");
        }
        if (Console.TakeFrame()) {
            const TerminalSize size = Console.Size();
            const int width = LayoutWidth(size);
            const std::vector<ScreenLine> lines = FitToRows(
                {WordsPart(1, "y yes  n or Enter no", width), WordsPart(2, Question, width)},
                size.Rows);
            Console.Show(lines, size, BlockCursor{lines.size() - 1, lines.back().Text + " "});
        }
    }
    return std::nullopt;
}

bool AskWhetherToGoOn(const std::string& Question, Prompt& Console) {
    const bool bKeysBefore = Console.TakesKeys();
    Console.TakeKeys(true);
    Console.HurryFrame();
    const bool bYes = AwaitAnswer(Console, Question).value_or(false);
    Console.TakeKeys(bKeysBefore);
    Console.PrintLine(Question + (bYes ? " yes" : " no"));
    return bYes;
}

} // namespace

std::optional<RunOutcome> RunPreflightPhase(const TransferRequest& Request,
                                            const TarvaneTransferPlan& Plan, Prompt& Console,
                                            Reporter& Output) {
    PreflightThread look(Plan);
    const bool bOver = AwaitLook(look, Console, Output);
    Console.Clear();
    if (Console.End().IsAsked()) {
        return CanceledOutcome(Console);
    }
    if (!bOver) {
        // Skipped while a file system keeps the look waiting.
        return std::nullopt;
    }
    if (!look.Failure().empty()) {
        Console.PrintMessage("cannot look through the sources: " + look.Failure());
        return std::nullopt;
    }
    const PreflightResult& result = look.Result();
    const std::uint64_t listed =
        Console.CanAsk() ? kListedOnScreen : PreflightFindings::kKeptPerKind;
    for (const std::string& sentence : DescribeFindings(result.Findings, listed)) {
        Console.PrintMessage(sentence);
    }
    Output.Looked(result);
    const PreflightVerdict verdict = JudgePreflight(Request, result, Console.CanAsk());
    switch (verdict.Decision) {
    case PreflightVerdict::Kind::GoOn:
        break;
    case PreflightVerdict::Kind::Ask:
        return AskWhetherToGoOn(verdict.Question, Console)
                   ? std::nullopt
                   : std::optional(CanceledOutcome(Console));
    case PreflightVerdict::Kind::Stop:
        return verdict.Outcome;
    }
    return std::nullopt;
}
