#include "job_phase.h"

#include <cerrno>
#include <csignal>
#include <optional>
#include <string>
#include <utility>

#include "conflict_question.h"
#include "job_step.h"
#include "key_guard.h"
#include "line_queue.h"
#include "progress_texts.h"
#include "prompt.h"
#include "question_layout.h"
#include "reporter.h"
#include "verbose_lines.h"

namespace {

// Whether somebody hears of each taken name.
bool TellsEachName(const PromptContext& Context) {
    return Context.Verbose != nullptr || Context.Report.ReportsEachConflict();
}

class JobActivity : public Activity {
public:
    JobActivity(JobStep& RunningStep, const PromptContext& ContextToUse)
        : Context(ContextToUse), Step(RunningStep) {
        Step.SetNameListener([this](const SettledConflict& Settled) { Say(Settled); });
    }

    void TakeKey(const KeyPress& Key) override;
    bool IsOver() override;
    void Draw() override;
    std::string StatusText() override;
    int Descriptor() const override { return Step.Descriptor(); }
    std::chrono::microseconds LongestWait() const override { return Step.LongestWait(); }
    bool NeedsAnswer() const override { return Question.has_value(); }

    // Reports the last state. Requires: it is over.
    RunOutcome Finish();

private:
    ProgressView View();
    bool IsOutputBroken() const;
    void FollowRequests();
    void FollowQuestion();
    void Ask(const ConflictDesk::Question& Wanted);
    void TakeAnswer(const ConflictAnswer& Answer);
    void Say(const SettledConflict& Settled);

    const PromptContext& Context;
    JobStep& Step;
    KeyGuard Guard;
    std::optional<ConflictQuestion> Question;
    std::uint64_t QuestionId = 0;
};

bool JobActivity::IsOver() {
    FollowRequests();
    const bool bOver = Step.Attend();
    FollowQuestion();
    return bOver;
}

bool JobActivity::IsOutputBroken() const {
    const LineQueue* lines = Context.Verbose;
    return Context.Report.IsBroken() || (lines != nullptr && lines->Error() == EPIPE);
}

void JobActivity::FollowRequests() {
    EndRequest& requests = Context.Loop.Requests();
    if (IsOutputBroken() && !requests.IsAsked()) {
        requests.Terminate(SIGPIPE, Context.Loop.Now());
    }
    if (requests.IsAsked() && !Step.Job().IsCancelRequested()) {
        Step.Cancel();
        Context.Loop.HurryFrame();
    }
}

void JobActivity::FollowQuestion() {
    if (!Step.OpenQuestion()) {
        Question.reset();
    } else if (!Question) {
        Ask(*Step.OpenQuestion());
    }
}

void JobActivity::Ask(const ConflictDesk::Question& Wanted) {
    Question.emplace(Wanted.Name, AdviceFor(Wanted.Name.Conflict.DestinationPath));
    QuestionId = Wanted.Id;
    Guard.QuestionAppears(Context.Loop.Now());
    Context.Loop.HurryFrame();
}

void JobActivity::TakeKey(const KeyPress& Key) {
    if (!Question) {
        if (Key.Code == KeyCode::Escape) {
            Context.Loop.Requests().Interrupt();
        }
        Guard.KeyIsDead(Context.Loop.Now());
        return;
    }
    if (!Guard.LetsThrough(Key, Context.Loop.Now())) {
        return;
    }
    if (const std::optional<ConflictAnswer> answer = Question->Handle(Key)) {
        TakeAnswer(*answer);
    }
}

void JobActivity::TakeAnswer(const ConflictAnswer& Answer) {
    Context.Shown.PrintBesideQuestions(Question->AnswerLine());
    Question.reset();
    Guard.AnswerIsGiven(Context.Loop.Now());
    if (Answer.Action == TarvaneTransferConflictAction::Cancel) {
        Context.Loop.Requests().Interrupt();
    }
    Step.Answer(QuestionId, Answer);
}

void JobActivity::Say(const SettledConflict& Settled) {
    Context.Report.ConflictIsSettled(Settled);
    if (Context.Verbose != nullptr) {
        Context.Verbose->Add(VerboseLine(Settled));
    }
}

ProgressView JobActivity::View() {
    const JobView view = Step.View(Context.Loop.Now());
    return {Step.Job(), view.Snapshot, view.Claims};
}

// Looks at the job while a question is shown, too, so that the wait for an answer is no stall.
void JobActivity::Draw() {
    if (Context.Verbose != nullptr) {
        Context.Verbose->Pump();
    }
    const ProgressView view = View();
    if (!Question) {
        if (!view.Snapshot.bFinished) {
            Context.Report.JobRuns(view);
        }
        return;
    }
    const TerminalSize size = Context.Screen.Size();
    const QuestionScreen screen = LayOutQuestion(*Question, size);
    Context.Shown.Show(screen.Lines, size, screen.Cursor);
}

std::string JobActivity::StatusText() {
    const ProgressView view = View();
    return JobText(view.Snapshot, view.Claims);
}

RunOutcome JobActivity::Finish() {
    RunOutcome outcome = Step.Finish();
    Context.Report.JobIsOver(View());
    // A signal that ends programs decides the status even when the job was faster.
    const EndRequest& requests = Context.Loop.Requests();
    if (requests.IsAsked() && requests.Signal() != SIGINT) {
        outcome.EndSignal = requests.Signal();
    }
    return outcome;
}

} // namespace

RunOutcome RunJobPhase(const TransferRequest& Request, TarvaneTransferPlan Plan,
                       FoundBeforehand Found, const PromptContext& Context, DeskNotes* Notes) {
    JobStep step(Request, std::move(Plan), std::move(Found), TellsEachName(Context), Notes);
    JobActivity job(step, Context);
    Context.Shown.SetPartingSentence([&step] { return step.PartingSentence(); });
    Context.Loop.Run(job);
    Context.Shown.Clear();
    Context.Shown.SetPartingSentence(nullptr);
    return job.Finish();
}
