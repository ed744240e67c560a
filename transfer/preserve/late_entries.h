// Entries that a job has made and that are not in its record, because they came to the source after
// somebody had looked at it.

#pragma once

#include "entry_changes.h"
#include "file_identity.h"
#include "finisher.h"
#include "folder_stack.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

// Looks for them in every directory of the record. What somebody else has made there at the same
// time cannot be told from them, but has no source.
class LateEntries {
public:
    explicit LateEntries(const FinishTask& TaskToDo) : Task(TaskToDo), Changes(TaskToDo.Preserve) {}

    // Gives them, and all that is in them, what belongs to their sources as these are now. Those
    // that have none, as a move has removed it, stay as they are: nobody knows how private it was.
    // Returns the number of these; a directory counts once for all that is in it. Call it once.
    // Errors: std::system_error when the record cannot be read.
    std::uint64_t FinishAll(const std::atomic<bool>& bCancel);

private:
    // A directory of the record.
    struct Level {
        std::size_t ParentPathBytes;
        // By the job, with all that is in it.
        bool bMade;
        bool bPassedOver;
        // Hashes of the names that the record has in it: where a late entry shares one, it stays
        // as it is.
        std::unordered_set<std::size_t> Names = {};
    };

    void NoteRenamed();
    void Know(std::string_view Name);
    void Enter(const RecordedEntry& Entry);
    bool OpenFolder(const RecordedEntry& Entry, bool bMade);
    void Leave();
    bool EnterItem(std::string_view Destination);
    // Source is the full path of where it would come from.
    void FinishIfLate(int Folder, const char* Name, const std::string& Source, bool bFolderMade);
    bool IsLate(const struct statx& Status, bool bFolderMade) const;

    const FinishTask& Task;
    EntryChanges Changes;
    // Copies that are in the record by other names.
    std::set<FileIdentity> Renamed;
    FolderStack Folders;
    std::vector<Level> Levels;
    // Of the directory that it is in.
    std::string Path;
    // Of the item in the plan that it is in.
    std::size_t Item = 0;
    std::uint64_t StayPrivate = 0;
};
