#include "job_step.h"

#include "desk_notes.h"
#include "full_path.h"
#include "plan_sources.h"
#include "quoted.h"

#include <filesystem>

namespace {

// None where each name is told. Nor where a track may be skipped: it counts no bytes then, which
// nobody would know at the end.
EngineAnswers AnswersLeftToEngine(const TarvaneTransferPlan& Plan, const FoundBeforehand& Found,
                                  bool bTellsEachName) {
    if (bTellsEachName || HasTracks(Plan)) {
        return EngineAnswers::None;
    }
    return Found.TakenFiles ? EngineAnswers::SkipOrReplaceFiles : EngineAnswers::SkipFiles;
}

} // namespace

JobStep::JobStep(const TransferRequest& Request, TarvaneTransferPlan PlanToRun,
                 FoundBeforehand FoundInPlan, bool bTellsEachName, DeskNotes* Notes)
    : Plan(std::move(PlanToRun)), Found(std::move(FoundInPlan)),
      bPrivate(Notes != nullptr && Notes->bMakesPrivate), Session(Plan, bPrivate),
      Desk(Session.Job(), ConflictPolicy(RulesOf(Request)),
           AnswersLeftToEngine(Plan, Found, bTellsEachName), Notes) {}

bool JobStep::Attend() {
    Note(Desk.Attend());
    return Session.IsOver();
}

void JobStep::Answer(std::uint64_t QuestionId, const ConflictAnswer& Answer) {
    Note(Desk.Answer(QuestionId, Answer));
}

void JobStep::Note(const AnsweredConflict* Answered) {
    if (Answered != nullptr) {
        Say(Tally.Add(*Answered));
    }
}

void JobStep::Say(const std::optional<SettledConflict>& Settled) {
    if (!Settled) {
        return;
    }
    if (Settled->Outcome == ConflictOutcome::Skipped) {
        Found.Unread.LeaveOut(Settled->Answered.Conflict.SourcePath);
    }
    if (Listen) {
        Listen(*Settled);
    }
}

// The wait for an answer is no stall, and the time that has gone by since the end was not spent.
JobView JobStep::View(std::chrono::steady_clock::time_point Now) {
    JobView view{.Snapshot = LastSnapshot.value_or(Session.Job().MakeUiSnapshot()), .Claims = {}};
    view.Claims = Watch.Observe(view.Snapshot, OpenQuestion().has_value(), Now);
    view.Claims.bLessThanCounted = view.Claims.bLessThanCounted || bLessThanCounted;
    return view;
}

// A worker that a drive or disk holds keeps even a process that has ended.
std::string JobStep::PartingSentence() {
    const std::string open =
        bPrivate ? "; what is copied stays private: only its owner can read it" : "";
    const std::string left = "left before the transfer has stopped: the program ends when the "
                             "drive or disk answers, and ";
    const bool bCounting = Session.Job().MakeUiSnapshot().TotalItems == 0;
    if (bCounting) {
        return left + "nothing was copied yet";
    }
    const std::string source = Session.Job().GetCurrentPath();
    const std::filesystem::path directory = PlannedDestination(source, Plan).parent_path();
    return left + "a partial copy of " + Quoted(source) + " may stay in " +
           Quoted(directory.native()) + open;
}

RunOutcome JobStep::Finish() {
    Desk.NoteEnd();
    LastSnapshot = Session.Job().MakeUiSnapshot();
    Say(Tally.Finish(CountersOf(Session.Job())));
    EndedJob ended{.Job = Session.Job(),
                   .Plan = Plan,
                   .Names = Tally,
                   .LastAnswer = Answered().empty() ? nullptr : &Answered().back(),
                   .Unread = Found.Unread,
                   .FailSentence = Desk.FailSentence()};
    if (Desk.LeavesReplacingToEngine()) {
        ended.FilesLeftToEngine = Found.TakenFiles;
    }
    bLessThanCounted = IsLessThanCounted(ended);
    Session.Close();
    return OutcomeOf(ended);
}
