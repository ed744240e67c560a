#include "space_demand.h"

#include <algorithm>
#include <limits>

namespace {

using Limits = std::numeric_limits<std::int64_t>;

std::int64_t Limited(std::uint64_t Bytes) {
    return static_cast<std::int64_t>(std::min(Bytes, std::uint64_t{Limits::max()}));
}

std::int64_t RoundUp(std::uint64_t Bytes, std::uint64_t BlockBytes) {
    const std::uint64_t rest = Bytes % BlockBytes;
    return Limited(rest == 0 ? Bytes : Bytes + (BlockBytes - rest));
}

} // namespace

std::int64_t LimitedSum(std::int64_t First, std::int64_t Second) {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(First, Second, &sum)) {
        sum = First > 0 ? Limits::max() : Limits::min();
    }
    // One that can be negated.
    return std::max(sum, -Limits::max());
}

SpaceNeed SpaceDemand::NeedOf(std::uint64_t FileBytes, NameFate Fate, const DestinationEntry& There,
                              const DestinationFacts& Destination) {
    const bool bMayStayAway = Fate == NameFate::Compared || Fate == NameFate::Asked;
    const bool bInItsPlace = Fate == NameFate::Replaced || bMayStayAway;
    const std::int64_t taken = RoundUp(FileBytes, Destination.BlockBytes);
    const std::int64_t least = taken - Limited(bInItsPlace ? There.OccupiedBytes : 0);
    return {.MostBytes = std::max<std::int64_t>(least, 0),
            .LeastBytes = bMayStayAway ? std::min<std::int64_t>(least, 0) : least};
}

void SpaceDemand::Add(const DestinationFacts& Destination, const SpaceNeed& Need) {
    Demand& demand = Demands[Destination.Device];
    demand.Destination = demand.Destination == nullptr ? &Destination : demand.Destination;
    demand.Need.MostBytes = LimitedSum(demand.Need.MostBytes, Need.MostBytes);
    demand.Need.LeastBytes = LimitedSum(demand.Need.LeastBytes, Need.LeastBytes);
}

SpaceNeed SpaceDemand::Of(const DestinationFacts& Destination) const {
    const auto demand = Demands.find(Destination.Device);
    return demand == Demands.end() ? SpaceNeed() : demand->second.Need;
}

void SpaceDemand::Check(PreflightFindings& OutFindings) const {
    for (const auto& [device, demand] : Demands) {
        const std::optional<std::uint64_t> freeBytes = demand.Destination->FreeBytes;
        if (freeBytes && demand.Need.MostBytes > Limited(*freeBytes)) {
            const bool bCertain = demand.Need.LeastBytes > Limited(*freeBytes);
            const std::int64_t needed = bCertain ? demand.Need.LeastBytes : demand.Need.MostBytes;
            OutFindings.Add({.Kind = PreflightFindingKind::TooLittleSpace,
                             .Path = demand.Destination->Directory,
                             .bStopsJob = bCertain,
                             .NeededBytes = static_cast<std::uint64_t>(needed),
                             .AvailableBytes = *freeBytes});
        }
    }
}
