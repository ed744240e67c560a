// A running job as the user lives through it: progress, conflicts, cancel.

#pragma once

#include "conflict_desk.h"
#include "conflict_question.h"
#include "progress_watch.h"
#include "prompt.h"
#include "reporter.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"
#include "transfer_session.h"

#include <chrono>
#include <optional>

// Runs the plan to its end.
class TransferPhase {
public:
    TransferPhase(const TransferRequest& Request, TarvaneTransferPlan Plan, Prompt& UserConsole,
                  Reporter& UserOutput);

    RunOutcome Run();

private:
    using Clock = Prompt::Clock;

    ProgressView Look();
    void ShowFrame();
    void Heed(const std::vector<KeyPress>& Keys);
    void HeedEnd();
    std::chrono::microseconds Timeout() const;

    void AttendDesk();
    void Ask();
    void TakeAnswer(const ConflictAnswer& Answer);
    void CloseQuestion();
    void Report(const AnsweredConflict* Answered);

    RunOutcome Outcome();

    Prompt& Console;
    Reporter& Output;
    ProgressWatch Watch;
    std::optional<ConflictQuestion> Question;
    std::uint64_t QuestionId = 0;
    Clock::time_point AnsweredAt;
    bool bKeysBefore;
    TransferSession Session;
    ConflictDesk Desk;
};
