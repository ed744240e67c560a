#include "job_phase.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <optional>
#include <string>
#include <utility>

#include "conflict_desk.h"
#include "conflict_question.h"
#include "conflict_tally.h"
#include "free_name.h"
#include "full_path.h"
#include "key_guard.h"
#include "line_queue.h"
#include "plan_sources.h"
#include "progress_texts.h"
#include "progress_watch.h"
#include "prompt.h"
#include "question_layout.h"
#include "quoted.h"
#include "reporter.h"
#include "transfer_session.h"
#include "verbose_lines.h"

namespace {

// None where each name is told. Nor where a track may be skipped: it counts no bytes then, which
// nobody would know at the end.
EngineAnswers AnswersLeftToEngine(const TarvaneTransferPlan& Plan, const FoundBeforehand& Found,
                                  const PromptContext& Context) {
    const bool bTellsEach = Context.Verbose != nullptr || Context.Report.ReportsEachConflict();
    const bool bTracks =
        std::ranges::any_of(Plan.Items, [](const auto& Item) { return IsCdPath(Item.SourcePath); });
    if (bTellsEach || bTracks) {
        return EngineAnswers::None;
    }
    return Found.TakenFiles ? EngineAnswers::SkipOrReplaceFiles : EngineAnswers::SkipFiles;
}

class JobActivity : public Activity {
public:
    JobActivity(const TransferRequest& Request, TarvaneTransferPlan PlanToRun,
                FoundBeforehand FoundInPlan, const PromptContext& ContextToUse)
        : Context(ContextToUse), Plan(std::move(PlanToRun)), Found(std::move(FoundInPlan)),
          Session(Plan), Desk(Session.Job(), ConflictPolicy(RulesOf(Request)),
                              AnswersLeftToEngine(Plan, Found, Context)) {}

    void TakeKey(const KeyPress& Key) override;
    bool IsOver() override;
    void Draw() override;
    std::string StatusText() override;
    int Descriptor() const override { return Session.OverFd(); }
    std::chrono::microseconds LongestWait() const override { return Desk.Pause(); }
    bool NeedsAnswer() const override { return Question.has_value(); }

    // For the case that there is no time to wait for the end.
    std::string PartingSentence();
    // Reports the last state. Requires: it is over.
    RunOutcome Finish();

private:
    ProgressView View();
    bool IsOutputBroken() const;
    void FollowRequests();
    void FollowDesk();
    void Ask(const ConflictDesk::Question& Wanted);
    void TakeAnswer(const ConflictAnswer& Answer);
    void Note(const AnsweredConflict* Answered);
    void Say(const std::optional<SettledConflict>& Settled);

    const PromptContext& Context;
    const TarvaneTransferPlan Plan;
    FoundBeforehand Found;
    TransferSession Session;
    ConflictDesk Desk;
    ConflictTally Tally;
    ProgressWatch Watch;
    KeyGuard Guard;
    std::optional<ConflictQuestion> Question;
    std::uint64_t QuestionId = 0;
};

bool JobActivity::IsOver() {
    FollowRequests();
    FollowDesk();
    return Session.IsOver();
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
    if (requests.IsAsked() && !Session.Job().IsCancelRequested()) {
        Session.Job().RequestCancel();
        Context.Loop.HurryFrame();
    }
}

void JobActivity::FollowDesk() {
    Note(Desk.Attend());
    if (!Desk.OpenQuestion()) {
        Question.reset();
    } else if (!Question) {
        Ask(*Desk.OpenQuestion());
    }
}

void JobActivity::Ask(const ConflictDesk::Question& Wanted) {
    const std::string destination = Wanted.Name.Conflict.DestinationPath;
    RenameAdvice advice;
    advice.ProposeFreePath = [destination] {
        return FreeNameBeside(destination).value_or(std::filesystem::path()).native();
    };
    advice.Refusal = [](const std::string& Path) { return RenameRefusal(Path); };
    Question.emplace(Wanted.Name, std::move(advice));
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
    Note(Desk.Answer(QuestionId, Answer));
}

void JobActivity::Note(const AnsweredConflict* Answered) {
    if (Answered != nullptr) {
        Say(Tally.Add(*Answered));
    }
}

void JobActivity::Say(const std::optional<SettledConflict>& Settled) {
    if (!Settled) {
        return;
    }
    if (Settled->Outcome == ConflictOutcome::Skipped) {
        Found.Unread.LeaveOut(Settled->Answered.Conflict.SourcePath);
    }
    Context.Report.ConflictIsSettled(*Settled);
    if (Context.Verbose != nullptr) {
        Context.Verbose->Add(VerboseLine(*Settled));
    }
}

// Also while a question is shown, so that the wait for an answer is no stall.
ProgressView JobActivity::View() {
    const TarvaneTransferUiSnapshot snapshot = Session.Job().MakeUiSnapshot();
    const bool bWaiting = Question.has_value();
    return {Session.Job(), snapshot, Watch.Observe(snapshot, bWaiting, Context.Loop.Now())};
}

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

// A worker that a drive or disk holds keeps even a process that has ended.
std::string JobActivity::PartingSentence() {
    const std::string left = "left before the transfer has stopped: the program ends when the "
                             "drive or disk answers, and ";
    const bool bCounting = View().Snapshot.TotalItems == 0;
    if (bCounting) {
        return left + "nothing was copied yet";
    }
    const std::string source = Session.Job().GetCurrentPath();
    const std::filesystem::path directory = PlannedDestination(source, Plan).parent_path();
    return left + "a partial copy of " + Quoted(source) + " may stay in " +
           Quoted(directory.native());
}

RunOutcome JobActivity::Finish() {
    Say(Tally.Finish(CountersOf(Session.Job())));
    EndedJob ended{.Job = Session.Job(),
                   .Plan = Plan,
                   .Names = Tally,
                   .LastAnswer = Desk.Answered().empty() ? nullptr : &Desk.Answered().back(),
                   .Unread = Found.Unread,
                   .FailSentence = Desk.FailSentence()};
    if (Desk.LeavesReplacingToEngine()) {
        ended.FilesLeftToEngine = Found.TakenFiles;
    }
    ProgressView view = View();
    view.Claims.bLessThanCounted = view.Claims.bLessThanCounted || IsLessThanCounted(ended);
    Context.Report.JobIsOver(view);
    RunOutcome outcome = OutcomeOf(ended);
    // A signal that ends programs decides the status even when the job was faster.
    const EndRequest& requests = Context.Loop.Requests();
    if (requests.IsAsked() && requests.Signal() != SIGINT) {
        outcome.EndSignal = requests.Signal();
    }
    return outcome;
}

} // namespace

RunOutcome RunJobPhase(const TransferRequest& Request, TarvaneTransferPlan Plan,
                       FoundBeforehand Found, const PromptContext& Context) {
    JobActivity job(Request, std::move(Plan), std::move(Found), Context);
    Context.Shown.SetPartingSentence([&job] { return job.PartingSentence(); });
    Context.Loop.Run(job);
    Context.Shown.Clear();
    Context.Shown.SetPartingSentence(nullptr);
    return job.Finish();
}
