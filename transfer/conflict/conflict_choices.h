// What can be done about a taken name: the choices for all names, the answers to one, their keys.

#pragma once

#include <optional>
#include <vector>

#include "taken_name.h"
#include "tarvanetransfer.h"

// What to do about a file whose name is taken. The desk goes by it; the engine's own policy is
// always to ask.
enum class FileConflictChoice {
    Ask,
    Overwrite,
    Skip,
    Older,
    Compare,
    Larger,
    SizeDiffers,
    KeepBoth,
    Fail,
};

// The same for a directory.
enum class DirectoryConflictChoice {
    Ask,
    Merge,
    Skip,
    Fail,
};

// What is chosen for directories in the end: Explicitly, or Ask where files are asked about, or
// Merge.
DirectoryConflictChoice ChosenForDirectories(FileConflictChoice ForFiles,
                                             std::optional<DirectoryConflictChoice> Explicitly);

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

// Those that can apply: nothing that replaces where nobody may, no comparison where one side has no
// size, and no "older" for a CD track, which has no date.
std::vector<ConflictChoice> ChoicesFor(const TakenName& Name);

// What the letter stands for in this conflict: "overwrite all older" overwrites or skips this name
// by its dates. Empty when the letter is none of the choices.
std::optional<ConflictChoice> ChoiceByLetter(const TakenName& Name, char Letter);

// Whether the answer puts something in the place of what stands there, or may.
bool Replaces(TarvaneTransferConflictAction Answer, const TakenName& Name);

// Whether it also puts a file in the place of a directory, or a directory in that of anything else.
bool ReplacesOtherKind(TarvaneTransferConflictAction Answer, const TakenName& Name);

// Whether the sizes of both sides are known.
bool HasBothSizes(const TarvaneTransferConflict& Conflict);

// Whether both dates are known and the source's is later.
bool IsSourceNewer(const TarvaneTransferConflict& Conflict);
