#include "space_demand.h"

#include <algorithm>

namespace {

std::uint64_t RoundUp(std::uint64_t Bytes, std::uint64_t BlockBytes) {
    const std::uint64_t rest = Bytes % BlockBytes;
    return rest == 0 ? Bytes : Bytes + (BlockBytes - rest);
}

} // namespace

SpaceNeed SpaceDemand::NeedOf(std::uint64_t FileBytes, NameFate Fate, const DestinationEntry& There,
                              const DestinationFacts& Destination) {
    const bool bMayStayAway = Fate == NameFate::Compared || Fate == NameFate::Asked;
    const bool bInItsPlace = Fate == NameFate::Replaced || bMayStayAway;
    const std::uint64_t taken = RoundUp(FileBytes, Destination.BlockBytes);
    const std::uint64_t occupied = bInItsPlace ? There.OccupiedBytes : 0;
    const std::int64_t least =
        static_cast<std::int64_t>(taken) - static_cast<std::int64_t>(occupied);
    return {.MostBytes = taken - std::min(taken, occupied),
            .LeastBytes = bMayStayAway ? std::min<std::int64_t>(least, 0) : least};
}

void SpaceDemand::Add(const DestinationFacts& Destination, const SpaceNeed& Need) {
    Demand& demand = Demands[Destination.Device];
    demand.Destination = demand.Destination == nullptr ? &Destination : demand.Destination;
    demand.Need.MostBytes += Need.MostBytes;
    demand.Need.LeastBytes += Need.LeastBytes;
}

SpaceNeed SpaceDemand::Of(const DestinationFacts& Destination) const {
    const auto demand = Demands.find(Destination.Device);
    return demand == Demands.end() ? SpaceNeed() : demand->second.Need;
}

void SpaceDemand::Check(PreflightFindings& OutFindings) const {
    for (const auto& [device, demand] : Demands) {
        const std::optional<std::uint64_t> freeBytes = demand.Destination->FreeBytes;
        if (freeBytes && demand.Need.MostBytes > *freeBytes) {
            const bool bCertain = demand.Need.LeastBytes > static_cast<std::int64_t>(*freeBytes);
            OutFindings.Add({.Kind = PreflightFindingKind::TooLittleSpace,
                             .Path = demand.Destination->Directory,
                             .bStopsJob = bCertain,
                             .NeededBytes = demand.Need.MostBytes,
                             .AvailableBytes = *freeBytes});
        }
    }
}
