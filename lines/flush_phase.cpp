#include "flush_phase.h"

#include <csignal>
#include <string>

#include "flush_texts.h"
#include "progress_texts.h"
#include "prompt.h"
#include "reporter.h"

namespace {

// Waits until everything is written or the wait is ended.
class FlushWait : public Activity {
public:
    FlushWait(Flusher& FlushToWatch, const PromptContext& ContextToUse)
        : Flush(FlushToWatch), Context(ContextToUse) {}

    // As it was last seen: unfinished when the wait was ended.
    const FlushProgress& Progress() const { return Latest; }

    void TakeKey(const KeyPress& Key) override {
        if (Key.Code == KeyCode::Escape) {
            Context.Loop.Requests().Interrupt();
        }
    }

    bool IsOver() override {
        EndRequest& requests = Context.Loop.Requests();
        if (Context.Report.IsBroken() && !requests.IsAsked()) {
            requests.Terminate(SIGPIPE, Context.Loop.Now());
        }
        Latest = Flush.Poll();
        return Latest.bFinished || requests.IsAsked();
    }

    void Draw() override { Context.Report.FlushRuns(Latest); }
    std::string StatusText() override { return FlushText(Latest); }
    // Nothing tells when a flush is over, and most are over soon.
    std::chrono::microseconds LongestWait() const override { return std::chrono::milliseconds(20); }

private:
    Flusher& Flush;
    const PromptContext& Context;
    FlushProgress Latest;
};

} // namespace

void RunFlushPhase(Flusher& Flush, const TarvaneTransferPlan& Plan, const PromptContext& Context,
                   RunOutcome& InOutOutcome) {
    EndRequest& requests = Context.Loop.Requests();
    requests.FulfillInterrupt();
    if (Context.Report.IsBroken() || requests.IsAsked()) {
        InOutOutcome.bFlushed = false;
        InOutOutcome.FlushText = StillWritingText(Flush.Poll().Reach);
        return;
    }
    Flush.Start(InOutOutcome.Counts.value_or(TransferCounts()).Bytes);
    FlushWait wait(Flush, Context);
    Context.Loop.Run(wait);
    Context.Shown.Clear();
    const FlushProgress& progress = wait.Progress();
    InOutOutcome.bFlushed = progress.bFinished && progress.ErrorText.empty();
    if (!progress.bFinished) {
        InOutOutcome.EndSignal = requests.Signal();
        InOutOutcome.FlushText = LeftFlushText(progress.Reach);
        return;
    }
    Context.Report.FlushIsOver(progress);
    if (progress.ErrorText.empty()) {
        InOutOutcome.FlushText = WrittenText(progress.Reach, Plan, InOutOutcome);
        return;
    }
    InOutOutcome.FlushError = LostText(progress.ErrorText, Plan, InOutOutcome);
    if (InOutOutcome.Result == RunResult::Succeeded) {
        InOutOutcome.Text = InOutOutcome.FlushError;
    }
    InOutOutcome.Result = RunResult::Failed;
}
