#include "case_run.h"

#include "case_tree.h"
#include "transfer_model.h"

#include <memory>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

Facts ExpectedFacts(const RandomCase& Case, const Sandbox& Place) {
    ModelFiles files(Place.Root(), Place.Order());
    MakeInModel(Case, Place.HasOtherFileSystem(), files);
    Facts facts = TransferModel(Case, files).Run();
    facts.merge(TreeInModel(files));
    facts["lowest free descriptor"] = "as before";
    return facts;
}

TarvaneTransferPlan PlanOf(const RandomCase& Case, const std::string& Root) {
    TarvaneTransferPlan plan;
    plan.bMove = Case.bMove;
    plan.ConflictPolicy = Case.Policy;
    for (const CaseItem& item : Case.Items) {
        TarvaneTransferItemPlan& planned = plan.Items.emplace_back();
        planned.SourcePath = Root + "/" + item.Source;
        planned.DestinationPath = Root + "/" + item.Destination;
    }
    return plan;
}

// Answers until the job is over, as an interface does.
void AnswerQuestions(TarvaneTransferJob& Job, const RandomCase& Case, Facts& OutFacts) {
    constexpr useconds_t kPollMicroseconds = 30;
    std::size_t asked = 0;
    std::size_t used = 0;
    while (!Job.IsFinished()) {
        TarvaneTransferConflict question;
        if (!Job.GetPendingConflict(question)) {
            ::usleep(kPollMicroseconds);
            continue;
        }
        OutFacts["question " + std::to_string(++asked)] = QuestionFact(question);
        bool bAnswered = false;
        while (!bAnswered && used < Case.Answers.size()) {
            const CaseAnswer& answer = Case.Answers[used++];
            bAnswered =
                Job.ResolveConflict(ActionFor(answer, question.Kind),
                                    RenamePathFor(answer, question.Kind, question.DestinationPath));
        }
        if (!bAnswered) {
            Job.RequestCancel();
            return;
        }
    }
}

void AddJobFacts(const TarvaneTransferJob& Job, Facts& OutFacts) {
    const TarvaneTransferUiSnapshot end = Job.MakeUiSnapshot();
    OutFacts["message"] = end.MessageText;
    OutFacts["ended as"] = !end.bFinished   ? "unfinished"
                           : end.bSucceeded ? "succeeded"
                           : end.bCanceled  ? "canceled"
                                            : "failed";
    OutFacts["current path"] = Job.GetCurrentPath();
    OutFacts["items"] = std::to_string(end.DoneItems) + " of " + std::to_string(end.TotalItems);
    OutFacts["bytes"] = std::to_string(end.DoneBytes) + " of " + std::to_string(end.TotalBytes);
    OutFacts["skipped"] = std::to_string(Job.GetSkippedItems()) + " items, " +
                          std::to_string(Job.GetSkippedBytes()) + " bytes";
    OutFacts["current file"] = std::to_string(end.CurrentFileDoneBytes) + " of " +
                               std::to_string(end.CurrentFileTotalBytes);
}

int LowestFreeDescriptor() {
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(descriptor);
    return descriptor;
}

Facts ActualFacts(const RandomCase& Case, const Sandbox& Place) {
    MakeOnDisk(Case, Place.Root());
    const int descriptor = LowestFreeDescriptor();
    const auto job = std::make_shared<TarvaneTransferJob>(Case.bMove, Case.Items.size(), "random");
    if (Case.bCanceledBefore) {
        job->RequestCancel();
    }
    Facts facts;
    std::thread worker(RunTarvaneTransferJob, job, PlanOf(Case, Place.Root()));
    AnswerQuestions(*job, Case, facts);
    worker.join();
    AddJobFacts(*job, facts);
    facts["lowest free descriptor"] =
        LowestFreeDescriptor() == descriptor ? "as before" : "another one";
    facts.merge(TreeOnDisk(Place.Root()));
    return facts;
}

} // namespace

std::string DifferencesIn(const RandomCase& Case, const Sandbox& Place) {
    const Facts expected = ExpectedFacts(Case, Place);
    return Differences(expected, ActualFacts(Case, Place));
}
