// The links to directories that a walk follows, and what lies behind them.

#pragma once

#include "file_identity.h"
#include "preflight_result.h"
#include "space_demand.h"

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>

class FollowedLinks {
public:
    struct Totals {
        std::uint64_t Entries = 0;
        std::uint64_t Bytes = 0;
        SpaceNeed Space;
    };

    // Adds to the findings and totals of Result and to Demand, which must outlive it.
    FollowedLinks(PreflightResult& ResultToFill, SpaceDemand& DemandToFill, bool bMoveSources)
        : Result(ResultToFill), Demand(DemandToFill), bMove(bMoveSources) {}

    // A directory that is removed in its own place, because somebody selected it.
    void AddSelected(const FileIdentity& Directory);
    void AddLink(const std::string& Path, const FileIdentity& Target);

    bool IsKnown(const FileIdentity& Target) const { return Known.contains(Target); }
    // Adds what the target held when it was walked before, for a copy to a new name. Requires: it
    // is known.
    void AddKnown(const FileIdentity& Target, const DestinationFacts& Destination);
    // What is copied so far, for the call after the walk of a target.
    Totals Copied(const DestinationFacts& Destination) const;
    void Remember(const FileIdentity& Target, const DestinationFacts& Destination,
                  const Totals& Before);

    // Whether a link that is followed on a move leads out of everything that was selected.
    bool RemovesUnselected() const;

private:
    PreflightResult& Result;
    SpaceDemand& Demand;
    const bool bMove;
    std::map<FileIdentity, Totals> Known;
    // Only of moves.
    std::set<FileIdentity> Targets;
    // There may be very many; not in order.
    std::deque<FileIdentity> Selected;
};
