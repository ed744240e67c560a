#include "conflict_choices.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

#include "tarvanepane.h"

namespace {

using Action = TarvaneTransferConflictAction;

constexpr char kOverwriteAllOlder = 'u';

constexpr std::array kFileChoices = {
    ConflictChoice{'o', "overwrite", Action::Overwrite},
    ConflictChoice{'O', "overwrite all", Action::Overwrite, FileConflictChoice::Overwrite},
    ConflictChoice{kOverwriteAllOlder, "overwrite all older", Action::Skip,
                   FileConflictChoice::Older},
    ConflictChoice{kDefaultChoiceLetter, "skip", Action::Skip},
    ConflictChoice{'S', "skip all", Action::Skip, FileConflictChoice::Skip},
    ConflictChoice{'r', "rename", Action::Rename},
    ConflictChoice{'k', "keep both", Action::Rename},
    ConflictChoice{'K', "keep both for all", Action::Rename, FileConflictChoice::KeepBoth},
    ConflictChoice{'b', "compare: skip when equal, overwrite when not", Action::CompareByContent},
    ConflictChoice{'B', "compare all", Action::CompareByContent, FileConflictChoice::Compare},
};

constexpr std::array kDirectoryChoices = {
    ConflictChoice{'m', "merge", Action::Merge},
    ConflictChoice{'M', "merge all", Action::Merge, std::nullopt, DirectoryConflictChoice::Merge},
    ConflictChoice{kDefaultChoiceLetter, "skip", Action::Skip},
    ConflictChoice{'S', "skip all", Action::Skip, std::nullopt, DirectoryConflictChoice::Skip},
};

bool CanApply(const ConflictChoice& Choice, const TakenName& Name) {
    const bool bOlder = Choice.Letter == kOverwriteAllOlder;
    if (bOlder && TarvaneIsCddaPath(Name.Conflict.SourcePath)) {
        return false;
    }
    if (Choice.Action == Action::CompareByContent && !HasBothSizes(Name.Conflict)) {
        return false;
    }
    return MayBeReplaced(Name) || !(bOlder || Replaces(Choice.Action, Name));
}

} // namespace

DirectoryConflictChoice ChosenForDirectories(FileConflictChoice ForFiles,
                                             std::optional<DirectoryConflictChoice> Explicitly) {
    const bool bAsk = ForFiles == FileConflictChoice::Ask;
    return Explicitly.value_or(bAsk ? DirectoryConflictChoice::Ask
                                    : DirectoryConflictChoice::Merge);
}

std::vector<ConflictChoice> ChoicesFor(const TakenName& Name) {
    std::span<const ConflictChoice> all = kFileChoices;
    if (Name.Conflict.Kind == TarvaneTransferConflictKind::Directory) {
        all = kDirectoryChoices;
    }
    std::vector<ConflictChoice> choices;
    std::ranges::copy_if(all, std::back_inserter(choices),
                         [&Name](const ConflictChoice& Choice) { return CanApply(Choice, Name); });
    return choices;
}

std::optional<ConflictChoice> ChoiceByLetter(const TakenName& Name, char Letter) {
    for (ConflictChoice choice : ChoicesFor(Name)) {
        if (choice.Letter != Letter) {
            continue;
        }
        if (Letter == kOverwriteAllOlder && IsSourceNewer(Name.Conflict)) {
            choice.Action = Action::Overwrite;
        }
        return choice;
    }
    return std::nullopt;
}

bool Replaces(Action Answer, const TakenName& Name) {
    if (Name.Conflict.Kind == TarvaneTransferConflictKind::Directory) {
        return Answer == Action::Merge && !IsDirectory(Name.Entry);
    }
    return Answer == Action::Overwrite || Answer == Action::CompareByContent;
}

bool ReplacesOtherKind(Action Answer, const TakenName& Name) {
    const bool bFileComes = Name.Conflict.Kind == TarvaneTransferConflictKind::File;
    const bool bSameKind = bFileComes && (!IsDirectory(Name.Entry) || ReplacesLink(Name));
    return Replaces(Answer, Name) && !bSameKind;
}

bool HasBothSizes(const TarvaneTransferConflict& Conflict) {
    return Conflict.bSourceHasSize && Conflict.bDestinationHasSize;
}

bool IsSourceNewer(const TarvaneTransferConflict& Conflict) {
    return Conflict.bSourceHasModifiedTime && Conflict.bDestinationHasModifiedTime &&
           Conflict.SourceModifiedTicks > Conflict.DestinationModifiedTicks;
}
