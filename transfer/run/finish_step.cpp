#include "finish_step.h"

#include "finish_texts.h"
#include "plan_sources.h"
#include "private_umask.h"
#include "unrecorded.h"

#include <algorithm>
#include <csignal>
#include <string>
#include <utility>

namespace {

constexpr std::chrono::seconds kAfterSignal{1};

// The engine's sentences have periods, those of the front ends have not.
std::string Joined(std::string Sentence, const std::string& Other) {
    if (Sentence.ends_with('.')) {
        Sentence.pop_back();
    }
    return Sentence + "; " + Other;
}

} // namespace

// A track has neither a mode nor an owner.
std::unique_ptr<StatusRecord> RecordFor(const TransferRequest& Request,
                                        const TarvaneTransferPlan& Plan) {
    if (!Request.Preserve.IsAny() || Request.bDryRun || HasOnlyTracks(Plan)) {
        return nullptr;
    }
    return std::make_unique<StatusRecord>();
}

RunOutcome EndWithoutRecord(const std::system_error& Error) {
    return {.Result = RunResult::Failed,
            .Text = std::string("cannot keep a record of modes and dates: ") + Error.what()};
}

FinishPreparation::FinishPreparation(const TransferRequest& Request,
                                     const TarvaneTransferPlan& Plan, const StatusRecord& Record)
    : FromDesk{.bMakesPrivate = Request.Preserve.bMode}, Task{.Record = Record,
                                                              .Names = FromDesk.Names,
                                                              .Preserve = Request.Preserve} {
    if (Request.Preserve.bMode) {
        Task.Umask = UserUmask();
        Task.MadeParents = MissingParents(Plan);
        Task.MadeFiles = FreeTrackNames(Plan);
        Task.JobStarted = TimeNow();
        Task.Plan = &Plan;
    }
}

FinishTask FinishPreparation::TaskAfter(const RunOutcome& Job) {
    const TransferCounts counts = Job.Counts.value_or(TransferCounts());
    Task.Privates = std::move(FromDesk.Privates);
    Task.bWhole = Job.Result == RunResult::Succeeded;
    Task.CopiedEntries = counts.Entries + counts.Merged;
    return Task;
}

FinishStep::FinishStep(const FinishTask& Task) : Total(Task.Record.Entries()) {
    try {
        Work.emplace(Task);
    } catch (const std::system_error& error) {
        bOver = true;
        NotBegun.Unreached = Total;
        NotBegun.Broken = error.what();
    }
}

bool FinishStep::Attend(TimePoint Now) {
    if (EndsAt && Now >= *EndsAt) {
        Cancel();
    }
    bOver = bOver || Work->IsOver();
    return bOver;
}

void FinishStep::Cancel() {
    if (Work) {
        Work->Cancel();
    }
}

void FinishStep::EndBy(int Signal, TimePoint Now) {
    EndSignal = Signal;
    if (!EndsAt) {
        EndsAt = Now + kAfterSignal;
    }
}

FinishProgress FinishStep::Progress() const {
    const std::uint64_t done = Work ? Work->EntriesDone() : 0;
    return {.Done = done, .Total = Total, .bFinished = bOver && done == Total};
}

void FinishStep::NoteEnd(RunOutcome& InOutOutcome) const {
    FinishResult& result = InOutOutcome.Finishing.emplace(Work ? Work->Result() : NotBegun);
    // The record has what the job has not come to, too.
    result.Unreached =
        std::min(result.Unreached, InOutOutcome.Counts.value_or(TransferCounts()).Entries);
    if (EndSignal || result.bCanceled) {
        InOutOutcome.EndSignal = EndSignal.value_or(SIGINT);
    }
    const std::string failure = FinishFailureText(result);
    if (failure.empty()) {
        return;
    }
    const bool bFailed = InOutOutcome.Result == RunResult::Failed;
    InOutOutcome.Text = bFailed ? Joined(InOutOutcome.Text, failure) : failure;
    InOutOutcome.Result = RunResult::Failed;
}
