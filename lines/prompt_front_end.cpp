#include "prompt_front_end.h"

#include "completion_bell.h"
#include "flush_phase.h"
#include "job_phase.h"
#include "plan_builder.h"
#include "preflight_phase.h"
#include "prompt.h"
#include "reporters.h"
#include "screen_text.h"
#include "tarvanepane.h"
#include "track_fetch.h"
#include "verbose_lines.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <unistd.h>
#include <utility>
#include <variant>
#include <vector>

namespace {

void PrintSentence(const std::string& Sentence) {
    OutputQueue errors(STDERR_FILENO);
    errors.Add(CleanForScreen("tarvane: " + Sentence));
    errors.Finish();
}

// One transfer from its plan to its last line.
class LineFrontEnd {
public:
    LineFrontEnd(const PromptRequest& UserRequest, TarvaneTransferPlan UserPlan,
                 ExitStatusFunction ExitStatusForOutcome)
        : Request(UserRequest), Transfer(Request.Transfer), ExitStatusOf(ExitStatusForOutcome),
          Plan(std::move(UserPlan)),
          Flush(DirectoriesToFlush(Plan, Transfer.bDryRun ? FlushChoice::Never : Transfer.Flush)),
          Console(ExitStatusOf), Output(MakeOutput()), Results(STDOUT_FILENO) {}

    RunOutcome Run() {
        RunOutcome outcome = RunPhases();
        Output->Ended(outcome, ExitStatusOf(outcome));
        Console.Close();
        SayEnd(outcome);
        FinishOutputs(outcome);
        return outcome;
    }

private:
    bool IsJson() const { return Request.Progress == ProgressStyle::Json; }
    std::unique_ptr<Reporter> MakeOutput();
    RunOutcome RunPhases();
    void SayWhatGoesWhere();
    void SayThatTracksStay();
    void SayDone(const std::string& Text);
    void SayEnd(const RunOutcome& Outcome);
    void FinishOutputs(RunOutcome& Outcome);

    const PromptRequest& Request;
    const TransferRequest& Transfer;
    ExitStatusFunction ExitStatusOf;
    TarvaneTransferPlan Plan;
    Flusher Flush;
    Prompt Console;
    std::unique_ptr<Reporter> Output;
    // Standard output, unless the records go there.
    OutputQueue Results;
};

std::unique_ptr<Reporter> LineFrontEnd::MakeOutput() {
    const ProgressStyle style = Request.Progress;
    if (IsJson()) {
        return MakeJsonOutput(Request.IntervalSeconds);
    }
    if (Request.bQuiet || style == ProgressStyle::None) {
        return std::make_unique<Reporter>();
    }
    if (style != ProgressStyle::Lines && Console.CanRedraw()) {
        Console.TakeKeys(true);
        return MakeLiveOutput(Console);
    }
    if (style == ProgressStyle::Lines || Console.IsTerminal()) {
        return MakeLinesOutput(Console, Request.IntervalSeconds);
    }
    return std::make_unique<Reporter>();
}

RunOutcome LineFrontEnd::RunPhases() {
    if (Transfer.bPreflight || Transfer.bDryRun) {
        if (std::optional<RunOutcome> end = RunPreflightPhase(Transfer, Plan, Console, *Output)) {
            return *end;
        }
    }
    if (Transfer.bDryRun) {
        return {.Result = RunResult::Failed, .Text = "the look through the sources has no result"};
    }
    SayWhatGoesWhere();
    SayThatTracksStay();
    RunOutcome outcome = TransferPhase(Transfer, std::move(Plan), Console, *Output).Run();
    if (outcome.Result == RunResult::Succeeded && Flush.HasAnythingToFlush()) {
        SayDone(outcome.Text);
        RunFlushPhase(Flush, Console, *Output, outcome);
    }
    return outcome;
}

void LineFrontEnd::SayWhatGoesWhere() {
    if (!Request.bVerbose || IsJson()) {
        return;
    }
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        Results.Add(VerboseLine(item));
    }
    if (Results.Error() == EPIPE) {
        Console.End().Terminate(SIGPIPE, Prompt::Clock::now());
    }
}

void LineFrontEnd::SayDone(const std::string& Text) {
    if (!Request.bQuiet && !IsJson()) {
        Console.PrintLine(Text);
    }
}

// A move that leaves its sources where they are is no mistake, but nothing that users expect.
void LineFrontEnd::SayThatTracksStay() {
    const bool bTracks = std::any_of(Plan.Items.begin(), Plan.Items.end(), [](const auto& Item) {
        return TarvaneIsCddaPath(Item.SourcePath.native());
    });
    if (Plan.bMove && bTracks && !Request.bQuiet) {
        Console.PrintMessage("the tracks of a CD are copied: nothing can be removed from a disc");
    }
}

void LineFrontEnd::SayEnd(const RunOutcome& Outcome) {
    if (Transfer.bDryRun && Outcome.Result != RunResult::Canceled) {
        if (!IsJson()) {
            Results.Add(Outcome.Text);
        }
        return;
    }
    if (Outcome.Result == RunResult::Failed) {
        Console.PrintMessage(Outcome.Text);
        return;
    }
    if (!Outcome.bFlushed) {
        SayDone(Outcome.Text);
    } else if (*Outcome.bFlushed) {
        SayDone("Everything is written. It is safe to unplug the disk.");
    } else {
        SayDone("The copied files stay, but the system is still writing them. Do not unplug the "
                "disk yet.");
    }
}

void LineFrontEnd::FinishOutputs(RunOutcome& Outcome) {
    const int recordsError = Output->Finish();
    Results.Finish();
    Console.Finish();
    if (!Request.bQuiet && TakeTarvaneCompletionBell()) {
        Console.RingBell();
    }
    const int error = recordsError != 0 ? recordsError : Results.Error();
    if (error == EPIPE) {
        Outcome.EndSignal = SIGPIPE;
    } else if (error != 0) {
        PrintSentence(std::string("write error: ") + std::strerror(error));
        if (Outcome.Result == RunResult::Succeeded) {
            Outcome.Result = RunResult::Failed;
        }
    }
}

// Why the request cannot be carried out here; empty when it can.
std::string WhyNotHere(const PromptRequest& Request) {
    if (Request.Progress == ProgressStyle::Live && !CanRedrawHere()) {
        return "--progress=live needs a terminal that can redraw lines on standard error; pass "
               "--progress=lines or another style";
    }
    return CanAskHere() ? std::string() : SentenceIfNobodyCanBeAsked(Request.Transfer);
}

std::variant<TrackList, TrackListFailure> WaitForTracks(const std::string& Device,
                                                        int& OutEndSignal) {
    TrackList list;
    std::string reason;
    switch (FetchTrackList(Device, list, reason, OutEndSignal)) {
    case TrackFetchResult::Fetched:
        return list;
    case TrackFetchResult::Failed:
        return TrackListFailure{reason};
    case TrackFetchResult::Canceled:
        break;
    }
    return TrackListFailure{};
}

RunOutcome OutcomeOf(PlanRefusalKind Kind, int EndSignal) {
    switch (Kind) {
    case PlanRefusalKind::WrongUsage:
        return {.Result = RunResult::WrongUsage};
    case PlanRefusalKind::Failed:
        return {.Result = RunResult::Failed};
    case PlanRefusalKind::Canceled:
        break;
    }
    return {.Result = RunResult::Canceled, .EndSignal = EndSignal};
}

} // namespace

RunOutcome RunAtPrompt(const PromptRequest& Request, ExitStatusFunction ExitStatusOf) {
    if (const std::string reason = WhyNotHere(Request); !reason.empty()) {
        PrintSentence(reason);
        return {.Result = RunResult::WrongUsage, .Text = reason};
    }
    int endSignal = 0;
    BuiltPlan built = BuildPlan(Request.Transfer, [&endSignal](const std::string& Device) {
        return WaitForTracks(Device, endSignal);
    });
    if (const auto* refusal = std::get_if<PlanRefusal>(&built)) {
        for (const std::string& sentence : refusal->Sentences) {
            PrintSentence(sentence);
        }
        return OutcomeOf(refusal->Kind, endSignal);
    }
    return LineFrontEnd(Request, std::get<TarvaneTransferPlan>(std::move(built)), ExitStatusOf)
        .Run();
}
