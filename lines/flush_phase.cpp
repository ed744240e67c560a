#include "flush_phase.h"

#include <optional>
#include <string>

#include "progress_texts.h"
#include "prompt.h"
#include "reporter.h"
#include "wait_after_job.h"

namespace {

// Waits until everything is written or the wait is ended.
class FlushWait : public WaitAfterJob {
public:
    FlushWait(FlushStep& FlushToWatch, const PromptContext& ContextToUse)
        : WaitAfterJob(ContextToUse), Flush(FlushToWatch) {}

    bool IsOver() override {
        const EndRequest& requests = Requests();
        return Flush.Attend() || requests.IsAsked();
    }

    void Draw() override { Context.Report.FlushRuns(Flush.Progress()); }
    std::string StatusText() override { return FlushText(Flush.Progress()); }
    // Nothing tells when a flush is over, and most are over soon.
    std::chrono::microseconds LongestWait() const override { return std::chrono::milliseconds(20); }

private:
    FlushStep& Flush;
};

} // namespace

void RunFlushPhase(FlushStep& Flush, const PromptContext& Context, RunOutcome& InOutOutcome) {
    EndRequest& requests = Context.Loop.Requests();
    requests.FulfillInterrupt();
    if (Context.Report.IsBroken() || requests.IsAsked()) {
        Flush.NoteLeftOut(InOutOutcome);
        return;
    }
    Flush.Start(InOutOutcome);
    FlushWait wait(Flush, Context);
    Context.Loop.Run(wait);
    Context.Shown.Clear();
    if (Flush.Progress().bFinished) {
        Context.Report.FlushIsOver(Flush.Progress());
    }
    Flush.NoteEnd(requests.IsAsked() ? std::optional(requests.Signal()) : std::nullopt,
                  InOutOutcome);
}
