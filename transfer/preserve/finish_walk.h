// The way through a record: which entry is the job's, and where it is.

#pragma once

#include "entry_changes.h"
#include "finisher.h"
#include "folder_stack.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <sys/stat.h>

// Threads: one, the finisher's.
class FinishWalk {
public:
    // All three outlive it.
    FinishWalk(const FinishTask& TaskToDo, FinishResult& OutResult,
               std::atomic<std::uint64_t>& OutDone);

    // Call it once. Errors: std::system_error when the record cannot be read, and std::bad_alloc;
    // what was done until then is in the result.
    void Run(const std::atomic<bool>& bCancel);

    // Entries of the record that the job has copied, directories that it has merged included.
    std::uint64_t CopiesThere() const { return Copies; }

private:
    // A directory of the record that the walk is in.
    struct Level {
        RecordedStatus Source;
        std::size_t ParentPathBytes;
        // The job has made it.
        bool bMade;
        // It cannot be reached, or is not the job's, with all that is in it.
        bool bPassedOver;
    };

    void GiveBackModesLeft();

    void EnterDirectory(const RecordedEntry& Entry);
    bool OpenDirectory(const RecordedEntry& Entry);
    void LeaveDirectory();

    void FinishFile(const RecordedEntry& Entry);
    void FinishRenamed(const std::string& NewName, const RecordedEntry& Entry);
    // Named is the full path of the entry at Place.
    void FinishAt(const EntryPlace& Place, const std::string& Named, const RecordedEntry& Entry);
    bool IsOurs(const std::string& Named, const RecordedEntry& Entry,
                const struct stat& Status) const;

    bool IsPassedOver() const { return !Levels.empty() && Levels.back().bPassedOver; }
    std::size_t AppendToPath(std::string_view Name);
    void NoteUnreachable(const std::string& Named);
    void NoteLength(const std::string& Named, std::uint64_t Expected, const struct stat& Status);
    void NoteEnd(const std::string& Named, const std::optional<ChangeFailure>& Failure);
    void NoteGivenBack(const MadePrivate& Old, const std::optional<ChangeFailure>& Failure);
    void NoteFailure(const std::string& Named, const ChangeFailure& Failure);

    const FinishTask& Task;
    FinishResult& Result;
    std::atomic<std::uint64_t>& Done;
    // By their paths; those that the walk has not come to.
    std::unordered_map<std::string_view, const MadePrivate*> Privates;
    EntryChanges Changes;
    FolderStack Folders;
    std::vector<Level> Levels;
    std::uint64_t Copies = 0;
    // Of the entry that it is at.
    std::string Path;
};
