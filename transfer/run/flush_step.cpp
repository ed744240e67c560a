#include "flush_step.h"

#include "flush_texts.h"

// What a job has done before it failed or was canceled is in memory like the rest, and a move has
// removed the sources.
bool FlushStep::IsNeededAfter(const RunOutcome& Job) const {
    const bool bDidSomething = Job.Counts && Job.Counts->Entries > 0;
    return (Job.Result == RunResult::Succeeded || bDidSomething) && Flush.HasAnythingToFlush();
}

void FlushStep::Start(const RunOutcome& Job) {
    Flush.Start(Job.Counts.value_or(TransferCounts()).Bytes);
}

bool FlushStep::Attend() {
    Latest = Flush.Poll();
    return Latest.bFinished;
}

void FlushStep::NoteEnd(std::optional<int> EndSignal, RunOutcome& InOutOutcome) const {
    InOutOutcome.bFlushed = Latest.bFinished && Latest.ErrorText.empty();
    if (!Latest.bFinished) {
        InOutOutcome.EndSignal = EndSignal;
        InOutOutcome.FlushText = LeftFlushText(Latest.Reach);
        return;
    }
    if (Latest.ErrorText.empty()) {
        InOutOutcome.FlushText = WrittenText(Latest.Reach, Plan, InOutOutcome);
        return;
    }
    InOutOutcome.FlushError = LostText(Latest.ErrorText, Plan, InOutOutcome);
    if (InOutOutcome.Result == RunResult::Succeeded) {
        InOutOutcome.Text = InOutOutcome.FlushError;
    }
    InOutOutcome.Result = RunResult::Failed;
}

void FlushStep::NoteLeftOut(RunOutcome& InOutOutcome) {
    InOutOutcome.bFlushed = false;
    InOutOutcome.FlushText = StillWritingText(Flush.Poll().Reach);
}
