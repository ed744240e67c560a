// What the user asks to be copied or moved, and how.

#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "conflict_policy.h"
#include "preserve_choice.h"

enum class FlushChoice {
    Auto,
    Always,
    Never,
};

struct TransferRequest {
    bool bMove = false;
    // The last one is the destination unless TargetDirectory is set.
    std::vector<std::filesystem::path> Operands;
    std::optional<std::filesystem::path> TargetDirectory;
    // The destination is a name, never a directory to put the source into.
    bool bNoTargetDirectory = false;
    // Nothing until it is known whether somebody can be asked.
    std::optional<FileConflictChoice> OnConflict;
    // Merge unless it is given or OnConflict asks.
    std::optional<DirectoryConflictChoice> OnDirectoryConflict;
    // Of every source that is copied; one that is renamed keeps all.
    PreserveChoice Preserve = {};
    FlushChoice Flush = FlushChoice::Auto;
    bool bPreflight = true;
    bool bDryRun = false;
    // Lets a move go on that removes files through a link to a directory, and follows links at the
    // destination.
    bool bFollowLinks = false;
};

// TargetDirectory, or the last operand; empty without either.
std::filesystem::path DestinationOf(const TransferRequest& Request);

ConflictRules RulesOf(const TransferRequest& Request);
