#include "line_front_end.h"

#include "command_line.h"
#include "completion_bell.h"
#include "exit_status.h"
#include "flush_phase.h"
#include "line_console.h"
#include "plan_builder.h"
#include "preflight_phase.h"
#include "progress_styles.h"
#include "tarvanepane.h"
#include "track_fetch.h"
#include "transfer_phase.h"
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
    LineWriter errors(STDERR_FILENO);
    errors.Add(CleanForScreen("tarvane: " + Sentence));
    errors.Finish();
}

// One transfer from its plan to its last line.
class LineFrontEnd {
public:
    LineFrontEnd(const TransferRequest& UserRequest, TarvaneTransferPlan UserPlan)
        : Request(UserRequest), Plan(std::move(UserPlan)),
          Flush(DirectoriesToFlush(Plan, Request.bDryRun ? FlushChoice::Never : Request.Flush)),
          Output(MakeOutput()), Results(STDOUT_FILENO) {}

    int Run() {
        RunOutcome outcome = RunPhases();
        const int exitStatus = ExitStatusOf(outcome);
        Output->Ended(outcome, exitStatus);
        Console.Close();
        SayEnd(outcome);
        return FinishOutputs(exitStatus);
    }

private:
    bool IsJson() const { return Request.Progress == ProgressStyle::Json; }
    std::unique_ptr<ProgressOutput> MakeOutput();
    RunOutcome RunPhases();
    void SayWhatGoesWhere();
    void SayThatTracksStay();
    void SayDone(const std::string& Text);
    void SayEnd(const RunOutcome& Outcome);
    int FinishOutputs(int ExitStatus);

    const TransferRequest& Request;
    TarvaneTransferPlan Plan;
    Flusher Flush;
    LineConsole Console;
    std::unique_ptr<ProgressOutput> Output;
    // Standard output, unless the records go there.
    LineWriter Results;
};

std::unique_ptr<ProgressOutput> LineFrontEnd::MakeOutput() {
    const ProgressStyle style = Request.Progress;
    if (IsJson()) {
        return MakeJsonOutput(Request.IntervalSeconds);
    }
    if (Request.bQuiet || style == ProgressStyle::None) {
        return std::make_unique<ProgressOutput>();
    }
    if (style != ProgressStyle::Lines && Console.CanRedraw()) {
        Console.TakeKeys(true);
        return MakeLiveOutput(Console);
    }
    if (style == ProgressStyle::Lines || Console.IsTerminal()) {
        return MakeLinesOutput(Console, Request.IntervalSeconds);
    }
    return std::make_unique<ProgressOutput>();
}

RunOutcome LineFrontEnd::RunPhases() {
    if (Request.bPreflight || Request.bDryRun) {
        if (std::optional<RunOutcome> end = RunPreflightPhase(Request, Plan, Console, *Output)) {
            return *end;
        }
    }
    if (Request.bDryRun) {
        return {.Result = RunResult::Failed, .Text = "the look through the sources has no result"};
    }
    SayWhatGoesWhere();
    SayThatTracksStay();
    RunOutcome outcome = TransferPhase(Request, std::move(Plan), Console, *Output).Run();
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
        Console.End().Terminate(SIGPIPE, LineConsole::Clock::now());
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
    if (Request.bDryRun && Outcome.Result != RunResult::Canceled) {
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

int LineFrontEnd::FinishOutputs(int ExitStatus) {
    const int recordsError = Output->Finish();
    Results.Finish();
    Console.Finish();
    if (!Request.bQuiet && TakeTarvaneCompletionBell()) {
        Console.RingBell();
    }
    const int error = recordsError != 0 ? recordsError : Results.Error();
    if (error == EPIPE) {
        return kExitBySignal + SIGPIPE;
    }
    if (error != 0) {
        PrintSentence(std::string("write error: ") + std::strerror(error));
        return ExitStatus == kExitDone ? kExitFailed : ExitStatus;
    }
    return ExitStatus;
}

// Why the request cannot be carried out here; empty when it can.
std::string WhyNotHere(const TransferRequest& Request) {
    if (Request.Progress == ProgressStyle::Live && !CanRedrawHere()) {
        return "--progress=live needs a terminal that can redraw lines on standard error; pass "
               "--progress=lines or another style";
    }
    return CanAskHere() ? std::string() : SentenceIfNobodyCanBeAsked(Request);
}

std::variant<TrackList, TrackListFailure> WaitForTracks(const std::string& Device,
                                                        int& OutEndStatus) {
    TrackList list;
    std::string reason;
    switch (FetchTrackList(Device, list, reason, OutEndStatus)) {
    case TrackFetchResult::Fetched:
        return list;
    case TrackFetchResult::Failed:
        return TrackListFailure{reason};
    case TrackFetchResult::Canceled:
        break;
    }
    return TrackListFailure{};
}

int ExitStatusOf(PlanRefusalKind Kind, int EndStatus) {
    switch (Kind) {
    case PlanRefusalKind::WrongUsage:
        return kExitUsage;
    case PlanRefusalKind::Failed:
        return kExitFailed;
    case PlanRefusalKind::Canceled:
        break;
    }
    return EndStatus;
}

} // namespace

int RunLineFrontEnd(const TransferRequest& Request) {
    if (const std::string reason = WhyNotHere(Request); !reason.empty()) {
        PrintSentence(reason);
        return kExitUsage;
    }
    int endStatus = kExitDone;
    BuiltPlan built = BuildPlan(Request, [&endStatus](const std::string& Device) {
        return WaitForTracks(Device, endStatus);
    });
    if (const auto* refusal = std::get_if<PlanRefusal>(&built)) {
        for (const std::string& sentence : refusal->Sentences) {
            PrintSentence(sentence);
        }
        return ExitStatusOf(refusal->Kind, endStatus);
    }
    return LineFrontEnd(Request, std::get<TarvaneTransferPlan>(std::move(built))).Run();
}
