// What the load programs have in common: small trees to copy, and what is wrong, printed.

#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tarvanetransfer.h"

inline void WriteFile(const std::filesystem::path& Path, std::size_t Size) {
    std::filesystem::create_directories(Path.parent_path());
    std::ofstream(Path, std::ios::binary) << std::string(Size, 'x');
}

inline TarvaneTransferPlan PlanFor(const std::filesystem::path& Source,
                                   const std::filesystem::path& Destination) {
    TarvaneTransferPlan plan;
    plan.SourceLabel = Source.parent_path();
    plan.Items.resize(1);
    plan.Items[0].Name = Source.filename();
    plan.Items[0].SourcePath = Source;
    plan.Items[0].DestinationPath = Destination;
    return plan;
}

// Counts what was tried and what did not hold, and says of the latter what it was.
//
// Threads: any.
class LoadTally {
public:
    void Try() { ++Tried; }
    void Expect(bool bHolds, const std::string& What) {
        if (!bHolds) {
            ++Wrong;
            std::fprintf(stderr, "Does not hold: %s.\n", What.c_str());
        }
    }

    // "TRIED HELD", which tools/torture reads, and the exit status.
    int Print() const {
        const std::uint64_t held = Tried - std::min<std::uint64_t>(Tried, Wrong);
        std::printf("%llu %llu\n", static_cast<unsigned long long>(Tried),
                    static_cast<unsigned long long>(held));
        return Wrong == 0 ? 0 : 1;
    }

private:
    std::atomic<std::uint64_t> Tried{0};
    std::atomic<std::uint64_t> Wrong{0};
};
