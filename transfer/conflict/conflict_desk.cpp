#include "conflict_desk.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "desk_notes.h"
#include "entry_access.h"
#include "free_name.h"
#include "quoted.h"
#include "tarvanepane.h"

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

// Removes no directory that may stand there meanwhile. Returns the error, or 0.
int RemoveLink(const std::string& Path) {
    return unlink(Path.c_str()) == 0 || errno == ENOENT ? 0 : errno;
}

// Whether the answer does something to what stands there.
bool TouchesEntry(Action Answer) {
    return Answer != Action::Skip && Answer != Action::Rename && Answer != Action::Cancel;
}

// Whether the answer has the source's contents written to the file that stands there.
bool WritesToFile(const ConflictDecision& Decision) {
    const bool bWrites =
        Decision.Action == Action::Overwrite || Decision.Action == Action::CompareByContent;
    return bWrites && !Decision.bReplacesLink;
}

EntryAccess AccessOf(const struct stat& Status) {
    return {.Mode = Status.st_mode, .Owner = Status.st_uid, .Group = Status.st_gid};
}

} // namespace

ItemCounters CountersOf(const TarvaneTransferJob& Job) {
    return {.Done = Job.MakeUiSnapshot().DoneItems, .Skipped = Job.GetSkippedItems()};
}

const AnsweredConflict* ConflictDesk::Attend() {
    TarvaneTransferConflict conflict;
    const bool bPending = Job.GetPendingConflict(conflict);
    if (bPending && !Open) {
        return Decide(conflict);
    }
    if (!bPending) {
        Open.reset();
    }
    Waited += Pause();
    return nullptr;
}

void ConflictDesk::Cancel() {
    TarvaneTransferConflict conflict;
    if (Notes != nullptr && Job.GetPendingConflict(conflict)) {
        Notes->Names.LeaveAlone(conflict.DestinationPath);
    }
    Job.RequestCancel();
}

// The engine looks once more at a new name, and ends the job where it is taken.
void ConflictDesk::NoteEnd() {
    if (Notes == nullptr || LatestAnswers.empty()) {
        return;
    }
    const AnsweredConflict& last = LatestAnswers.back();
    if (Job.MakeUiSnapshot().MessageText == "Rename target already exists: " + last.RenamePath) {
        Notes->Names.LeaveAlone(last.Conflict.DestinationPath);
    }
}

std::chrono::microseconds ConflictDesk::Pause() const {
    // The time, in us, after which a pause is as long as what went by.
    constexpr double kMeeting = 64;
    const double root = std::sqrt(kMeeting * static_cast<double>(Waited.count()));
    return std::clamp(std::chrono::microseconds(std::llround(root)), kShortestPause, kLongestPause);
}

const AnsweredConflict* ConflictDesk::Decide(const TarvaneTransferConflict& Conflict) {
    TakenName name = LookAt(Conflict, Policy.FollowsLinks());
    const ConflictDecision decision = Policy.Decide(name);
    if (decision.Outcome == Verdict::AskUser) {
        Open = Question{++LastId, std::move(name)};
        return nullptr;
    }
    AnsweredConflict answer{.Conflict = Conflict};
    if (decision.Action == Action::Rename) {
        const auto freeName = FreeNameBeside(Conflict.DestinationPath);
        if (!freeName) {
            return GiveUp("no free name found beside " + Quoted(Conflict.DestinationPath),
                          std::move(answer));
        }
        answer.RenamePath = freeName->native();
    }
    return CarryOut(decision, std::move(answer));
}

const AnsweredConflict* ConflictDesk::Answer(std::uint64_t QuestionId,
                                             const ConflictAnswer& Given) {
    if (!Open || Open->Id != QuestionId) {
        return nullptr;
    }
    const TakenName asked = std::exchange(Open, std::nullopt)->Name;
    TakenName name = LookAt(asked.Conflict, Policy.FollowsLinks());
    if (TouchesEntry(Given.Action) && name.Entry != asked.Entry) {
        Open = Question{++LastId, std::move(name)};
        return nullptr;
    }
    if (Given.ForAllFiles) {
        Policy.RememberForAll(*Given.ForAllFiles);
    }
    if (Given.ForAllDirectories) {
        Policy.RememberForAll(*Given.ForAllDirectories);
    }
    return CarryOut(ConflictPolicy::CarryOut(name, Given.Action),
                    {.Conflict = asked.Conflict, .RenamePath = Given.RenamePath, .bByUser = true});
}

const AnsweredConflict* ConflictDesk::CarryOut(const ConflictDecision& Decision,
                                               AnsweredConflict Answer) {
    if (Decision.Outcome == Verdict::Fail) {
        return GiveUp(Decision.Sentence, std::move(Answer));
    }
    const std::string& destination = Answer.Conflict.DestinationPath;
    const bool bRemoves = Decision.bReplacesLink && !Job.IsCancelRequested();
    if (const int error = bRemoves ? RemoveLink(destination) : 0; error != 0) {
        std::string sentence =
            "cannot remove " + Quoted(destination) + ": " + std::generic_category().message(error);
        return GiveUp(std::move(sentence), std::move(Answer));
    }
    if (Notes != nullptr && Notes->bMakesPrivate && WritesToFile(Decision) &&
        !Job.IsCancelRequested()) {
        MakePrivate(Answer.Conflict);
    }
    Answer.Action = Decision.Action;
    if (!Decision.bReplacesLink) {
        Answer.Action = ForEngine(Answer);
    }
    bLeavesReplacing = bLeavesReplacing || Answer.Action == Action::OverwriteAll ||
                       Answer.Action == Action::OverwriteAllOlder;
    return Resolve(std::move(Answer));
}

// The engine's own answer for all files where that comes to the same as one for each.
Action ConflictDesk::ForEngine(const AnsweredConflict& Answer) const {
    const bool bFile = Answer.Conflict.Kind == TarvaneTransferConflictKind::File;
    const FileConflictChoice choice = Policy.ForFiles();
    if (!bFile || Allowed == EngineAnswers::None) {
        return Answer.Action;
    }
    if (choice == FileConflictChoice::Skip && Answer.Action == Action::Skip) {
        return Action::SkipAll;
    }
    if (Allowed != EngineAnswers::SkipOrReplaceFiles || Answer.bByUser) {
        return Answer.Action;
    }
    if (choice == FileConflictChoice::Older) {
        return Action::OverwriteAllOlder;
    }
    return choice == FileConflictChoice::Overwrite ? Action::OverwriteAll : Answer.Action;
}

const AnsweredConflict* ConflictDesk::GiveUp(std::string Sentence, AnsweredConflict Answer) {
    WhyFailed = std::move(Sentence);
    Answer.Action = Action::Cancel;
    Answer.RenamePath.clear();
    return Resolve(std::move(Answer));
}

// A file of somebody else stays as it is: its owner may read what is written to it anyway.
void ConflictDesk::MakePrivate(const TarvaneTransferConflict& Conflict) const {
    struct stat source {};
    struct stat there {};
    const char* const path = Conflict.DestinationPath.c_str();
    // A track's path is no path of the file system, and everybody may read the disc.
    if (TarvaneIsCddaPath(Conflict.SourcePath) ||
        ::stat(Conflict.SourcePath.c_str(), &source) != 0 || ::stat(path, &there) != 0 ||
        !S_ISREG(there.st_mode) || !IsMoreOpen(AccessOf(there), AccessOf(source))) {
        return;
    }
    const mode_t mode = there.st_mode & ~static_cast<mode_t>(S_IFMT);
    if (mode != (mode & S_IRWXU) && ::chmod(path, mode & S_IRWXU) == 0) {
        Notes->Privates.push_back({Conflict.DestinationPath, mode, there.st_mtim, there.st_dev,
                                   there.st_ino, source.st_mode});
    }
}

const AnsweredConflict* ConflictDesk::Resolve(AnsweredConflict Answer) {
    Waited = {};
    Answer.Before = CountersOf(Job);
    if (!Job.ResolveConflict(Answer.Action, Answer.RenamePath)) {
        return nullptr;
    }
    if (Notes != nullptr) {
        Notes->Names.Add(Answer);
    }
    ++AllAnswers;
    LatestAnswers.push_back(std::move(Answer));
    if (LatestAnswers.size() > kKeptAnswers) {
        LatestAnswers.pop_front();
    }
    return &LatestAnswers.back();
}
