#include "transfer_phase.h"

#include "free_name.h"
#include "progress_lines.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace {

using Action = TarvaneTransferConflictAction;

// The job tells nobody that it waits for an answer. It is looked at often after an answer, when the
// next taken name is likely to come soon, and then less and less often.
constexpr std::chrono::microseconds kShortestPause{200};
constexpr std::chrono::microseconds kLongestPause{20000};
// Whoever has answered within this time is still looking at the screen.
constexpr std::chrono::seconds kStillAttentive{2};

} // namespace

TransferPhase::TransferPhase(const TransferRequest& Request, TarvaneTransferPlan Plan,
                             LineConsole& UserConsole, ProgressOutput& UserOutput)
    : Console(UserConsole), Output(UserOutput),
      Policy(Request.OnConflict, Request.OnDirectoryConflict), ConflictPause(kShortestPause),
      bKeysBefore(UserConsole.TakesKeys()), Session(std::move(Plan)) {}

RunOutcome TransferPhase::Run() {
    Console.SetPartingSentence("left before the transfer has stopped; partial files may remain");
    while (!Session.IsOver()) {
        Heed(Console.Wait(Timeout(), Session.OverFd()));
        HeedEnd();
        AttendConflict();
        if (Console.TakeStatusRequest()) {
            const ProgressView view = Look();
            Console.PrintLine(ProgressLine(view.Snapshot, view.Claims));
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
    const TarvaneTransferUiSnapshot snapshot = Session.Snapshot();
    const bool bWaiting = Question.has_value();
    return {snapshot, Session.StageLabel(), Watch.Observe(snapshot, bWaiting, Clock::now())};
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
    return Question ? Console.UntilFrame() : std::min(Console.UntilFrame(), ConflictPause);
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
    if (Console.End().IsAsked() && !Session.IsCancelRequested()) {
        Session.RequestCancel();
        Console.HurryFrame();
    }
}

void TransferPhase::AttendConflict() {
    TarvaneTransferConflict conflict;
    if (!Session.GetPendingConflict(conflict)) {
        CloseQuestion();
        ConflictPause = std::min(ConflictPause * 2, kLongestPause);
        return;
    }
    if (!Question) {
        Decide(conflict);
    }
}

void TransferPhase::Decide(const TarvaneTransferConflict& Conflict) {
    const ConflictDecision decision = Policy.Decide(Conflict);
    switch (decision.Outcome) {
    case ConflictDecision::Verdict::Answer:
        Resolve(Conflict, decision.Action, decision.RenamePath, false);
        break;
    case ConflictDecision::Verdict::AskUser:
        Ask(Conflict);
        break;
    case ConflictDecision::Verdict::Fail:
        FailSentence = decision.Sentence;
        Resolve(Conflict, Action::Cancel, {}, false);
        break;
    }
}

void TransferPhase::Ask(const TarvaneTransferConflict& Conflict) {
    const std::string destination = Conflict.DestinationPath;
    RenameAdvice advice;
    advice.ProposeFreePath = [destination] {
        return FreeNameBeside(destination).value_or(std::filesystem::path()).native();
    };
    advice.Refusal = [](const std::string& Path) { return RenameRefusal(Path); };
    const Clock::time_point now = Clock::now();
    const bool bAttentive = now - AnsweredAt < kStillAttentive;
    Asked = Conflict;
    Question.emplace(Conflict, std::move(advice),
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
    if (Answer.ForAllFiles) {
        Policy.RememberForAll(*Answer.ForAllFiles);
    }
    if (Answer.ForAllDirectories) {
        Policy.RememberForAll(*Answer.ForAllDirectories);
    }
    Resolve(Asked, Answer.Action, Answer.RenamePath, true);
}

void TransferPhase::CloseQuestion() {
    if (Question) {
        Question.reset();
        Console.TakeKeys(bKeysBefore);
    }
}

void TransferPhase::Resolve(const TarvaneTransferConflict& Conflict, Action Answer,
                            const std::string& RenamePath, bool bByUser) {
    if (Session.ResolveConflict(Answer, RenamePath)) {
        Output.Answered({Conflict, Answer, RenamePath, bByUser});
    }
    ConflictPause = kShortestPause;
}

RunOutcome TransferPhase::Outcome() {
    const TarvaneTransferUiSnapshot snapshot = Session.Snapshot();
    RunOutcome outcome{.Result = RunResult::Failed, .Text = snapshot.MessageText};
    if (snapshot.bSucceeded) {
        outcome.Result = RunResult::Succeeded;
    } else if (snapshot.bCanceled && FailSentence.empty()) {
        outcome.Result = RunResult::Canceled;
    } else if (snapshot.bCanceled) {
        outcome.Text = FailSentence;
    }
    // A signal that ends programs decides the status even when the job was faster.
    if (Console.End().IsAsked() && Console.End().Signal() != SIGINT) {
        outcome.EndSignal = Console.End().Signal();
    }
    return outcome;
}
