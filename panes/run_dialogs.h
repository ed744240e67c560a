// What is shown of the transfers: how far they are, their questions, and the list of them.

#pragma once

#include "dialog_stack.h"
#include "job_list_dialog.h"
#include "key_guard.h"
#include "progress_dialog.h"
#include "rate_graph.h"
#include "run_list.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

// Opens dialogs on the stack, and follows the runs of the list. A run is in front while its
// progress is shown: its questions open by themselves then. Others wait until they are asked for.
//
// Threads: one.
class RunDialogs {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // All of them outlive this.
    RunDialogs(RunList& RunsToShow, DialogStack& StackToUse, KeyGuard& GuardOfQuestions)
        : Runs(RunsToShow), Stack(StackToUse), Guard(GuardOfQuestions) {}

    // Lets the runs go on and takes notice of what has become of them.
    void Attend(TimePoint Now);

    void ShowProgress(std::uint64_t Id);
    void ShowList();
    // That of the first run that waits; nothing where none does.
    void ShowFirstQuestion();
    // Cancels what is shown, as Esc does: the run whose question lies over the others first.
    void CancelInFront();

    // Whether a question is shown, which the keys are for.
    bool IsAsking() const { return Asking.has_value(); }

    // What goes on, in one line; empty for nothing.
    std::string StatusText() const;
    bool NeedsSomebody() const { return Runs.FirstWaiting().has_value(); }
    // Whether the bell is to ring, because a run out of sight needs somebody. True once.
    bool TakeBell() { return std::exchange(bBell, false); }
    // Whether a run has ended since the last call, so that what is shown of the disk is old.
    bool TakeEnd() { return std::exchange(bEnded, false); }

private:
    void NoteRates();
    void FollowProgress(ProgressDialog& Shown, std::uint64_t Id);
    void FollowList(JobListDialog& Shown);
    void ShowQuestion(ListedRun& Listed);
    void AskAboutName(ListedRun& Listed);
    void AskAboutFindings(ListedRun& Listed);

    RunList& Runs;
    DialogStack& Stack;
    KeyGuard& Guard;
    TimePoint Now;
    std::map<std::uint64_t, RateHistory> Rates;
    // The run whose progress is shown, and the one whose question is.
    std::optional<std::uint64_t> InFront;
    std::optional<std::uint64_t> Asking;
    // Those that the bell has rung for, as long as they wait.
    std::set<std::uint64_t> Rung;
    std::string LatestEnd;
    bool bBell = false;
    bool bEnded = false;
};
