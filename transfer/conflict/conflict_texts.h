// What a question about a taken name says, in words; laying them out is the front end's.

#pragma once

#include <string>

#include "tarvanetransfer.h"

// What an answer could lose beyond what it says by itself.
struct ConflictLoss {
    std::string Sentence;
    // A whole directory, or a file that a directory replaces.
    bool bWarning = false;
};

// "File exists: ", after what stands at the destination.
std::string ConflictTitle(const TarvaneTransferConflict& Conflict);

// "46.0 KB (47110 bytes)  2023-12-24 18:00:00".
std::string DestinationFacts(const TarvaneTransferConflict& Conflict);

// The same for the source, and how it compares with the destination: "  newer, same size".
std::string SourceFacts(const TarvaneTransferConflict& Conflict);

// Without a sentence where nothing more can be lost.
ConflictLoss LossOf(const TarvaneTransferConflict& Conflict);
