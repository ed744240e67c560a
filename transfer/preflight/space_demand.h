// How much room a transfer needs on each file system that it writes to.

#pragma once

#include "destination_facts.h"
#include "preflight_findings.h"
#include "taken_names.h"

#include <cstdint>
#include <map>

struct SpaceNeed {
    // What everything together takes at most.
    std::int64_t MostBytes = 0;
    // What it takes in any case; less than nothing where old files give room.
    std::int64_t LeastBytes = 0;
};

// Without going beyond what a number holds: sparse files can have any size, and links can lead to
// them any number of times.
std::int64_t LimitedSum(std::int64_t First, std::int64_t Second);

class SpaceDemand {
public:
    // Of a file that is copied to where There was seen.
    static SpaceNeed NeedOf(std::uint64_t FileBytes, NameFate Fate, const DestinationEntry& There,
                            const DestinationFacts& Destination);

    // Destination must outlive this.
    void Add(const DestinationFacts& Destination, const SpaceNeed& Need);
    // What is needed on the destination's file system so far.
    SpaceNeed Of(const DestinationFacts& Destination) const;

    // Adds a finding for each file system that has not enough.
    void Check(PreflightFindings& OutFindings) const;

private:
    struct Demand {
        const DestinationFacts* Destination = nullptr;
        SpaceNeed Need;
    };

    // By the device of the file system.
    std::map<std::uint64_t, Demand> Demands;
};
