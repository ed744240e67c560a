#include "flush_estimate.h"

#include "block_device.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds kRateWindow(3);
constexpr std::chrono::milliseconds kShortestRateWindow(500);

std::uint64_t Difference(std::uint64_t From, std::uint64_t Part) {
    return From - std::min(From, Part);
}

// What waits in the page cache for any disk; no limit where the kernel does not tell.
std::uint64_t PendingBytes() {
    std::ifstream table("/proc/meminfo");
    std::optional<std::uint64_t> bytes;
    std::string name;
    std::uint64_t kilobytes = 0;
    for (std::string rest; table >> name >> kilobytes; std::getline(table, rest)) {
        if (name == "Dirty:" || name == "Writeback:") {
            bytes = bytes.value_or(0) + kilobytes * 1024;
        }
    }
    return bytes.value_or(std::numeric_limits<std::uint64_t>::max());
}

} // namespace

void FlushEstimate::Watch(const fs::path& DeviceDirectory) {
    if (const std::optional<std::uint64_t> written = BytesWrittenTo(DeviceDirectory)) {
        Devices.emplace(DeviceDirectory, *written);
    }
}

void FlushEstimate::Start(std::uint64_t CopiedBytes) {
    JobBytes = CopiedBytes;
    LeftBytes = CopiedBytes;
}

FlushEstimate::Remainder FlushEstimate::Look() {
    LeftBytes = std::min({LeftBytes, PendingBytes(), Difference(JobBytes, WrittenBytes())});
    Remainder remainder;
    remainder.BytesPerSecond = SampleRate();
    if (LeftBytes > 0) {
        remainder.Bytes = LeftBytes;
    }
    return remainder;
}

std::uint64_t FlushEstimate::WrittenBytes() const {
    std::uint64_t written = 0;
    for (const auto& [directory, before] : Devices) {
        written += Difference(BytesWrittenTo(directory).value_or(before), before);
    }
    return written;
}

std::uint64_t FlushEstimate::SampleRate() {
    const Clock::time_point now = Clock::now();
    LeftBefore.emplace_back(now, LeftBytes);
    while (LeftBefore.front().first < now - kRateWindow) {
        LeftBefore.pop_front();
    }
    const auto [since, left] = LeftBefore.front();
    if (now - since < kShortestRateWindow) {
        return 0;
    }
    const std::chrono::duration<double> seconds = now - since;
    return static_cast<std::uint64_t>(static_cast<double>(left - LeftBytes) / seconds.count());
}
