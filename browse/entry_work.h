// What is done to entries beside copying and moving them: made, renamed, deleted.

#pragma once

#include "worker_process.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct EntryFailures;

// What has become of it.
struct EntryWorkResult {
    // Entries that were deleted, directories and what was in them each counted.
    std::uint64_t Done = 0;
    // Sentences without a capital, a period or a line end, the first ten; not cleaned for a screen.
    std::vector<std::string> Failures = {};
    std::uint64_t FailureCount = 0;
};

// One piece of work in a process of its own, so that a file system that does not answer holds
// nobody. Letting go of it ends it where it is.
//
// Threads: one thread makes, uses and destroys it; others may run.
class EntryWork {
public:
    // Makes a directory; those above it have to be there.
    static EntryWork MakeDirectory(const std::filesystem::path& Path);
    // Never onto anything that is there.
    static EntryWork Rename(const std::filesystem::path& From, const std::filesystem::path& To);
    // Directories with all that is in them, links themselves and never what they lead to, and no
    // file system that is mounted there or below. Goes on after what cannot be deleted; a directory
    // that could not be deleted even if it were empty keeps what is in it. What is gone already is
    // neither counted nor a failure.
    static EntryWork Delete(std::vector<std::filesystem::path> Paths);

    // So far.
    std::uint64_t EntriesDone() const { return *Deleted; }
    // Becomes readable when TakeResult has something to do; for poll. -1 when the work could not be
    // started.
    int OverFd() const { return Process ? Process->OverFd() : -1; }
    // As soon as it is over; once.
    std::optional<EntryWorkResult> TakeResult();

private:
    using Counter = std::atomic<std::uint64_t>;
    // Counts what it deletes.
    using Work = std::function<void(Counter& Deleted, EntryFailures& Failures)>;

    explicit EntryWork(const Work& WorkToDo);

    // Shared with the process.
    std::unique_ptr<Counter, void (*)(Counter*)> Deleted;
    std::string StartFailure;
    std::unique_ptr<WorkerProcess> Process;
};
