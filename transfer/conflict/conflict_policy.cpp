#include "conflict_policy.h"

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

ConflictDecision FailBecauseTaken(const TakenName& Name) {
    return FailWith("cannot create " + Quoted(Name.Conflict.DestinationPath) + ": File exists");
}

Action OverwriteIf(bool bOverwrite) {
    return bOverwrite ? Action::Overwrite : Action::Skip;
}

bool IsSourceLarger(const TarvaneTransferConflict& Conflict) {
    return HasBothSizes(Conflict) && Conflict.SourceSizeBytes > Conflict.DestinationSizeBytes;
}

bool DoSizesDiffer(const TarvaneTransferConflict& Conflict) {
    return HasBothSizes(Conflict) && Conflict.SourceSizeBytes != Conflict.DestinationSizeBytes;
}

// The engine reads a side without a size, a CD track or a named pipe, as different content. A link
// that would be replaced is different from any file.
Action Compare(const TakenName& Name) {
    const bool bComparable = ReplacesLink(Name) || HasBothSizes(Name.Conflict);
    return bComparable ? Action::CompareByContent : Action::Skip;
}

// Why the name is not taken from what stands there unless a person says so; empty when it may be.
std::string WhyNotReplaced(const TakenName& Name) {
    const auto cannotOverwrite = [&](const char* What, const char* With, const char* Why = "") {
        return "cannot overwrite " + (What + Quoted(Name.Conflict.DestinationPath)) + " with " +
               (With + Quoted(Name.Conflict.SourcePath)) + Why;
    };
    if (Name.bHoldsSource) {
        return cannotOverwrite("directory ", "", ", which is inside it");
    }
    if (IsSpecialInTheWay(Name)) {
        return cannotOverwrite("special file ", "");
    }
    if (Name.Conflict.Kind == TarvaneTransferConflictKind::Directory) {
        return cannotOverwrite("non-directory ", "directory ");
    }
    if (IsDirectory(Name.Entry) && (Name.bFollowLinks || !Name.Entry.bLink)) {
        return cannotOverwrite("directory ", "non-directory ");
    }
    return {};
}

} // namespace

ConflictPolicy::ConflictPolicy(ConflictRules ChosenRules)
    : Rules(std::move(ChosenRules)),
      ForDirectories(ChosenForDirectories(Rules.ForFiles, Rules.ForDirectories)),
      bAsksUser(Rules.ForFiles == FileConflictChoice::Ask ||
                ForDirectories == DirectoryConflictChoice::Ask) {}

ConflictDecision ConflictPolicy::Decide(const TakenName& Name) const {
    if (!Name.Entry.LeadsTo && !Name.bFollowLinks) {
        return FailWith("not writing through dangling symlink " +
                        Quoted(Name.Conflict.DestinationPath));
    }
    return Name.Conflict.Kind == TarvaneTransferConflictKind::Directory ? DecideDirectory(Name)
                                                                        : DecideFile(Name);
}

ConflictDecision ConflictPolicy::CarryOut(const TakenName& Name, Action Answer) {
    if (!Replaces(Answer, Name)) {
        return AnswerWith(Answer);
    }
    if (!MayBeReplaced(Name)) {
        return FailWith(WhyNotReplaced(Name));
    }
    if (MakesRoomInVain(Name)) {
        return FailWith("cannot copy special file " + Quoted(Name.Conflict.SourcePath));
    }
    // The engine removes by itself what a directory replaces.
    if (Name.Conflict.Kind == TarvaneTransferConflictKind::File && ReplacesLink(Name)) {
        return {.Outcome = Verdict::Answer, .Action = Action::Overwrite, .bReplacesLink = true};
    }
    return AnswerWith(Answer);
}

ConflictDecision ConflictPolicy::DecideFile(const TakenName& Name) const {
    switch (Rules.ForFiles) {
    case FileConflictChoice::Ask:
        return AskTheUser();
    case FileConflictChoice::Overwrite:
        return ReplaceUnasked(Name, Action::Overwrite);
    case FileConflictChoice::Skip:
        return AnswerWith(Action::Skip);
    case FileConflictChoice::Older:
        return ReplaceUnasked(Name, OverwriteIf(IsSourceNewer(Name.Conflict)));
    case FileConflictChoice::Compare:
        return ReplaceUnasked(Name, Compare(Name));
    case FileConflictChoice::Larger:
        return ReplaceUnasked(Name, OverwriteIf(IsSourceLarger(Name.Conflict)));
    case FileConflictChoice::SizeDiffers:
        return ReplaceUnasked(Name, OverwriteIf(DoSizesDiffer(Name.Conflict)));
    case FileConflictChoice::KeepBoth:
        return AnswerWith(Action::Rename);
    case FileConflictChoice::Fail:
        return FailBecauseTaken(Name);
    }
    return AskTheUser();
}

// What may not be replaced is no case for Chosen, not even where that would skip it.
ConflictDecision ConflictPolicy::ReplaceUnasked(const TakenName& Name, Action Chosen) const {
    std::string refusal = WhyNotReplaced(Name);
    return refusal.empty() ? CarryOut(Name, Chosen) : AskOrFail(std::move(refusal));
}

ConflictDecision ConflictPolicy::DecideDirectory(const TakenName& Name) const {
    switch (ForDirectories) {
    case DirectoryConflictChoice::Ask:
        return AskTheUser();
    case DirectoryConflictChoice::Merge:
        return IsDirectory(Name.Entry) ? Enter(Name) : ReplaceByDirectory(Name);
    case DirectoryConflictChoice::Skip:
        return AnswerWith(Action::Skip);
    case DirectoryConflictChoice::Fail:
        return FailBecauseTaken(Name);
    }
    return AskTheUser();
}

ConflictDecision ConflictPolicy::Enter(const TakenName& Name) const {
    const std::string& destination = Name.Conflict.DestinationPath;
    if (!Name.Entry.bLink || Name.bFollowLinks || destination == Rules.NamedDestination) {
        return AnswerWith(Action::Merge);
    }
    return AskOrFail("not writing through symlink " + Quoted(destination) + " to directory " +
                     Quoted(Name.Entry.LinkTarget) + "; pass --follow-links to allow it");
}

// What is lost would not be a file for a file, so the choice for files decides, but never replaces.
ConflictDecision ConflictPolicy::ReplaceByDirectory(const TakenName& Name) const {
    if (Rules.ForFiles == FileConflictChoice::Skip) {
        return AnswerWith(Action::Skip);
    }
    if (Rules.ForFiles == FileConflictChoice::Fail) {
        return FailBecauseTaken(Name);
    }
    return AskOrFail(WhyNotReplaced(Name));
}

ConflictDecision ConflictPolicy::AskOrFail(std::string Refusal) const {
    return bAsksUser ? AskTheUser() : FailWith(std::move(Refusal));
}
