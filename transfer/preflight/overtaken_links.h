// The links among the sources of a move that lead nowhere by the time it comes to them, because it
// has taken away before what they lead to.

#pragma once

#include "conflict_policy.h"
#include "preflight_result.h"
#include "tarvanetransfer.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <unordered_map>

class OvertakenLinks {
public:
    // Adds to the findings of Result. All of them outlive it.
    OvertakenLinks(PreflightResult& ResultToFill, const TarvaneTransferPlan& PlanOfWalk,
                   const ConflictRules& ChosenRules)
        : Result(ResultToFill), Plan(PlanOfWalk), Rules(ChosenRules) {}

    // The item that the walk is in from now on.
    void EnterItem(const std::filesystem::path& Source) { Item = Source; }
    // A link whose target is copied when the job comes to it; Path begins with that of the item.
    void LookAt(const std::string& Path);

private:
    // The positions of names in one listing.
    using Order = std::unordered_map<std::string, std::size_t>;

    void FindItems();
    // Without links above the entry itself; empty where that is not there.
    std::filesystem::path LocationOf(const std::filesystem::path& Path);
    bool LeavesBefore(const std::filesystem::path& Target, const std::filesystem::path& Link);
    // Whether the choices may skip what is called Inside in Above, because its name is taken.
    bool MayStay(const TarvaneTransferItemPlan& Above, const std::string& Inside) const;
    bool ComesBefore(const std::filesystem::path& First, const std::filesystem::path& Second);
    void ListOrder(const std::filesystem::path& Directory);

    PreflightResult& Result;
    const TarvaneTransferPlan& Plan;
    const ConflictRules& Rules;
    std::filesystem::path Item;
    // By their locations; empty until the first link.
    std::unordered_map<std::string, std::size_t> Items;
    // The latest ones, as many links are in one directory.
    std::filesystem::path KnownParent;
    std::filesystem::path KnownLocation;
    std::filesystem::path Listed;
    Order Positions;
};
