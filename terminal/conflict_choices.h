// The answers that a conflict of each kind can get, and their keys.

#pragma once

#include <optional>
#include <span>

#include "tarvanetransfer.h"
#include "transfer_request.h"

struct ConflictChoice {
    char Letter = 0;
    const char* Label = "";
    // For this one name.
    TarvaneTransferConflictAction Action = TarvaneTransferConflictAction::Skip;
    // For the later ones.
    std::optional<FileConflictChoice> ForAllFiles = std::nullopt;
    std::optional<DirectoryConflictChoice> ForAllDirectories = std::nullopt;
};

// What Enter alone stands for: skipping destroys nothing.
inline constexpr char kDefaultChoiceLetter = 's';

std::span<const ConflictChoice> ChoicesFor(TarvaneTransferConflictKind Kind);

// What the letter stands for in this conflict: "overwrite all older" overwrites or skips this name
// by its dates. Empty when the letter is no answer to its kind.
std::optional<ConflictChoice> ChoiceByLetter(const TarvaneTransferConflict& Conflict, char Letter);

// Whether the answer removes a whole directory, or may.
bool RemovesDirectory(const TarvaneTransferConflict& Conflict, const ConflictChoice& Choice);

bool HasBothSizes(const TarvaneTransferConflict& Conflict);

// Whether both dates are known and the source's is later.
bool IsSourceNewer(const TarvaneTransferConflict& Conflict);
