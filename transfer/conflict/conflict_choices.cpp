#include "conflict_choices.h"

#include <array>

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
    ConflictChoice{'b', "compare by content", Action::CompareByContent},
    ConflictChoice{'B', "compare all by content", Action::CompareByContent,
                   FileConflictChoice::Compare},
};

constexpr std::array kDirectoryChoices = {
    ConflictChoice{'m', "merge", Action::Merge},
    ConflictChoice{'M', "merge all", Action::Merge, std::nullopt, DirectoryConflictChoice::Merge},
    ConflictChoice{kDefaultChoiceLetter, "skip", Action::Skip},
    ConflictChoice{'S', "skip all", Action::Skip, std::nullopt, DirectoryConflictChoice::Skip},
};

} // namespace

DirectoryConflictChoice ChosenForDirectories(FileConflictChoice ForFiles,
                                             std::optional<DirectoryConflictChoice> Explicitly) {
    const bool bAsk = ForFiles == FileConflictChoice::Ask;
    return Explicitly.value_or(bAsk ? DirectoryConflictChoice::Ask
                                    : DirectoryConflictChoice::Merge);
}

std::span<const ConflictChoice> ChoicesFor(TarvaneTransferConflictKind Kind) {
    if (Kind == TarvaneTransferConflictKind::Directory) {
        return kDirectoryChoices;
    }
    return kFileChoices;
}

std::optional<ConflictChoice> ChoiceByLetter(const TarvaneTransferConflict& Conflict, char Letter) {
    for (ConflictChoice choice : ChoicesFor(Conflict.Kind)) {
        if (choice.Letter != Letter) {
            continue;
        }
        if (Letter == kOverwriteAllOlder && IsSourceNewer(Conflict)) {
            choice.Action = Action::Overwrite;
        }
        return choice;
    }
    return std::nullopt;
}

bool RemovesDirectory(const TarvaneTransferConflict& Conflict, const ConflictChoice& Choice) {
    const bool bReplaces =
        Choice.Action == Action::Overwrite || Choice.Action == Action::CompareByContent;
    return bReplaces && Conflict.Kind == TarvaneTransferConflictKind::File &&
           Conflict.bDestinationDirectory;
}

bool HasBothSizes(const TarvaneTransferConflict& Conflict) {
    return Conflict.bSourceHasSize && Conflict.bDestinationHasSize;
}

bool IsSourceNewer(const TarvaneTransferConflict& Conflict) {
    return Conflict.bSourceHasModifiedTime && Conflict.bDestinationHasModifiedTime &&
           Conflict.SourceModifiedTicks > Conflict.DestinationModifiedTicks;
}
