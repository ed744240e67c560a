// The job of a run: the session, the names that are taken, what is claimed of its progress, and
// what it comes to.

#pragma once

#include "conflict_desk.h"
#include "conflict_tally.h"
#include "job_end.h"
#include "progress_watch.h"
#include "run_outcome.h"
#include "transfer_request.h"
#include "transfer_session.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>

struct DeskNotes;

// A job at one moment.
struct JobView {
    TarvaneTransferUiSnapshot Snapshot;
    ProgressClaims Claims;
};

// Runs the plan's job from its making on.
//
// Threads: one thread makes, uses and destroys it.
class JobStep {
public:
    // Hears of each taken name as soon as it is known what became of it.
    using NameListener = std::function<void(const SettledConflict&)>;

    // bTellsEachName: no name may be left to the engine, as somebody is to hear of it. Notes, where
    // there are any, outlive the step.
    JobStep(const TransferRequest& Request, TarvaneTransferPlan PlanToRun,
            FoundBeforehand FoundInPlan, bool bTellsEachName, DeskNotes* Notes);

    void SetNameListener(NameListener Listener) { Listen = std::move(Listener); }

    // Looks for taken names. Whether the job is over.
    bool Attend();
    void Cancel() { Desk.Cancel(); }

    // For poll, and how long to wait at most before the next Attend.
    int Descriptor() const { return Session.OverFd(); }
    std::chrono::microseconds LongestWait() const { return Desk.Pause(); }

    const std::optional<ConflictDesk::Question>& OpenQuestion() const {
        return Desk.OpenQuestion();
    }
    // Does nothing where the question of that number is not open any more.
    void Answer(std::uint64_t QuestionId, const ConflictAnswer& Answer);
    // The latest ones.
    const std::deque<AnsweredConflict>& Answered() const { return Desk.Answered(); }

    TarvaneTransferJob& Job() { return Session.Job(); }
    JobView View(std::chrono::steady_clock::time_point Now);
    // For the case that there is no time to wait for the end.
    std::string PartingSentence();

    // What the job comes to; the view is final then. Requires: it is over; once.
    RunOutcome Finish();

private:
    void Note(const AnsweredConflict* Answered);
    void Say(const std::optional<SettledConflict>& Settled);

    const TarvaneTransferPlan Plan;
    FoundBeforehand Found;
    // What is made is for its owner alone until it is finished.
    const bool bPrivate;
    TransferSession Session;
    ConflictDesk Desk;
    ConflictTally Tally;
    ProgressWatch Watch;
    NameListener Listen;
    // Known at the end.
    std::optional<TarvaneTransferUiSnapshot> LastSnapshot;
    bool bLessThanCounted = false;
};
