#include "conflict_desk.h"

#include <algorithm>
#include <utility>

using Action = TarvaneTransferConflictAction;

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
    const ConflictDecision decision = Policy.Decide(Conflict);
    switch (decision.Outcome) {
    case ConflictDecision::Verdict::AskUser:
        Open = Question{++LastId, Conflict};
        return nullptr;
    case ConflictDecision::Verdict::Fail:
        WhyFailed = decision.Sentence;
        break;
    case ConflictDecision::Verdict::Answer:
        break;
    }
    return Resolve({.Conflict = Conflict,
                    .Action = decision.Action,
                    .RenamePath = decision.RenamePath,
                    .bByUser = false});
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
