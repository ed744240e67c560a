// The file-transfer engine of a Linux file manager: copies and moves files, directories, links,
// special entries and audio-CD tracks on a worker thread while an interface thread watches.
//
// How the two threads meet:
//   1. The interface builds a TarvaneTransferPlan, creates a TarvaneTransferJob under shared
//      ownership and registers it with RegisterTarvaneTransferJob.
//   2. It starts one thread for the job, which calls RunTarvaneTransferJob and does all the work.
//   3. Meanwhile the interface polls: MakeUiSnapshot for the progress dialog,
//      CollectActiveTarvaneTransferJobSnapshots for the job list, and GetPendingConflict and
//      ResolveConflict when a name is taken. RequestCancel asks the worker to stop.
//   4. The job ends as succeeded, failed or canceled, with one line of text.
//
// The program that embeds the engine defines the functions declared in tarvaneops.h,
// tarvanepane.h and ring_sound.h.
//
// Paths are bytes and are shown as they are. Sizes are bytes. No expected failure is thrown: only
// allocation and lock failures leave a function of this header as an exception.

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// Stands before all that a shared library of the engine has to export. Its build may define it, for
// example as __attribute__((visibility("default"))).
#ifndef TARVANE_EXPORT
#define TARVANE_EXPORT
#endif

// The coarse phase of a job. RemovingSource is reserved: it has a label, but a move deletes its
// sources entry by entry during Copying and never enters it.
enum class TarvaneTransferStage : std::int32_t {
    Preparing = 0,
    Copying = 1,
    RemovingSource = 2,
    WaitingForConflict = 3,
    Completed = 4,
    Failed = 5,
    Canceled = 6,
};

// What a plan says to do when a destination already exists.
enum class TarvaneTransferConflictPolicy : std::int32_t {
    Ask = 0,
    Overwrite = 1,
    Skip = 2,
};

enum class TarvaneTransferConflictKind : std::int32_t {
    Directory = 1,
    File = 2,
};

// The answer to a conflict. The values have nothing to do with those of the policy: Skip is 2
// there and 3 here.
enum class TarvaneTransferConflictAction : std::int32_t {
    Merge = 1,
    MergeAll = 2,
    Skip = 3,
    SkipAll = 4,
    Overwrite = 5,
    Rename = 6,
    OverwriteAll = 7,
    CompareByContent = 8,
    OverwriteAllOlder = 9,
    Cancel = 10,
};

// A taken name, as it is shown to the user. What could not be found out is empty or 0, with its
// flag false.
struct TarvaneTransferConflict {
    TarvaneTransferConflictKind Kind = TarvaneTransferConflictKind::File;
    std::string SourcePath;
    std::string DestinationPath;
    // Local time of the last write, to the second: "2024-03-07 14:05:09".
    std::string SourceDate;
    std::string DestinationDate;
    std::uint64_t SourceSizeBytes = 0;
    std::uint64_t DestinationSizeBytes = 0;
    // Nanoseconds on the file clock; good for comparing the two sides only.
    std::int64_t SourceModifiedTicks = 0;
    std::int64_t DestinationModifiedTicks = 0;
    // A link to a directory counts as a directory.
    bool bSourceDirectory = false;
    bool bDestinationDirectory = false;
    bool bSourceHasSize = false;
    bool bDestinationHasSize = false;
    bool bSourceHasModifiedTime = false;
    bool bDestinationHasModifiedTime = false;
};

// One selected entry. The worker reads SourcePath and DestinationPath and sets the two counts
// while it scans; the other members are the interface's own.
struct TarvaneTransferItemPlan {
    std::string Name;
    std::filesystem::path SourcePath;
    // The full path that the entry is to have, not the directory it goes to.
    std::filesystem::path DestinationPath;
    bool bDestinationRenamed = false;
    bool bDirectory = false;
    std::uint64_t ItemCount = 0;
    std::uint64_t ByteCount = 0;
};

// A whole request. Items are processed in their order.
struct TarvaneTransferPlan {
    bool bMove = false;
    TarvaneTransferConflictPolicy ConflictPolicy = TarvaneTransferConflictPolicy::Ask;
    std::string SourceLabel;
    std::vector<TarvaneTransferItemPlan> Items;
};

// All that a progress dialog shows, as texts and as numbers.
struct TarvaneTransferUiSnapshot {
    bool bFinished = false;
    bool bSucceeded = false;
    bool bCanceled = false;
    // A cancel was requested and the job has not finished yet.
    bool bCancelRequested = false;
    // Always empty: the title is the interface's.
    std::string TitleText;
    std::string StageText;
    std::string PathText;
    std::string OverallText;
    std::string IoText;
    std::string MessageText;
    std::string HintText;
    double OverallProgress01 = 0.0;
    double FileProgress01 = 0.0;
    std::uint64_t TotalBytes = 0;
    std::uint64_t DoneBytes = 0;
    std::uint64_t TotalItems = 0;
    std::uint64_t DoneItems = 0;
    std::uint64_t CurrentFileTotalBytes = 0;
    std::uint64_t CurrentFileDoneBytes = 0;
    // 0 when unknown.
    std::uint64_t TransferRateBytesPerSecond = 0;
    double ElapsedSeconds = 0.0;
    // -1.0 when unknown.
    double RemainingSeconds = -1.0;
};

// One row of a job list.
struct TarvaneTransferJobSnapshot {
    std::string Source;
    std::string Job;
    std::string State;
    std::string Progress;
    std::string Detail;
};

// One running transfer, shared by the worker that does it and the interface that shows it.
//
// Threads: exactly one worker calls the methods under "Worker"; any thread those under "Interface".
// Lock: (1) Mutex guards the members listed under it; ConflictCondition waits on it.
//     (2) Counters and flags are sequentially consistent atomics, used without Mutex, so a reader
//     may see counters and texts from slightly different moments.
//     (3) Whoever holds the registry's mutex may take Mutex; never the other way round. No other
//     lock is taken while Mutex is held.
class TARVANE_EXPORT TarvaneTransferJob {
public:
    // Interface.

    // Starts the job's clock. SourceName labels the source side in job lists.
    TarvaneTransferJob(bool bMoveJob, std::size_t RequestedItemCount, std::string SourceName);
    TarvaneTransferJob(const TarvaneTransferJob&) = delete;
    TarvaneTransferJob& operator=(const TarvaneTransferJob&) = delete;

    // Asks the worker to stop. It does so between two blocks, entries or CD reads, and a wait for
    // an answer ends at once; a comparison of contents, the count of what is skipped and the
    // removal of a directory in the way are finished first. A finished job keeps its message.
    void RequestCancel();

    bool IsCancelRequested() const;
    bool IsFinished() const;
    bool IsMove() const;

    // The full path of what is being worked on, which the snapshot's line may shorten. Empty before
    // the first. Takes Mutex once, briefly.
    std::string GetCurrentPath() const;

    // The part of the items and bytes done that was skipped, by a policy or an answer. All of an
    // entry's part is there before the next conflict is posted, and before the job finishes.
    std::uint64_t GetSkippedItems() const;
    std::uint64_t GetSkippedBytes() const;

    // Copies the conflict that waits for an answer. False, with OutConflict untouched, when none
    // does.
    bool GetPendingConflict(TarvaneTransferConflict& OutConflict) const;

    // Answers the pending conflict and wakes the worker. Rename needs the full new path in
    // RenamePath; every other action should come with an empty one. The "all" actions also answer
    // later conflicts of the same kind. Cancel cancels the whole job.
    // Errors: false, with nothing changed, when no conflict waits for an answer or a Rename comes
    // without a path. An action that does not suit the conflict's kind is accepted here and fails
    // the job.
    bool ResolveConflict(TarvaneTransferConflictAction Action, const std::string& RenamePath);

    // The progress dialog's contents at this moment. Takes Mutex once, briefly.
    TarvaneTransferUiSnapshot MakeUiSnapshot() const;

    // The job's row in a job list.
    TarvaneTransferJobSnapshot MakeJobSnapshot() const;

    // Worker.

    // Shows StatusOverride as the status text, or the stage's label when it is empty.
    void SetStage(TarvaneTransferStage NewStage, const std::string& StatusOverride);

    // Shows Path as the current one and starts its byte count at 0.
    void SetCurrentPath(const std::string& Path, std::uint64_t FileTotalBytes);

    void SetTotals(std::uint64_t TotalItems, std::uint64_t TotalBytes);

    // Counts bytes of the whole job and of the current file, and samples them for the rate.
    void AddBytesDone(std::uint64_t Delta);

    void MarkItemsDone(std::uint64_t Count);

    // Says that so much of what is counted as done was skipped.
    void MarkSkipped(std::uint64_t Items, std::uint64_t Bytes);

    void SetCurrentFileProgress(std::uint64_t DoneBytes, std::uint64_t TotalBytesForFile);

    // Posts a conflict and blocks until it is answered, unless an earlier "all" answer decides it.
    // Errors: false when the job is canceled or finished, with OutAction Cancel and OutRenamePath
    // empty. A cancel wins over an answer that arrives with it.
    bool WaitForConflict(const TarvaneTransferConflict& Conflict,
                         TarvaneTransferConflictAction& OutAction, std::string& OutRenamePath);

    // Whether an earlier "all" answer decides every later conflict of the kind, so that nobody will
    // see one.
    bool RemembersAnswerFor(TarvaneTransferConflictKind Kind) const;

    // Exactly one of these ends the job. The flags are set before the message, so a reader may
    // briefly see a finished job with its previous status text. Success plays the completion sound
    // on the calling thread, without the lock.
    void FinishSuccess(const std::string& Message);
    void FinishFailure(const std::string& Message);
    void FinishCanceled(const std::string& Message);

private:
    using ByteSample = std::pair<std::chrono::steady_clock::time_point, std::uint64_t>;

    std::uint64_t SampledRateBytesPerSecond() const;
    void PostConflict(const TarvaneTransferConflict& Conflict);
    void WithdrawConflict();
    void RememberAnswer(TarvaneTransferConflictAction Action);

    // Constant.
    const bool bMove;
    [[maybe_unused]] const std::size_t RequestedTopLevelItems;
    const std::string SourceLabel;
    const std::chrono::steady_clock::time_point StartedAt;

    // Guarded by Mutex.
    mutable std::mutex Mutex;
    // Running totals of BytesDone, oldest first: one per sample interval, spanning the window.
    std::deque<ByteSample> ByteSamples;
    std::string CurrentPath;
    std::string StatusText = "Preparing";
    TarvaneTransferConflict PendingConflict;
    std::string ConflictRenamePath;
    std::condition_variable ConflictCondition;
    bool bConflictPending = false;
    bool bConflictResolved = false;
    // Cancel stands for no answer yet.
    TarvaneTransferConflictAction ConflictAction = TarvaneTransferConflictAction::Cancel;
    bool bDirectoryDecisionSet = false;
    TarvaneTransferConflictAction DirectoryDecision = TarvaneTransferConflictAction::Merge;
    bool bFileDecisionSet = false;
    TarvaneTransferConflictAction FileDecision = TarvaneTransferConflictAction::Overwrite;

    // Atomic.
    std::atomic<TarvaneTransferStage> Stage{TarvaneTransferStage::Preparing};
    std::atomic<bool> CancelRequested{false};
    std::atomic<bool> Finished{false};
    std::atomic<bool> Succeeded{false};
    std::atomic<bool> Canceled{false};
    std::atomic<std::uint64_t> ItemsTotal{0};
    std::atomic<std::uint64_t> ItemsDone{0};
    std::atomic<std::uint64_t> BytesTotal{0};
    std::atomic<std::uint64_t> BytesDone{0};
    std::atomic<std::uint64_t> ItemsSkipped{0};
    std::atomic<std::uint64_t> BytesSkipped{0};
    std::atomic<std::uint64_t> CurrentFileTotalBytes{0};
    std::atomic<std::uint64_t> CurrentFileDoneBytes{0};
};

// Runs a plan to its end and finishes the job; does nothing when Job is empty.
//
// Threads: needs a thread of its own, whose I/O priority is idle for the whole run.
// Errors: everything already copied or moved stays; a file that was being written is removed. The
//     reason is the job's message.
TARVANE_EXPORT void RunTarvaneTransferJob(const std::shared_ptr<TarvaneTransferJob>& Job,
                                          TarvaneTransferPlan Plan);

// Lists the job in every later collection until it finishes. Call it once per job; an empty Job is
// ignored. The registry keeps no job alive.
//
// Threads: any. Lock: the registry's mutex.
TARVANE_EXPORT void RegisterTarvaneTransferJob(const std::shared_ptr<TarvaneTransferJob>& Job);

// One row for every registered job that exists and has not finished, in order of registration.
//
// Threads: any. Lock: the registry's mutex, and under it each job's Mutex.
TARVANE_EXPORT std::vector<TarvaneTransferJobSnapshot> CollectActiveTarvaneTransferJobSnapshots();
