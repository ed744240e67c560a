// How the question about a taken name is laid out, as parts of a block.

#pragma once

#include <string>
#include <vector>

#include "block_layout.h"
#include "tarvanetransfer.h"

// How much the parts of the question matter where the window is too small.
enum ConflictPartImportance {
    kOldFileNotePart,
    kSourcePathPart,
    kDestinationFactsPart,
    kSourceFactsPart,
    kTitlePart,
    kChoicesPart,
    kWarningPart,
    kReasonPart,
    kLastLinePart,
};

// Both sides with path, size and date, how the source compares with the destination, and what an
// answer could lose beyond what it says by itself.
std::vector<BlockPart> ConflictParts(const TarvaneTransferConflict& Conflict, int Width);

// The answers with their keys, as many in a line as fit; none is broken if a line has room for it.
BlockPart ChoicesPart(TarvaneTransferConflictKind Kind, int Width);

// The keys alone, where there is no room for the answers: "[mMsS Esc, ? lists] ".
std::string ShortChoices(TarvaneTransferConflictKind Kind);
