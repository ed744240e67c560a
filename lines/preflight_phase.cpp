#include "preflight_phase.h"

#include "preflight_thread.h"
#include "progress_styles.h"
#include "size_text.h"

#include <map>
#include <string>

namespace {

using Clock = LineConsole::Clock;

// How long a look that is to stop may take before the run goes on without its result.
constexpr std::chrono::milliseconds kStopTime{500};
// On a terminal more of one kind would push the rest out of sight.
constexpr std::uint64_t kListedOnScreen = 5;
// Keys are dead for a moment, so that what was typed before the question cannot answer it.
constexpr std::chrono::milliseconds kDeadTime{700};

RunOutcome CanceledOutcome(LineConsole& Console) {
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
bool AwaitLook(PreflightThread& Look, LineConsole& Console, ProgressOutput& Output) {
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
            Console.PrintLine(LookText(Look.EntriesSeen()));
        }
        if (Console.TakeFrame()) {
            Output.Looking(Look.EntriesSeen());
        }
    }
    return true;
}

void ListFindings(const PreflightResult& Result, LineConsole& Console) {
    const std::uint64_t listed =
        Console.CanAsk() ? kListedOnScreen : PreflightFindings::kKeptPerKind;
    std::map<PreflightFindingKind, std::uint64_t> shown;
    for (const PreflightFinding& finding : Result.Findings.Kept()) {
        if (shown[finding.Kind]++ < listed) {
            Console.PrintMessage(DescribeFinding(finding));
        }
    }
    std::uint64_t more = 0;
    for (const auto& [kind, count] : shown) {
        const std::uint64_t all = Result.Findings.Count(kind);
        more += all > listed ? all - listed : 0;
    }
    if (more > 0) {
        Console.PrintMessage("and " + std::to_string(more) + " more of these");
    }
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

std::optional<bool> AwaitAnswer(LineConsole& Console, const std::string& Question) {
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

bool AskWhetherToGoOn(const std::string& Verb, LineConsole& Console, bool bKeysBefore) {
    Console.TakeKeys(true);
    Console.HurryFrame();
    const std::string question = "Go on with the " + Verb + "?";
    const bool bYes = AwaitAnswer(Console, question).value_or(false);
    Console.TakeKeys(bKeysBefore);
    Console.PrintLine(question + (bYes ? " yes" : " no"));
    return bYes;
}

std::string CountText(std::uint64_t Entries, std::uint64_t Bytes) {
    return std::to_string(Entries) + (Entries == 1 ? " entry, " : " entries, ") +
           SizeTextWithBytes(Bytes);
}

RunOutcome DryRunOutcome(const TransferRequest& Request, const PreflightResult& Result,
                         bool bRefused) {
    std::string text = std::string("Would ") + (Request.bMove ? "move " : "copy ") +
                       CountText(Result.Entries, Result.Bytes) + ".";
    if (Result.CopiedEntries != Result.Entries || Result.CopiedBytes != Result.Bytes) {
        text +=
            " Really to be copied: " + CountText(Result.CopiedEntries, Result.CopiedBytes) + ".";
    }
    if (Result.bCanceled) {
        text += " There is more: the look was ended early.";
    }
    const bool bFails = bRefused || Result.Findings.AnyStopsJob();
    return {.Result = bFails ? RunResult::Failed : RunResult::Succeeded, .Text = text};
}

std::optional<RunOutcome> Judge(const TransferRequest& Request, const PreflightResult& Result,
                                LineConsole& Console, bool bKeysBefore) {
    const bool bRefused = Result.bRemovesUnselected && !Request.bFollowLinks;
    if (Request.bDryRun) {
        return DryRunOutcome(Request, Result, bRefused);
    }
    const std::uint64_t allowed =
        Request.bFollowLinks
            ? Result.Findings.Count(PreflightFindingKind::LinkToDirectory) +
                  Result.Findings.Count(PreflightFindingKind::LinkToDirectoryOnMove)
            : 0;
    if (Console.CanAsk() && Result.Findings.Count() > allowed) {
        if (!AskWhetherToGoOn(Request.bMove ? "move" : "copy", Console, bKeysBefore)) {
            return CanceledOutcome(Console);
        }
        return std::nullopt;
    }
    if (bRefused) {
        return RunOutcome{.Result = RunResult::Failed,
                          .Text = "the move would remove entries that were not selected; pass "
                                  "--follow-links to allow it"};
    }
    return std::nullopt;
}

} // namespace

std::optional<RunOutcome> RunPreflightPhase(const TransferRequest& Request,
                                            const TarvaneTransferPlan& Plan, LineConsole& Console,
                                            ProgressOutput& Output) {
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
    ListFindings(look.Result(), Console);
    Output.Looked(look.Result());
    return Judge(Request, look.Result(), Console, Console.TakesKeys());
}
