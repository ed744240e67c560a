// Entries that a job has made and that are not in its record, because they came to the source after
// somebody had looked at it.

#pragma once

#include "file_identity.h"
#include "finisher.h"
#include "folder_stack.h"
#include "private_entry.h"

#include <atomic>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

// Looks for them in every directory of the record. What somebody else has made there at the same
// time cannot be told from them.
class LateEntries {
public:
    explicit LateEntries(const FinishTask& TaskToDo) : Task(TaskToDo) {}

    // Gives them, and all that is in them, the modes of new entries. Call it once. Errors:
    // std::system_error when the record cannot be read.
    void OpenUpAll(const std::atomic<bool>& bCancel);

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
    void OpenUpIfLate(int Folder, const char* Name, bool bFolderMade) const;
    bool IsLate(const struct statx& Status, bool bFolderMade) const;

    const FinishTask& Task;
    // Copies that are in the record by other names.
    std::set<FileIdentity> Renamed;
    FolderStack Folders;
    std::vector<Level> Levels;
    // Of the directory that it is in.
    std::string Path;
};
