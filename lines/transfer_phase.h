// A running job as the user lives through it: progress, conflicts, cancel.

#pragma once

#include "conflict_policy.h"
#include "conflict_question.h"
#include "line_console.h"
#include "progress_output.h"
#include "progress_watch.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"
#include "transfer_session.h"

#include <chrono>
#include <optional>
#include <string>

// Runs the plan to its end.
class TransferPhase {
public:
    TransferPhase(const TransferRequest& Request, TarvaneTransferPlan Plan,
                  LineConsole& UserConsole, ProgressOutput& UserOutput);

    RunOutcome Run();

private:
    using Clock = LineConsole::Clock;

    ProgressView Look();
    void ShowFrame();
    void Heed(const std::vector<KeyPress>& Keys);
    void HeedEnd();
    std::chrono::microseconds Timeout() const;

    void AttendConflict();
    void Decide(const TarvaneTransferConflict& Conflict);
    void Ask(const TarvaneTransferConflict& Conflict);
    void TakeAnswer(const ConflictAnswer& Answer);
    void CloseQuestion();
    void Resolve(const TarvaneTransferConflict& Conflict, TarvaneTransferConflictAction Action,
                 const std::string& RenamePath, bool bByUser);

    RunOutcome Outcome();

    LineConsole& Console;
    ProgressOutput& Output;
    ConflictPolicy Policy;
    ProgressWatch Watch;
    TarvaneTransferConflict Asked;
    std::optional<ConflictQuestion> Question;
    Clock::time_point AnsweredAt;
    // How long to wait before the next look for a conflict.
    std::chrono::microseconds ConflictPause;
    // Why a choice from the command line has ended the job.
    std::string FailSentence;
    bool bKeysBefore;
    TransferSession Session;
};
