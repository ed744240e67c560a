// One case: the entries on disk, the plan and the answers. Paths are relative to the tree's root.

#pragma once

#include "model_files.h"

#include "tarvanetransfer.h"

#include <cstdint>
#include <string>
#include <vector>

struct CaseEntry {
    std::string Path;
    EntryKind Kind = EntryKind::File;
    // Of a link or a hard link. A target that begins with "~/" is absolute, below the root; a hard
    // link's is always relative to the root.
    std::string Target{};
    // Of a file. Two files are alike when both are; an odd stamp differs from the even one before
    // it in the last byte only.
    std::uint64_t Size = 0;
    unsigned Stamp = 0;
    std::int64_t ModifiedSeconds = 1;
};

struct CaseItem {
    std::string Source;
    std::string Destination;
};

struct CaseAnswer {
    TarvaneTransferConflictAction ToDirectory = TarvaneTransferConflictAction::Merge;
    TarvaneTransferConflictAction ToFile = TarvaneTransferConflictAction::Skip;
    // For Rename, beside the destination asked about; may be empty, and may hold slashes.
    std::string NewName;
};

struct RandomCase {
    std::vector<CaseEntry> Entries;
    bool bMove = false;
    TarvaneTransferConflictPolicy Policy = TarvaneTransferConflictPolicy::Ask;
    std::vector<CaseItem> Items;
    // One for each question; a question beyond them cancels.
    std::vector<CaseAnswer> Answers;
    bool bCanceledBefore = false;
    // Of the program, for a case that it runs; policy and answers are the engine's.
    std::vector<std::string> Options;
};

// A file's contents.
std::string ContentsOf(const CaseEntry& File);

// The target that a link gets in the tree at Root.
std::string LinkTarget(const CaseEntry& Link, const std::string& Root);

// The action that an answer has for a kind of conflict, and the path that it gives with it.
TarvaneTransferConflictAction ActionFor(const CaseAnswer& Answer, TarvaneTransferConflictKind Kind);
std::string RenamePathFor(const CaseAnswer& Answer, TarvaneTransferConflictKind Kind,
                          const std::string& DestinationPath);

// One line for each entry, item and answer, in ASCII.
std::string Description(const RandomCase& Case);
