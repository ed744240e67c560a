// One transfer as a front end with several of them at once holds it: from the plan to the flush.

#pragma once

#include "conflict_desk.h"
#include "end_lines.h"
#include "finish_step.h"
#include "flush_step.h"
#include "flusher.h"
#include "job_end.h"
#include "job_step.h"
#include "look_step.h"
#include "preflight_result.h"
#include "preflight_verdict.h"
#include "progress_texts.h"
#include "run_outcome.h"
#include "status_record.h"
#include "tarvanetransfer.h"
#include "track_list.h"
#include "transfer_request.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Goes through the look before the job, the job, the finishing and the flush. It never waits:
// whoever holds it calls Attend now and then, and shows what it is at. Somebody can always be
// asked. Others may run at the same time.
//
// Threads: one thread makes, uses and destroys it, and does so with all others.
class TransferRun {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    enum class Stage {
        // Looks through the sources.
        Looking,
        // What was found needs a word: GoOn or Cancel.
        Judged,
        Copying,
        // Modes and dates.
        Finishing,
        Flushing,
        Over,
    };

    // Discs are what drives have told already.
    TransferRun(TransferRequest Request, TarvaneTransferPlan PlanToRun,
                const KnownDiscs& Discs = {});
    // Cancels what still runs, and waits for the worker.
    ~TransferRun() = default;
    TransferRun(const TransferRun&) = delete;
    TransferRun& operator=(const TransferRun&) = delete;

    // Goes on as far as it can now. Whether it is over.
    bool Attend(TimePoint Now);
    Stage CurrentStage() const { return At; }
    const TransferRequest& Request() const { return Wanted; }
    const TarvaneTransferPlan& Plan() const { return Planned; }

    // How long to wait at most before the next Attend.
    std::chrono::microseconds LongestWait() const;

    // Of the look, from the first moment on.
    std::uint64_t EntriesSeen() const;
    // What the look has found and what that means; nothing before its end.
    const PreflightResult* Found() const { return LookResult ? &*LookResult : nullptr; }
    const std::optional<PreflightVerdict>& Verdict() const { return Judgement; }
    // The answer to Judged.
    void GoOn();

    // From Copying on; null where there was no job.
    TarvaneTransferJob* Job() { return Copy ? &Copy->Job() : nullptr; }
    JobView View(TimePoint Now);
    const std::optional<ConflictDesk::Question>& OpenQuestion() const {
        return Copy ? Copy->OpenQuestion() : NoQuestion;
    }
    void Answer(std::uint64_t QuestionId, const ConflictAnswer& Answer);
    // The latest ones, also when it is over.
    const std::deque<AnsweredConflict>& Answered() const {
        return Copy ? Copy->Answered() : NoAnswers;
    }

    FinishProgress FinishingProgress() const;
    FlushProgress FlushingProgress() const;

    // Ends the stage that it is at, as Esc does: a job that is canceled is still finished, and what
    // it has done flushed, until that is canceled too.
    void Cancel();
    // Whether the stage that it is at has been told to end.
    bool IsCanceled() const { return bCanceled; }
    // Ends all stages, for the end of the program.
    void EndBy(int Signal);

    // Requires: it is over.
    const RunOutcome& Outcome() const { return End; }
    // All that is to be said at the end, line by line: how far it came, what went wrong, what was
    // written. Not cleaned for a screen.
    std::vector<std::string> EndLines() const;

private:
    void AttendStage(TimePoint Now);
    void Enter(Stage Next);
    void Judge();
    void StartJob();
    void EndJob();
    void EndFinishing();
    void StartFlush();
    void EndFlush(std::optional<int> EndedBy);
    void EndWith(RunOutcome Outcome);

    const TransferRequest Wanted;
    const TarvaneTransferPlan Planned;
    Stage At = Stage::Looking;
    bool bCanceled = false;
    std::optional<int> EndSignal;
    std::uint64_t SeenEntries = 0;
    std::optional<PreflightResult> LookResult;
    std::optional<PreflightVerdict> Judgement;
    FoundBeforehand FoundForJob;
    FinishProgress Finished;
    FlushProgress Flushed;
    RunOutcome End;
    std::vector<EndLine> JobLines;
    const std::optional<ConflictDesk::Question> NoQuestion;
    const std::deque<AnsweredConflict> NoAnswers;

    // Each uses those above it, and is there as long as it has something to do.
    std::unique_ptr<StatusRecord> Record;
    std::optional<LookStep> Look;
    std::optional<FlushStep> Flush;
    // These two stay, for what is asked about the job later.
    std::optional<FinishPreparation> Preparation;
    std::optional<JobStep> Copy;
    std::optional<FinishStep> Finish;
};
