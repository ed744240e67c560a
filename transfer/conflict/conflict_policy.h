// Answers to taken names that are decided from code: the command line's choices, and what the user
// chose for all later names.

#pragma once

#include <optional>
#include <string>

#include "conflict_choices.h"
#include "tarvanetransfer.h"

// What to do about one posted conflict.
struct ConflictDecision {
    enum class Verdict {
        // Resolve the conflict with Action and RenamePath.
        Answer,
        AskUser,
        // Cancel the job, which fails because of Sentence: one sentence without a capital, a period
        // or a line end, not cleaned for a screen.
        Fail,
    };
    Verdict Outcome = Verdict::AskUser;
    TarvaneTransferConflictAction Action = TarvaneTransferConflictAction::Cancel;
    std::string RenamePath;
    std::string Sentence;
};

// Decides conflicts by the choices made beforehand. No choice lets a file take the place of a
// directory, or a directory that of a file: Skip skips, KeepBoth renames a file, Fail fails, and
// the others ask when the choices ask about anything, or else fail. A size or date that is not
// known never overwrites.
//
// The engine's own "all" answers remember no such caution: OverwriteAll and OverwriteAllOlder
// remove whole directories later, MergeAll removes files. An interface that offers them should call
// RememberForAll instead and then do what Decide says.
class ConflictPolicy {
public:
    // Without a choice for directories as ChosenForDirectories says.
    ConflictPolicy(FileConflictChoice ForAllFiles,
                   std::optional<DirectoryConflictChoice> ForAllDirectories);

    // Looks at the disk for KeepBoth only, to find a name that is free.
    ConflictDecision Decide(const TarvaneTransferConflict& Conflict) const;

    // From now on decides files, or directories, by Choice, which the user gave as an answer. Where
    // a file would take a directory's place, or a directory a file's, the user is asked again
    // unless the choice for files skips or renames.
    void RememberForAll(FileConflictChoice Choice) { ForFiles = Choice; }
    void RememberForAll(DirectoryConflictChoice Choice) { ForDirectories = Choice; }

private:
    ConflictDecision DecideDirectory(const TarvaneTransferConflict& Conflict) const;
    ConflictDecision DecideUnequalKinds(const TarvaneTransferConflict& Conflict) const;

    FileConflictChoice ForFiles;
    DirectoryConflictChoice ForDirectories;
    // A choice asks, so there is somebody to ask.
    const bool bAsksUser;
};
