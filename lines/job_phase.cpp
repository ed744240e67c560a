#include "job_phase.h"

#include "free_name.h"
#include "progress_texts.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace {

using Action = TarvaneTransferConflictAction;

// Whoever has answered within this time is still looking at the screen.
constexpr std::chrono::seconds kStillAttentive{2};

} // namespace

TransferPhase::TransferPhase(const TransferRequest& Request, TarvaneTransferPlan Plan,
                             Prompt& UserConsole, Reporter& UserOutput)
    : Console(UserConsole), Output(UserOutput), bKeysBefore(UserConsole.TakesKeys()),
      Session(std::move(Plan)),
      Desk(Session.Job(), ConflictPolicy(Request.OnConflict, Request.OnDirectoryConflict)) {}

RunOutcome TransferPhase::Run() {
    Console.SetPartingSentence("left before the transfer has stopped; partial files may remain");
    while (!Session.IsOver()) {
        Heed(Console.Wait(Timeout(), Session.OverFd()));
        HeedEnd();
        AttendDesk();
        if (Console.TakeStatusRequest()) {
            const ProgressView view = Look();
            Console.PrintLine(JobText(view.Snapshot, view.Claims));
        }
        if (Console.TakeFrame()) {
            ShowFrame();
        }
    }
    CloseQuestion();
    Console.Clear();
    Console.SetPartingSentence({});
    Output.Running(Look());
    return Outcome();
}

ProgressView TransferPhase::Look() {
    const TarvaneTransferUiSnapshot snapshot = Session.Job().MakeUiSnapshot();
    const bool bWaiting = Question.has_value();
    return {snapshot, [this] { return Session.Job().MakeJobSnapshot().State; },
            Watch.Observe(snapshot, bWaiting, Clock::now())};
}

void TransferPhase::ShowFrame() {
    // Seen even while the question is shown, so that the wait for an answer is no stall.
    const ProgressView view = Look();
    if (!Question) {
        Output.Running(view);
        return;
    }
    Console.CallForAnswer();
    const TerminalSize size = Console.Size();
    const ConflictQuestion::Screen screen = Question->Show(size);
    Console.Show(screen.Lines, size, screen.Cursor);
}

std::chrono::microseconds TransferPhase::Timeout() const {
    return Question ? Console.UntilFrame() : std::min(Console.UntilFrame(), Desk.Pause());
}

void TransferPhase::Heed(const std::vector<KeyPress>& Keys) {
    for (const KeyPress& key : Keys) {
        if (!Question) {
            if (key.Code == KeyCode::Escape) {
                Console.End().Interrupt();
            }
            continue;
        }
        if (const std::optional<ConflictAnswer> answer = Question->Handle(key, Clock::now())) {
            TakeAnswer(*answer);
        }
        Console.HurryFrame();
    }
}

void TransferPhase::HeedEnd() {
    if (Output.IsBroken() && !Console.End().IsAsked()) {
        Console.End().Terminate(SIGPIPE, Clock::now());
    }
    if (Console.End().IsAsked() && !Session.Job().IsCancelRequested()) {
        Session.Job().RequestCancel();
        Console.HurryFrame();
    }
}

void TransferPhase::AttendDesk() {
    Report(Desk.Attend());
    if (!Desk.OpenQuestion()) {
        CloseQuestion();
    } else if (!Question) {
        Ask();
    }
}

void TransferPhase::Ask() {
    const std::string destination = Desk.OpenQuestion()->Conflict.DestinationPath;
    RenameAdvice advice;
    advice.ProposeFreePath = [destination] {
        return FreeNameBeside(destination).value_or(std::filesystem::path()).native();
    };
    advice.Refusal = [](const std::string& Path) { return RenameRefusal(Path); };
    const Clock::time_point now = Clock::now();
    const bool bAttentive = now - AnsweredAt < kStillAttentive;
    QuestionId = Desk.OpenQuestion()->Id;
    Question.emplace(Desk.OpenQuestion()->Conflict, std::move(advice),
                     now + (bAttentive ? kNextQuestionDeadTime : kQuestionDeadTime));
    Console.TakeKeys(true);
    Console.HurryFrame();
}

void TransferPhase::TakeAnswer(const ConflictAnswer& Answer) {
    Console.PrintLine(Question->AnswerLine());
    CloseQuestion();
    AnsweredAt = Clock::now();
    if (Answer.Action == Action::Cancel) {
        Console.End().Interrupt();
    }
    Report(Desk.Answer(QuestionId, Answer));
}

void TransferPhase::CloseQuestion() {
    if (Question) {
        Question.reset();
        Console.TakeKeys(bKeysBefore);
    }
}

void TransferPhase::Report(const AnsweredConflict* Answered) {
    if (Answered != nullptr) {
        Output.Answered(*Answered);
    }
}

RunOutcome TransferPhase::Outcome() {
    const TarvaneTransferUiSnapshot snapshot = Session.Job().MakeUiSnapshot();
    RunOutcome outcome{.Result = RunResult::Failed, .Text = snapshot.MessageText};
    if (snapshot.bSucceeded) {
        outcome.Result = RunResult::Succeeded;
    } else if (snapshot.bCanceled && Desk.FailSentence().empty()) {
        outcome.Result = RunResult::Canceled;
    } else if (snapshot.bCanceled) {
        outcome.Text = Desk.FailSentence();
    }
    // A signal that ends programs decides the status even when the job was faster.
    if (Console.End().IsAsked() && Console.End().Signal() != SIGINT) {
        outcome.EndSignal = Console.End().Signal();
    }
    return outcome;
}
