// Answers to taken names that are decided from code: the command line's choices, and what the user
// chose for all later names.

#pragma once

#include <string>

#include "tarvanetransfer.h"
#include "transfer_request.h"

// What to do about one posted conflict.
struct ConflictDecision {
    enum class Verdict {
        // Resolve the conflict with Action and RenamePath.
        Answer,
        AskUser,
        // Cancel the job and end with kExitFailed and Sentence, which is like that of UsageError.
        Fail,
    };
    Verdict Outcome = Verdict::AskUser;
    TarvaneTransferConflictAction Action = TarvaneTransferConflictAction::Cancel;
    std::string RenamePath;
    std::string Sentence;
};

// What a request chose for directories: what it says, otherwise Ask or Merge.
DirectoryConflictChoice ChosenForDirectories(const TransferRequest& Request);

// Decides conflicts by the request's choices. No choice lets a file take the place of a directory,
// or a directory that of a file: Skip skips, KeepBoth renames a file, Fail fails, and the others
// ask when the request asks about anything, or else fail. A size or date that is not known never
// overwrites.
//
// The engine's own "all" answers remember no such caution: OverwriteAll and OverwriteAllOlder
// remove whole directories later, MergeAll removes files. An interface that offers them should call
// RememberForAll instead and then do what Decide says.
class ConflictPolicy {
public:
    explicit ConflictPolicy(const TransferRequest& Request);

    // Looks at the disk for KeepBoth only, to find a name that is free.
    ConflictDecision Decide(const TarvaneTransferConflict& Conflict) const;

    // From now on decides files, or directories, by Choice, which the user gave as an answer. Where
    // one kind would take the place of the other the user is asked again.
    void RememberForAll(FileConflictChoice Choice) { ForFiles = Choice; }
    void RememberForAll(DirectoryConflictChoice Choice) { ForDirectories = Choice; }

private:
    ConflictDecision DecideDirectory(const TarvaneTransferConflict& Conflict) const;
    ConflictDecision DecideUnequalKinds(const TarvaneTransferConflict& Conflict) const;

    FileConflictChoice ForFiles;
    DirectoryConflictChoice ForDirectories;
    // The request asks about something, so there is somebody to ask.
    const bool bAsksUser;
};
