#include "conflict_desk.h"

#include <algorithm>
#include <utility>

#include "free_name.h"
#include "quoted.h"

using Action = TarvaneTransferConflictAction;
using Verdict = ConflictDecision::Verdict;

namespace {

// An entry that has gone meanwhile is what the record says.
TakenName LookAt(const TarvaneTransferConflict& Conflict, bool bFollowLinks) {
    TakenEntry recorded;
    recorded.LeadsTo =
        Conflict.bDestinationDirectory ? TakenEntry::Kind::Directory : TakenEntry::Kind::File;
    const std::optional<TakenEntry> found = LookAtTakenEntry(Conflict.DestinationPath);
    return MakeTakenName(Conflict, found.value_or(recorded), bFollowLinks);
}

} // namespace

const AnsweredConflict* ConflictDesk::Attend() {
    TarvaneTransferConflict conflict;
    const bool bPending = Job.GetPendingConflict(conflict);
    if (bPending && !Open) {
        return Decide(conflict);
    }
    if (!bPending) {
        Open.reset();
    }
    CurrentPause = std::min(CurrentPause * 2, kLongestPause);
    return nullptr;
}

const AnsweredConflict* ConflictDesk::Decide(const TarvaneTransferConflict& Conflict) {
    const ConflictDecision decision = Policy.Decide(LookAt(Conflict, Policy.FollowsLinks()));
    AnsweredConflict answer{.Conflict = Conflict, .Action = decision.Action};
    switch (decision.Outcome) {
    case Verdict::AskUser:
        Open = Question{++LastId, Conflict};
        return nullptr;
    case Verdict::Fail:
        WhyFailed = decision.Sentence;
        break;
    case Verdict::Answer:
        if (decision.Action == Action::Rename) {
            FindFreeName(answer);
        }
        break;
    }
    return Resolve(std::move(answer));
}

void ConflictDesk::FindFreeName(AnsweredConflict& InOutAnswer) {
    const std::string& taken = InOutAnswer.Conflict.DestinationPath;
    const std::optional<std::filesystem::path> freeName = FreeNameBeside(taken);
    if (!freeName) {
        WhyFailed = "no free name found beside " + Quoted(taken);
        InOutAnswer.Action = Action::Cancel;
        return;
    }
    InOutAnswer.RenamePath = freeName->native();
}

const AnsweredConflict* ConflictDesk::Answer(std::uint64_t QuestionId,
                                             const ConflictAnswer& Given) {
    if (!Open || Open->Id != QuestionId) {
        return nullptr;
    }
    if (Given.ForAllFiles) {
        Policy.RememberForAll(*Given.ForAllFiles);
    }
    if (Given.ForAllDirectories) {
        Policy.RememberForAll(*Given.ForAllDirectories);
    }
    const Question answered = *std::exchange(Open, std::nullopt);
    return Resolve({.Conflict = answered.Conflict,
                    .Action = Given.Action,
                    .RenamePath = Given.RenamePath,
                    .bByUser = true});
}

const AnsweredConflict* ConflictDesk::Resolve(AnsweredConflict Answer) {
    CurrentPause = kShortestPause;
    if (!Job.ResolveConflict(Answer.Action, Answer.RenamePath)) {
        return nullptr;
    }
    ++AllAnswers;
    LatestAnswers.push_back(std::move(Answer));
    if (LatestAnswers.size() > kKeptAnswers) {
        LatestAnswers.pop_front();
    }
    return &LatestAnswers.back();
}
