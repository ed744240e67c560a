#include "prompt_front_end.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <unistd.h>
#include <variant>
#include <vector>

#include "completion_bell.h"
#include "end_lines.h"
#include "finish_step.h"
#include "flush_phase.h"
#include "plan_builder.h"
#include "plan_sources.h"
#include "preflight_phase.h"
#include "prompt.h"
#include "recorded_job.h"
#include "reporters.h"
#include "track_wait.h"
#include "verbose_lines.h"

namespace {

// One run from the request to its last line.
class PromptFrontEnd {
public:
    PromptFrontEnd(const PromptRequest& UserRequest, Terminal& TerminalToUse,
                   ExitStatusFunction ExitStatusForOutcome)
        : Request(UserRequest), Transfer(Request.Transfer), ExitStatusOf(ExitStatusForOutcome),
          Screen(TerminalToUse), Shown(Screen, ExitStatusOf), Loop(Screen, Shown),
          Report(MakeReporter(Request, Screen, Shown)), Results(STDOUT_FILENO) {}

    RunOutcome Run();

private:
    bool IsJson() const { return Request.Progress == ProgressStyle::Json; }
    bool IsVerbose() const { return Request.bVerbose && !IsJson(); }
    PromptContext Context() {
        return {Screen, Shown, Loop, *Report, IsVerbose() ? &Results : nullptr};
    }

    BuiltPlan Plan();
    const KnownDiscs::mapped_type& TracksIn(const std::string& Device);
    RunOutcome Refuse(const PlanRefusal& Refusal);
    RunOutcome Carry(const TarvaneTransferPlan& Plan);
    void SayWhatGoesWhere(const TarvaneTransferPlan& Plan);
    void SayThatTracksStay(const TarvaneTransferPlan& Plan);
    void SayDone(const std::string& Text);
    void Say(const std::vector<EndLine>& Lines);
    void SayEnd(const RunOutcome& Outcome);
    void FinishOutputs(RunOutcome& InOutOutcome);

    const PromptRequest& Request;
    const TransferRequest& Transfer;
    ExitStatusFunction ExitStatusOf;
    // Until everything is written, which is after the terminal has given the signals back.
    const SigpipeIgnored ClosedPipesAreErrors;
    Terminal& Screen;
    Prompt Shown;
    InterfaceLoop Loop;
    std::unique_ptr<Reporter> Report;
    // Standard output, unless the records go there.
    LineQueue Results;
    KnownDiscs Discs;
};

RunOutcome PromptFrontEnd::Run() {
    BuiltPlan built = Plan();
    if (const auto* refusal = std::get_if<PlanRefusal>(&built)) {
        return Refuse(*refusal);
    }
    RunOutcome outcome = Carry(std::get<TarvaneTransferPlan>(built));
    Report->RunIsOver(outcome, ExitStatusOf(outcome));
    Shown.Close(Loop.Requests());
    SayEnd(outcome);
    FinishOutputs(outcome);
    return outcome;
}

BuiltPlan PromptFrontEnd::Plan() {
    return BuildPlan(Transfer, [this](const std::string& Device) { return TracksIn(Device); });
}

// Asks each drive once.
const KnownDiscs::mapped_type& PromptFrontEnd::TracksIn(const std::string& Device) {
    const auto [position, bNew] = Discs.try_emplace(Device);
    if (bNew) {
        position->second = ListTracksAtPrompt(Device, Context());
    }
    return position->second;
}

RunOutcome PromptFrontEnd::Refuse(const PlanRefusal& Refusal) {
    Shown.Close(Loop.Requests());
    for (const std::string& sentence : Refusal.Sentences) {
        Shown.PrintMessage(sentence);
    }
    Shown.Finish();
    switch (Refusal.Kind) {
    case PlanRefusalKind::WrongUsage:
        return {.Result = RunResult::WrongUsage};
    case PlanRefusalKind::Failed:
        return {.Result = RunResult::Failed};
    case PlanRefusalKind::Canceled:
        return {.Result = RunResult::Canceled, .EndSignal = Loop.Requests().Signal()};
    }
    return {.Result = RunResult::Failed};
}

RunOutcome PromptFrontEnd::Carry(const TarvaneTransferPlan& Plan) {
    const PromptContext context = Context();
    std::unique_ptr<StatusRecord> record;
    try {
        record = RecordFor(Transfer, Plan);
    } catch (const std::system_error& error) {
        return EndWithoutRecord(error);
    }
    FoundBeforehand found;
    if (std::optional<RunOutcome> end =
            RunPreflightPhase(Transfer, Plan, context, Discs, found, record.get())) {
        return *end;
    }
    SayWhatGoesWhere(Plan);
    SayThatTracksStay(Plan);
    FlushStep flush(Plan, DirectoriesToFlush(Plan, Transfer.Flush));
    RunOutcome outcome = RunRecordedJob(Transfer, Plan, found, record.get(), context);
    if (flush.IsNeededAfter(outcome)) {
        Say(JobEndLines(Transfer, outcome));
        RunFlushPhase(flush, context, outcome);
    }
    return outcome;
}

void PromptFrontEnd::SayWhatGoesWhere(const TarvaneTransferPlan& Plan) {
    if (!IsVerbose()) {
        return;
    }
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        Results.Add(VerboseLine(item));
    }
    if (Results.Error() == EPIPE) {
        Loop.Requests().Terminate(SIGPIPE, Loop.Now());
    }
}

// A move that leaves its sources where they are is no mistake, but nothing that users expect.
void PromptFrontEnd::SayThatTracksStay(const TarvaneTransferPlan& Plan) {
    if (Plan.bMove && HasTracks(Plan) && !Request.bQuiet) {
        Shown.PrintMessage("the tracks of a CD are copied: nothing can be removed from a disc");
    }
}

void PromptFrontEnd::SayDone(const std::string& Text) {
    if (!Request.bQuiet && !IsJson()) {
        Shown.PrintSentence(Text);
    }
}

void PromptFrontEnd::Say(const std::vector<EndLine>& Lines) {
    for (const EndLine& line : Lines) {
        switch (line.What) {
        case EndLine::Kind::Problem:
            Shown.PrintMessage(line.Text);
            break;
        case EndLine::Kind::Detail:
            Shown.PrintLine(line.Text);
            break;
        case EndLine::Kind::Done:
            SayDone(line.Text);
            break;
        }
    }
}

void PromptFrontEnd::SayEnd(const RunOutcome& Outcome) {
    if (Transfer.bDryRun && Outcome.Result != RunResult::Canceled) {
        if (!IsJson()) {
            Results.Add(Outcome.Text);
        }
        return;
    }
    Say(Outcome.bFlushed ? FlushEndLines(Outcome) : JobEndLines(Transfer, Outcome));
}

void PromptFrontEnd::FinishOutputs(RunOutcome& InOutOutcome) {
    const int recordsError = Report->Finish();
    Results.Finish();
    if (!Request.bQuiet && AwaitTarvaneCompletionBell()) {
        Shown.RingBell();
    }
    const int error = recordsError != 0 ? recordsError : Results.Error();
    if (error == EPIPE) {
        InOutOutcome.EndSignal = SIGPIPE;
    } else if (error != 0) {
        Shown.PrintMessage(std::string("write error: ") + std::strerror(error));
        if (InOutOutcome.Result == RunResult::Succeeded) {
            InOutOutcome.Result = RunResult::Failed;
        }
    }
    Shown.Finish();
}

// Why the request cannot be carried out here; empty when it can.
std::string WhyNotHere(const PromptRequest& Request, const Terminal& Screen) {
    if (Request.Progress == ProgressStyle::Live && !CanRedrawProgress(Screen)) {
        return "--progress=live needs a terminal that can redraw lines on standard error; pass "
               "--progress=lines or another style";
    }
    return Screen.CanAsk() ? std::string() : SentenceIfNobodyCanBeAsked(Request.Transfer);
}

} // namespace

RunOutcome RunAtPrompt(const PromptRequest& Request, Terminal& Screen,
                       ExitStatusFunction ExitStatusOf) {
    if (const std::string reason = WhyNotHere(Request, Screen); !reason.empty()) {
        Prompt prompt(Screen, ExitStatusOf);
        prompt.PrintMessage(reason);
        prompt.Finish();
        return {.Result = RunResult::WrongUsage, .Text = reason};
    }
    PromptRequest resolved = Request;
    if (!resolved.Transfer.OnConflict) {
        resolved.Transfer.OnConflict =
            Screen.CanAsk() ? FileConflictChoice::Ask : FileConflictChoice::Fail;
    }
    return PromptFrontEnd(resolved, Screen, ExitStatusOf).Run();
}
