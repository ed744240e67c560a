#include "conflict_policy.h"

#include <optional>
#include <utility>

#include "conflict_choices.h"
#include "quoted.h"

namespace {

using Action = TarvaneTransferConflictAction;
using Verdict = ConflictDecision::Verdict;

ConflictDecision AnswerWith(Action Answer) {
    return {.Outcome = Verdict::Answer, .Action = Answer};
}

ConflictDecision AskTheUser() {
    return {.Outcome = Verdict::AskUser};
}

ConflictDecision FailWith(std::string Sentence) {
    return {.Outcome = Verdict::Fail, .Sentence = std::move(Sentence)};
}

ConflictDecision FailBecauseTaken(const TarvaneTransferConflict& Conflict) {
    return FailWith("cannot create " + Quoted(Conflict.DestinationPath) + ": File exists");
}

ConflictDecision OverwriteIf(bool bOverwrite) {
    return AnswerWith(bOverwrite ? Action::Overwrite : Action::Skip);
}

bool IsSourceLarger(const TarvaneTransferConflict& Conflict) {
    return HasBothSizes(Conflict) && Conflict.SourceSizeBytes > Conflict.DestinationSizeBytes;
}

bool DoSizesDiffer(const TarvaneTransferConflict& Conflict) {
    return HasBothSizes(Conflict) && Conflict.SourceSizeBytes != Conflict.DestinationSizeBytes;
}

// The engine reads a side without a size, a CD track or a named pipe, as different content.
ConflictDecision Compare(const TarvaneTransferConflict& Conflict) {
    return AnswerWith(HasBothSizes(Conflict) ? Action::CompareByContent : Action::Skip);
}

// A file onto something that is no directory.
ConflictDecision DecideFile(FileConflictChoice Choice, const TarvaneTransferConflict& Conflict) {
    switch (Choice) {
    case FileConflictChoice::Ask:
        return AskTheUser();
    case FileConflictChoice::Overwrite:
        return AnswerWith(Action::Overwrite);
    case FileConflictChoice::Skip:
        return AnswerWith(Action::SkipAll);
    case FileConflictChoice::Older:
        return OverwriteIf(IsSourceNewer(Conflict));
    case FileConflictChoice::Compare:
        return Compare(Conflict);
    case FileConflictChoice::Larger:
        return OverwriteIf(IsSourceLarger(Conflict));
    case FileConflictChoice::SizeDiffers:
        return OverwriteIf(DoSizesDiffer(Conflict));
    case FileConflictChoice::KeepBoth:
        return AnswerWith(Action::Rename);
    case FileConflictChoice::Fail:
        return FailBecauseTaken(Conflict);
    }
    return AskTheUser();
}

} // namespace

ConflictPolicy::ConflictPolicy(ConflictRules ChosenRules)
    : Rules(std::move(ChosenRules)),
      ForDirectories(ChosenForDirectories(Rules.ForFiles, Rules.ForDirectories)),
      bAsksUser(Rules.ForFiles == FileConflictChoice::Ask ||
                ForDirectories == DirectoryConflictChoice::Ask) {}

ConflictDecision ConflictPolicy::Decide(const TakenName& Name) const {
    const TarvaneTransferConflict& conflict = Name.Conflict;
    if (conflict.Kind == TarvaneTransferConflictKind::Directory) {
        return DecideDirectory(conflict);
    }
    return conflict.bDestinationDirectory ? DecideUnequalKinds(conflict)
                                          : DecideFile(Rules.ForFiles, conflict);
}

ConflictDecision ConflictPolicy::DecideDirectory(const TarvaneTransferConflict& Conflict) const {
    switch (ForDirectories) {
    case DirectoryConflictChoice::Ask:
        return AskTheUser();
    case DirectoryConflictChoice::Merge:
        return Conflict.bDestinationDirectory ? AnswerWith(Action::Merge)
                                              : DecideUnequalKinds(Conflict);
    case DirectoryConflictChoice::Skip:
        return AnswerWith(Action::SkipAll);
    case DirectoryConflictChoice::Fail:
        return FailBecauseTaken(Conflict);
    }
    return AskTheUser();
}

// What is lost would not be a file for a file, so the choice for files decides, but never replaces.
ConflictDecision ConflictPolicy::DecideUnequalKinds(const TarvaneTransferConflict& Conflict) const {
    const bool bFile = Conflict.Kind == TarvaneTransferConflictKind::File;
    if (Rules.ForFiles == FileConflictChoice::Skip) {
        // SkipAll would skip every later directory too.
        return AnswerWith(Action::Skip);
    }
    if (Rules.ForFiles == FileConflictChoice::Fail) {
        return FailBecauseTaken(Conflict);
    }
    if (Rules.ForFiles == FileConflictChoice::KeepBoth && bFile) {
        return AnswerWith(Action::Rename);
    }
    if (bAsksUser) {
        return AskTheUser();
    }
    const std::string destination = Quoted(Conflict.DestinationPath);
    return FailWith(bFile ? "cannot overwrite directory " + destination + " with non-directory"
                          : "cannot overwrite non-directory " + destination + " with directory " +
                                Quoted(Conflict.SourcePath));
}
