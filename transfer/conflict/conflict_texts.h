// What a question about a taken name says, in words; laying them out is the front end's.

#pragma once

#include <string>

#include "taken_name.h"
#include "tarvanetransfer.h"

// What an answer could lose beyond what it says by itself, or why nothing can be overwritten.
struct ConflictLoss {
    std::string Sentence;
    // More than a file that a file replaces.
    bool bWarning = false;
};

// What stands at the destination: "file", "directory", "link" or "special file".
std::string WordFor(const TakenEntry& Entry);

// "File exists: ".
std::string ConflictTitle(const TakenName& Name);

// "46.0 KB (47110 bytes)  2023-12-24 18:00:00  is a link to ../old.jpg", the link followed. Not
// cleaned for a screen.
std::string DestinationFacts(const TakenName& Name);

// The same for the source, and how it compares with the destination: "  newer, same size".
std::string SourceFacts(const TarvaneTransferConflict& Conflict);

// Without a sentence where nothing more can be lost.
ConflictLoss LossOf(const TakenName& Name);
