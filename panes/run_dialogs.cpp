#include "run_dialogs.h"

#include "conflict_dialog.h"
#include "message_dialog.h"
#include "number_text.h"
#include "preflight_result.h"
#include "run_rows.h"

#include <memory>
#include <vector>

namespace {

// More of one kind would push the rest out of sight.
constexpr std::size_t kLinesPerGroup = 10;

std::vector<std::string> FindingLines(const PreflightResult& Result) {
    std::vector<std::string> lines;
    for (const FindingGroup& group : GroupFindings(Result.Findings, kLinesPerGroup)) {
        lines.push_back(group.Sentence + ":");
        for (const std::string& line : group.Lines) {
            lines.push_back("  " + line);
        }
        if (group.More > 0) {
            lines.push_back("  and " + NumberText(group.More) + " more");
        }
    }
    return lines;
}

} // namespace

void RunDialogs::Attend(TimePoint AtThisTime) {
    Now = AtThisTime;
    Runs.Attend(Now);
    NoteRates();
    for (ListedRun& each : Runs.All()) {
        if (std::exchange(each.bNewEnd, false)) {
            bEnded = true;
            const std::vector<std::string> lines = each.Run->EndLines();
            LatestEnd = lines.empty() ? TitleOf(*each.Run) : lines.front();
        }
        if (!each.WaitsForPerson()) {
            Rung.erase(each.Id);
        } else if (InFront == each.Id && !Asking) {
            ShowQuestion(each);
        } else if (InFront != each.Id && Rung.insert(each.Id).second) {
            bBell = true;
        }
    }
}

void RunDialogs::NoteRates() {
    for (const ListedRun& each : Runs.All()) {
        if (each.Run->CurrentStage() == TransferRun::Stage::Copying && !each.WaitsForPerson()) {
            Rates[each.Id].Add(each.Run->View(Now).Snapshot.TransferRateBytesPerSecond, Now);
        }
    }
}

void RunDialogs::ShowProgress(std::uint64_t Id) {
    ListedRun* const listed = Runs.Find(Id);
    if (listed == nullptr || InFront) {
        return;
    }
    InFront = Id;
    Stack.Open<ProgressDialog>(
        std::make_unique<ProgressDialog>(SceneOf(*listed->Run, &Rates[Id], Now)),
        [this, Id](ProgressDialog& Shown) { FollowProgress(Shown, Id); });
}

void RunDialogs::FollowProgress(ProgressDialog& Shown, std::uint64_t Id) {
    using Wish = ProgressDialog::Wish;
    ListedRun& listed = *Runs.Find(Id);
    const Wish wish = Shown.TakeWish();
    if (Shown.IsClosed()) {
        InFront.reset();
    } else {
        ProgressScene scene = SceneOf(*listed.Run, &Rates[Id], Now);
        scene.bOtherQuestionWaits = !scene.bQuestionWaits && NeedsSomebody();
        Shown.SetScene(std::move(scene));
    }
    if (wish == Wish::Cancel) {
        listed.Run->Cancel();
    } else if (wish == Wish::Answer && listed.WaitsForPerson() && !Asking) {
        ShowQuestion(listed);
    } else if (wish == Wish::Answer) {
        ShowFirstQuestion();
    } else if (wish == Wish::RunAgain) {
        ShowProgress(Runs.StartAgain(Id));
    }
}

void RunDialogs::CancelInFront() {
    const std::optional<std::uint64_t> shown = Asking ? Asking : InFront;
    if (ListedRun* const listed = shown ? Runs.Find(*shown) : nullptr) {
        listed->Run->Cancel();
    }
}

void RunDialogs::ShowList() {
    Stack.Open<JobListDialog>(std::make_unique<JobListDialog>(RowsOf(Runs)),
                              [this](JobListDialog& Shown) { FollowList(Shown); });
}

void RunDialogs::FollowList(JobListDialog& Shown) {
    using Wish = JobListDialog::Wish;
    Shown.SetRows(RowsOf(Runs));
    const JobListDialog::WishForJob wish = Shown.TakeWish();
    ListedRun* const listed = Runs.Find(wish.Id);
    if (listed == nullptr) {
        return;
    }
    if (wish.What == Wish::Show) {
        ShowProgress(wish.Id);
    } else if (wish.What == Wish::Cancel) {
        listed->Run->Cancel();
    } else if (wish.What == Wish::Answer && !Asking) {
        ShowQuestion(*listed);
    } else if (wish.What == Wish::RunAgain) {
        Runs.StartAgain(wish.Id);
    }
}

void RunDialogs::ShowFirstQuestion() {
    const std::optional<std::uint64_t> waiting = Runs.FirstWaiting();
    if (waiting && !Asking) {
        ShowQuestion(*Runs.Find(*waiting));
    }
}

void RunDialogs::ShowQuestion(ListedRun& Listed) {
    if (Listed.Run->CurrentStage() == TransferRun::Stage::Judged) {
        AskAboutFindings(Listed);
    } else if (Listed.Run->OpenQuestion()) {
        AskAboutName(Listed);
    }
}

void RunDialogs::AskAboutFindings(ListedRun& Listed) {
    std::vector<std::string> lines = FindingLines(*Listed.Run->Found());
    lines.push_back(Listed.Run->Verdict()->Question);
    const std::uint64_t id = Listed.Id;
    Asking = id;
    auto dialog =
        std::make_unique<MessageDialog>(YesNoQuestion(TitleOf(*Listed.Run), std::move(lines)));
    dialog->AppearUnasked(Guard, Now);
    Stack.Open<MessageDialog>(std::move(dialog), [this, id](MessageDialog& Shown) {
        TransferRun& run = *Runs.Find(id)->Run;
        if (run.CurrentStage() != TransferRun::Stage::Judged) {
            Shown.Close();
            Asking.reset();
            return;
        }
        if (!Shown.Pressed()) {
            return;
        }
        Asking.reset();
        if (*Shown.Pressed() == kYesButton) {
            Runs.GoOn(id);
        } else {
            run.Cancel();
        }
    });
}

void RunDialogs::AskAboutName(ListedRun& Listed) {
    const ConflictDesk::Question& question = *Listed.Run->OpenQuestion();
    const std::uint64_t id = Listed.Id;
    Asking = id;
    auto dialog = std::make_unique<ConflictDialog>(
        question, AdviceFor(question.Name.Conflict.DestinationPath), Guard, Now);
    Stack.Open<ConflictDialog>(std::move(dialog), [this, id](ConflictDialog& Shown) {
        TransferRun& run = *Runs.Find(id)->Run;
        const auto& open = run.OpenQuestion();
        if (!open || open->Id != Shown.QuestionId()) {
            Shown.Close();
        }
        if (const auto answer = Shown.TakeAnswer()) {
            run.Answer(answer->first, answer->second);
        }
        if (Shown.IsClosed()) {
            Asking.reset();
            return;
        }
        const JobView view = run.View(Now);
        Shown.ShowJob(view.Snapshot.StageText, view.Snapshot.OverallText);
    });
}

std::string RunDialogs::StatusText() const {
    const std::size_t running = Runs.CountRunning();
    if (NeedsSomebody() && !Asking) {
        return "A transfer waits for an answer: press a";
    }
    if (running > 0) {
        return NumberText(running) + (running == 1 ? " transfer runs" : " transfers run") +
               ": press j to see";
    }
    return LatestEnd;
}
