// Pushes what a finished job has left in the page cache to the disks, so that they can be
// unplugged.

#pragma once

#include "tarvanetransfer.h"
#include "transfer_request.h"
#include "worker_process.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct FlushProgress {
    bool bFinished = false;
    // What went wrong, as a sentence like that of UsageError; empty when nothing did.
    std::string ErrorText;
    // What is still to be written, at most: other programs' data may be part of it.
    std::optional<std::uint64_t> RemainingBytes;
    // 0 when unknown.
    std::uint64_t BytesPerSecond = 0;
};

// The directories whose file systems are to be flushed when the plan has been carried out: all that
// it writes to or, for Auto, those that can be unplugged or are reached over a network. They need
// not exist yet.
std::vector<std::filesystem::path> DirectoriesToFlush(const TarvaneTransferPlan& Plan,
                                                      FlushChoice Choice);

// Flushes file systems in processes of its own: nothing, not even the end of the program, can
// interrupt a thread that waits for a disk, and a program ends only with all of its threads.
//
// Threads: one at a time.
class Flusher {
public:
    // Opens the file systems of Directories. Comes before the job: the kernel reports a failed
    // write only to those who had the file system open when it failed.
    explicit Flusher(const std::vector<std::filesystem::path>& Directories);
    // Leaves an unfinished flush to the kernel and returns at once.
    ~Flusher() = default;
    Flusher(const Flusher&) = delete;
    Flusher& operator=(const Flusher&) = delete;

    bool HasAnythingToFlush() const { return !Targets.empty(); }

    // Call it once, when the job has succeeded.
    void Start();

    // How far the flush is. Never waits; after the end it goes on reporting the end.
    FlushProgress Poll();

private:
    struct Target {
        std::filesystem::path Directory;
        // None when the directory must not be opened.
        OwnedDescriptor Opened;
        // Empty when no block device holds the directory.
        std::filesystem::path DeviceDirectory;
        std::uint64_t WrittenBytesAtStart = 0;
        // Flushes it; none before and after.
        std::optional<WorkerProcess> Process;
    };
    using Clock = std::chrono::steady_clock;

    void NoteEnds();
    void NoteError(const Target& Flushed, const std::string& Reason);
    std::uint64_t WrittenBytes(std::uint64_t PendingBytes) const;
    std::uint64_t SampleRate(std::uint64_t Written);

    std::deque<Target> Targets;
    std::string ErrorText;
    std::uint64_t PendingBytesAtStart = 0;
    // Bytes written since the start, oldest first.
    std::deque<std::pair<Clock::time_point, std::uint64_t>> Samples;
};
