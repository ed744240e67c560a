#include "finishing_phase.h"

#include <chrono>
#include <csignal>
#include <string>

#include "finish_step.h"
#include "progress_texts.h"
#include "prompt.h"
#include "reporter.h"
#include "wait_after_job.h"

namespace {

constexpr std::chrono::seconds kUnseen{1};

constexpr char kLeft[] = "left before all modes and dates were set";
constexpr char kLeftPrivate[] =
    "left before all modes and dates were set: what was not reached stays private";

// Waits until the step is over, and ends it when the run is to end.
class FinishWait : public WaitAfterJob {
public:
    FinishWait(FinishStep& RunningStep, const PromptContext& ContextToUse)
        : WaitAfterJob(ContextToUse), Step(RunningStep), ShownFrom(Context.Loop.Now() + kUnseen) {}

    bool IsOver() override {
        const EndRequest& requests = Requests();
        if (requests.IsAsked() && requests.Signal() == SIGINT) {
            Step.Cancel();
        } else if (requests.IsAsked()) {
            Step.EndBy(requests.Signal(), Context.Loop.Now());
        }
        return Step.Attend(Context.Loop.Now());
    }

    void Draw() override {
        if (Context.Loop.Now() >= ShownFrom) {
            Context.Report.FinishRuns(Step.Progress());
        }
    }
    std::string StatusText() override { return FinishText(Step.Progress()); }
    int Descriptor() const override { return Step.Descriptor(); }
    std::chrono::microseconds LongestWait() const override {
        return std::chrono::milliseconds(100);
    }

private:
    FinishStep& Step;
    const Terminal::TimePoint ShownFrom;
};

void WaitFor(FinishStep& Step, const char* PartingSentence, const PromptContext& Context) {
    FinishWait wait(Step, Context);
    Context.Shown.SetPartingSentence([PartingSentence] { return std::string(PartingSentence); });
    Context.Loop.Run(wait);
    Context.Shown.Clear();
    Context.Shown.SetPartingSentence(nullptr);
    Context.Report.FinishIsOver(Step.Progress());
}

} // namespace

void RunFinishingPhase(const FinishTask& Task, const PromptContext& Context,
                       RunOutcome& InOutOutcome) {
    EndRequest& requests = Context.Loop.Requests();
    const bool bWasAsked = requests.IsAsked();
    requests.FulfillInterrupt();
    FinishStep step(Task);
    if (step.HasBegun()) {
        WaitFor(step, Task.Preserve.bMode ? kLeftPrivate : kLeft, Context);
    }
    step.NoteEnd(InOutOutcome);
    // Whoever has canceled the job still wants the end.
    if (bWasAsked && !requests.IsAsked()) {
        requests.Interrupt();
    }
}
