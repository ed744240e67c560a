// Pushes what a finished job has left in the page cache to the disks, so that they can be
// unplugged.

#pragma once

#include "file_system_flush.h"
#include "flush_estimate.h"
#include "tarvanetransfer.h"
#include "transfer_request.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// How far everything has come for certain, when a flush has succeeded; the worst first.
enum class FlushReach {
    // To a server, which may hold it in its own memory.
    Server,
    // Wherever the system keeps it: no block device is known, or it could not be flushed itself.
    System,
    Device,
};

struct FlushProgress {
    bool bFinished = false;
    // What went wrong: a sentence without a capital, a period or a line end; empty when nothing
    // did.
    std::string ErrorText;
    // Final at the end.
    FlushReach Reach = FlushReach::Device;
    // What is still to be written, at most; nothing when that cannot be told any more.
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

    // Call it once, when the job is over. CopiedBytes is what it has copied.
    void Start(std::uint64_t CopiedBytes);

    // How far the flush is. Never waits; after the end it goes on reporting the end.
    FlushProgress Poll();

private:
    struct Target {
        // The directory that existed before the job, and those on its mount that are to be flushed.
        std::vector<std::filesystem::path> Paths;
        std::optional<MountIdentity> Mount;
        OwnedDescriptor Opened;
        // Flushes it; none before and after.
        std::optional<WorkerProcess> Process;
    };

    void NoteEnds();
    void NoteEnd(const Target& Flushed, const std::optional<FlushReply>& End);
    void NoteError(const std::filesystem::path& Directory, const std::string& Reason);

    std::deque<Target> Targets;
    FlushEstimate Estimate;
    FlushReach Reach = FlushReach::Device;
    std::string ErrorText;
};
