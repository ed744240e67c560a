#include "run_rows.h"

#include "quoted.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

using Stage = TransferRun::Stage;

namespace {

std::string JobWord(const TransferRun& Run) {
    return Run.Plan().bMove ? "Move" : "Copy";
}

std::string ActionText(const AnsweredConflict& Answered) {
    using Action = TarvaneTransferConflictAction;
    switch (Answered.Action) {
    case Action::Overwrite:
    case Action::OverwriteAll:
    case Action::OverwriteAllOlder:
        return "overwrite";
    case Action::Skip:
    case Action::SkipAll:
        return "skip";
    case Action::Merge:
    case Action::MergeAll:
        return "merge";
    case Action::Rename:
        return "rename to " + Quoted(Answered.RenamePath);
    case Action::CompareByContent:
        return "compare by content";
    case Action::Cancel:
        return "cancel";
    }
    return {};
}

std::vector<std::string> AnswersOf(const TransferRun& Run) {
    std::vector<std::string> lines;
    for (const AnsweredConflict& answered : Run.Answered()) {
        lines.push_back(answered.Conflict.DestinationPath + ": " + ActionText(answered) +
                        (answered.bByUser ? "" : ", as chosen before"));
    }
    return lines;
}

std::string StageWord(Stage At) {
    switch (At) {
    case Stage::Looking:
        return "Looking";
    case Stage::Judged:
        return "Waiting for an answer";
    case Stage::Copying:
        return "Copying";
    case Stage::Finishing:
        return "Setting modes and dates";
    case Stage::Flushing:
        return "Writing to the disk";
    case Stage::Over:
        return {};
    }
    return {};
}

std::string ResultWord(RunResult Result) {
    switch (Result) {
    case RunResult::Succeeded:
        return "Done";
    case RunResult::Canceled:
        return "Canceled";
    case RunResult::Failed:
    case RunResult::WrongUsage:
        return "Failed";
    }
    return {};
}

OverScene EndOf(TransferRun& Run, std::chrono::steady_clock::time_point Now) {
    OverScene scene{.Result = Run.Outcome().Result, .Lines = Run.EndLines()};
    if (Run.Job() != nullptr) {
        const JobView view = Run.View(Now);
        scene.Job = CopyingScene{view.Snapshot, view.Claims};
    }
    return scene;
}

// Whether the engine lists its job now.
bool IsListedByEngine(TransferRun& Run) {
    return Run.Job() != nullptr && !Run.Job()->IsFinished();
}

JobListRow OwnRow(const ListedRun& Listed) {
    const TransferRun& run = *Listed.Run;
    JobListRow row;
    row.Texts = {run.Plan().SourceLabel, JobWord(run), StageWord(run.CurrentStage()), "", ""};
    if (Listed.IsOver()) {
        const RunOutcome& outcome = run.Outcome();
        row.bFinished = true;
        row.bCanRunAgain = outcome.Result != RunResult::Succeeded;
        row.EndLines = run.EndLines();
        row.Texts.State = ResultWord(outcome.Result);
        row.Texts.Progress = outcome.Result == RunResult::Succeeded ? "100%" : "";
        row.Texts.Detail = row.EndLines.empty() ? "" : row.EndLines.front();
    }
    return row;
}

} // namespace

std::string TitleOf(const TransferRun& Run) {
    return JobWord(Run) + ": " + Run.Plan().SourceLabel;
}

ProgressScene SceneOf(TransferRun& Run, const RateHistory* Rates,
                      std::chrono::steady_clock::time_point Now) {
    ProgressScene scene{.Title = TitleOf(Run), .Moment = LookingScene{}, .Rates = Rates};
    switch (Run.CurrentStage()) {
    case Stage::Looking:
    case Stage::Judged:
        scene.Moment = LookingScene{Run.EntriesSeen()};
        break;
    case Stage::Copying: {
        const JobView view = Run.View(Now);
        scene.Moment = CopyingScene{view.Snapshot, view.Claims};
        break;
    }
    case Stage::Finishing:
        scene.Moment = FinishingScene{Run.FinishingProgress()};
        break;
    case Stage::Flushing:
        scene.Moment = FlushingScene{Run.FlushingProgress()};
        break;
    case Stage::Over:
        scene.Moment = EndOf(Run, Now);
        break;
    }
    scene.bQuestionWaits = Run.CurrentStage() == Stage::Judged || Run.OpenQuestion().has_value();
    return scene;
}

// The engine's rows have no number. They come in the order in which the jobs have begun; where one
// has ended in between, none is taken.
std::vector<JobListRow> RowsOf(const RunList& Runs) {
    std::vector<JobListRow> rows;
    // The row of each, by its number.
    std::map<std::uint64_t, std::size_t> listed;
    for (const ListedRun& each : Runs.All()) {
        JobListRow row = OwnRow(each);
        row.Id = each.Id;
        row.bWaitsForAnswer = each.WaitsForPerson();
        row.bCancelRequested = each.Run->IsCanceled();
        row.Answers = AnswersOf(*each.Run);
        if (IsListedByEngine(*each.Run)) {
            listed.emplace(each.JobNumber, rows.size());
        }
        rows.push_back(std::move(row));
    }
    const std::vector<TarvaneTransferJobSnapshot> texts =
        CollectActiveTarvaneTransferJobSnapshots();
    if (texts.size() == listed.size()) {
        std::size_t next = 0;
        for (const auto& [number, row] : listed) {
            rows[row].Texts = texts[next++];
        }
    }
    return rows;
}
