// How much a flush may still have to write, as far as the kernel tells an ordinary user.

#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>

// What waits in the page cache is known of the whole machine only, and what has been written of a
// whole device only. So this is what may be left of the job's own bytes by both, and never more
// than before.
//
// Threads: one at a time.
class FlushEstimate {
public:
    struct Remainder {
        // Nothing when there may be none left, although the flush goes on.
        std::optional<std::uint64_t> Bytes;
        // 0 when unknown.
        std::uint64_t BytesPerSecond = 0;
    };

    // Counts what is written to the block device that sysfs describes in DeviceDirectory from now
    // on. Comes before the job, which is written in part while it runs.
    void Watch(const std::filesystem::path& DeviceDirectory);
    // CopiedBytes are the job's.
    void Start(std::uint64_t CopiedBytes);
    // Requires: it has been started.
    Remainder Look();

private:
    using Clock = std::chrono::steady_clock;

    std::uint64_t WrittenBytes() const;
    std::uint64_t SampleRate();

    // By its directory, what each device had written when it was first watched.
    std::map<std::filesystem::path, std::uint64_t> Devices;
    std::uint64_t JobBytes = 0;
    std::uint64_t LeftBytes = 0;
    // Oldest first.
    std::deque<std::pair<Clock::time_point, std::uint64_t>> LeftBefore;
};
