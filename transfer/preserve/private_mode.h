// The modes of files that were made private before the job was to replace them.

#pragma once

#include "entry_changes.h"
#include "finisher.h"
#include "made_private.h"

#include <optional>

#include <sys/stat.h>

// Whether the file keeps its own mode, and does not get that of its source: it has not been
// replaced, or only through a link. Status is what stands at its path now; the link itself where
// there is one.
bool KeepsItsMode(const FinishTask& Task, const MadePrivate& Old, const struct stat& Status);

// Gives it back to a file at Place that keeps its mode, and that is still the same file.
std::optional<ChangeFailure> GiveBackMode(const FinishTask& Task, const MadePrivate& Old,
                                          const EntryPlace& Place, const struct stat& Status,
                                          const EntryChanges& Changes);

// The same to the file that its path leads to, whether it was replaced or not, but for what its new
// contents must not be open to.
std::optional<ChangeFailure> GiveBackModeBehind(const FinishTask& Task, const MadePrivate& Old,
                                                const EntryPlace& Place,
                                                const EntryChanges& Changes);
