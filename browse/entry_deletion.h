// Deleting entries with all that is in them.

#pragma once

#include "entry_failures.h"
#include "file_identity.h"
#include "owned_descriptor.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// Goes from directory to directory with one descriptor, so that trees may be as deep as they like,
// and by names in open directories, so that nothing that is put in the place of one leads it
// elsewhere. What cannot be deleted itself is left with all that is in it, mount points so too.
//
// Threads: one. It runs in a process that may hold copies of locks, so no message is made here.
class EntryDeletion {
public:
    // Counts in DeletedEntries what it deletes; both outlive this object.
    EntryDeletion(std::atomic<std::uint64_t>& DeletedEntries, EntryFailures& Failed)
        : Deleted(DeletedEntries), Failures(Failed) {}

    // What is gone already is neither counted nor a failure.
    void Delete(const std::filesystem::path& Path);

private:
    // A directory whose entries are being deleted. The first one is the parent of what was asked
    // for, which is its only entry.
    struct Level {
        std::string Name;
        FileIdentity Identity = {};
        std::vector<std::string> Rest = {};
        // Something in it could not be deleted.
        bool bKept = false;
    };

    // Returns 0 or an errno, as the others that return a number.
    int Begin(const std::filesystem::path& Path);
    // Of the last level, or what is in it first.
    void DeleteNext();
    int Remove(const std::string& Name, int Flags);
    int Enter(const std::string& Name);
    // From the last level, which is done with. False when there is no way back.
    bool Leave();
    int GoUp();
    void Fail(const std::string& Name, int Error);

    std::atomic<std::uint64_t>& Deleted;
    EntryFailures& Failures;
    // The directory of the last level.
    OwnedDescriptor Current;
    std::vector<Level> Levels;
};
