// Gives what a job has made the modes, times and owners of its sources.

#pragma once

#include "answered_names.h"
#include "made_private.h"
#include "preserve_choice.h"
#include "status_record.h"
#include "tarvanetransfer.h"
#include "worker_thread.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include <sys/types.h>

struct FinishTask {
    // These two outlive the finisher.
    const StatusRecord& Record;
    const AnsweredNames& Names;
    PreserveChoice Preserve;
    // By the desk: given back their mode where the job has not replaced them.
    std::vector<MadePrivate> Privates = {};
    // The job has succeeded; otherwise what is missing was not reached.
    bool bWhole = true;
    // For what has no record: 0777 or 0666 without these bits.
    mode_t Umask = 022;
    // Directories above the destinations that were missing before the job.
    std::vector<std::filesystem::path> MadeParents = {};
    // WAV files at names that were free before it.
    std::vector<std::filesystem::path> MadeFiles = {};
    // As the job counts them, to notice entries that came late.
    std::uint64_t CopiedEntries = 0;
    // Of the job, for the sources of these; outlives the finisher. Without one nothing has come
    // late.
    const TarvaneTransferPlan* Plan = nullptr;
    // When it began; nothing has come late by default.
    timespec JobStarted = {.tv_sec = std::numeric_limits<time_t>::max(), .tv_nsec = 0};
};

// An entry that is not the job's is in no number.
struct FinishResult {
    // Entries that have what was to be carried over, as far as the destination can hold it.
    std::uint64_t Finished = 0;
    // Gone by then, of another kind, or with a second name, which may be somebody else's. A
    // directory counts once for all that is in it.
    std::uint64_t LeftAlone = 0;
    // Came late and are without a source, so that nobody knows how open they may be.
    std::uint64_t StayPrivate = 0;
    // Copies that are not as long as the record says. They are finished too.
    std::uint64_t ChangedLength = 0;
    // The first ten of them, by their full paths.
    std::vector<std::string> FirstChanged = {};
    bool bCanceled = false;
    // Entries that it has not come to because of a cancel or of what is in Broken.
    std::uint64_t Unreached = 0;
    // What the destination cannot hold.
    bool bModesLost = false;
    bool bTimesLost = false;
    bool bOwnersLost = false;
    // Entries that could not be changed for another reason.
    std::uint64_t Failures = 0;
    // The first one as a sentence: "cannot set the mode of '/x': Input/output error".
    std::string FirstFailure = {};
    // Why it has broken off as a whole; empty when it has not.
    std::string Broken = {};
};

// Goes through the record in its order, directories after their contents, and changes what the job
// has made or replaced: what stood there before keeps its own. Nothing is reached through a link
// but a directory that the job has merged into through that very link.
//
// Works on a thread of its own. Threads: one makes, uses and destroys it.
class Finisher {
public:
    // Errors: std::system_error when the thread cannot be started.
    explicit Finisher(FinishTask TaskToDo);
    // Cancels and waits.
    ~Finisher() { Cancel(); }
    Finisher(const Finisher&) = delete;
    Finisher& operator=(const Finisher&) = delete;

    // Of the record's; all of them at the end, unless it was canceled or has broken off.
    std::uint64_t EntriesDone() const { return Done; }
    // Ends it before the next entry; directories that it is in then are left as the job made them.
    void Cancel() { bCancel = true; }

    // As in WorkerThread.
    bool IsOver() const { return Worker.IsOver(); }
    int OverFd() const { return Worker.OverFd(); }
    // Requires: it is over.
    const FinishResult& Result() const { return Outcome; }

private:
    void Work() noexcept;

    const FinishTask Task;
    std::atomic<std::uint64_t> Done{0};
    std::atomic<bool> bCancel{false};
    FinishResult Outcome;
    // The last member, as its thread uses the others.
    WorkerThread Worker;
};
