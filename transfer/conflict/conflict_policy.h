// Answers to taken names that are decided from code: the command line's choices, and what the user
// chose for all later names.

#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "conflict_choices.h"
#include "taken_name.h"
#include "tarvanetransfer.h"

// What is chosen before a transfer about the names that it will find taken.
struct ConflictRules {
    FileConflictChoice ForFiles = FileConflictChoice::Ask;
    // Without one, as ChosenForDirectories says.
    std::optional<DirectoryConflictChoice> ForDirectories = {};
    // Links at the destination are followed.
    bool bFollowLinks = false;
    // The full path of the destination that the user named: a link to a directory that may be
    // entered without bFollowLinks.
    std::filesystem::path NamedDestination = {};
};

// What to do about one posted conflict.
struct ConflictDecision {
    enum class Verdict {
        // Resolve the conflict with Action; for Rename, with a free name that is found then.
        Answer,
        AskUser,
        // Cancel the job, which fails because of Sentence: one sentence without a capital, a period
        // or a line end, not cleaned for a screen.
        Fail,
    };
    Verdict Outcome = Verdict::AskUser;
    TarvaneTransferConflictAction Action = TarvaneTransferConflictAction::Cancel;
    std::string Sentence = {};
    // The link at the destination is to be removed before the answer.
    bool bReplacesLink = false;
};

// Decides conflicts by the choices made beforehand. It looks at no disk, so that what a choice will
// do can be told beforehand.
//
// No choice lets a file take the place of a directory or a special entry, lets a directory take the
// place of anything else, or enters a link that nobody named: Skip skips what would be replaced,
// KeepBoth renames a file, Fail fails, and the others ask when the choices ask about anything, or
// else fail. A link in a file's way is weighed by what it leads to, and replaced itself. A size or
// date that is not known never overwrites.
//
// The engine's own "all" answers remember no such caution: OverwriteAll and OverwriteAllOlder
// remove whole directories later, MergeAll removes files. So names are answered one by one, and
// RememberForAll keeps what is for all. Only SkipAll for files comes to the same, and the others
// for files where nothing else stands in the way.
class ConflictPolicy {
public:
    explicit ConflictPolicy(ConflictRules ChosenRules);

    ConflictDecision Decide(const TakenName& Name) const;

    // What comes of an answer, whoever gave it: nobody writes to a special entry or removes one, or
    // a directory with the source inside.
    static ConflictDecision CarryOut(const TakenName& Name, TarvaneTransferConflictAction Answer);

    bool FollowsLinks() const { return Rules.bFollowLinks; }
    FileConflictChoice ForFiles() const { return Rules.ForFiles; }

    // From now on decides files, or directories, by Choice, which the user gave as an answer. Where
    // a file would take a directory's place, or a directory a file's, the user is asked again
    // unless the choice for files skips or renames.
    void RememberForAll(FileConflictChoice Choice) { Rules.ForFiles = Choice; }
    void RememberForAll(DirectoryConflictChoice Choice) { ForDirectories = Choice; }

private:
    ConflictDecision DecideFile(const TakenName& Name) const;
    ConflictDecision ReplaceUnasked(const TakenName& Name,
                                    TarvaneTransferConflictAction Chosen) const;
    ConflictDecision DecideDirectory(const TakenName& Name) const;
    ConflictDecision Enter(const TakenName& Name) const;
    ConflictDecision ReplaceByDirectory(const TakenName& Name) const;
    ConflictDecision AskOrFail(std::string Refusal) const;

    ConflictRules Rules;
    DirectoryConflictChoice ForDirectories;
    // A choice asks, so there is somebody to ask.
    const bool bAsksUser;
};
