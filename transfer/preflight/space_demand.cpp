#include "space_demand.h"

#include <algorithm>

namespace {

std::uint64_t RoundUp(std::uint64_t Bytes, std::uint64_t BlockBytes) {
    const std::uint64_t rest = Bytes % BlockBytes;
    return rest == 0 ? Bytes : Bytes + (BlockBytes - rest);
}

} // namespace

SpaceNeed SpaceDemand::NeedOf(std::uint64_t FileBytes, std::uint64_t OccupiedBytes,
                              const DestinationFacts& Destination) {
    const std::uint64_t taken = RoundUp(FileBytes, Destination.BlockBytes);
    return {.MostBytes = taken - std::min(taken, OccupiedBytes),
            .LeastBytes =
                static_cast<std::int64_t>(taken) - static_cast<std::int64_t>(OccupiedBytes)};
}

SpaceNeed SpaceDemand::PossibleNeedOf(std::uint64_t FileBytes, std::uint64_t OccupiedBytes,
                                      const DestinationFacts& Destination) {
    SpaceNeed need = NeedOf(FileBytes, OccupiedBytes, Destination);
    need.LeastBytes = std::min<std::int64_t>(need.LeastBytes, 0);
    return need;
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
