#include "preflight_findings.h"

#include <numeric>
#include <utility>

namespace {

std::size_t IndexOf(PreflightFindingKind Kind) {
    return static_cast<std::size_t>(Kind);
}

} // namespace

void PreflightFindings::Add(PreflightFinding Finding) {
    if (Scope == PreflightScope::GuardsOnly && !IsGuard(Finding.Kind)) {
        return;
    }
    All.bAnyStopsJob = All.bAnyStopsJob || Finding.bStopsJob;
    if (All.Counts.at(IndexOf(Finding.Kind))++ < kKeptPerKind) {
        KeptFindings.push_back(std::move(Finding));
    }
}

void PreflightFindings::AddStop(PreflightFindingKind Kind, const std::filesystem::path& Path,
                                const std::string& Reason) {
    Add({.Kind = Kind, .Path = Path, .bStopsJob = true, .Reason = Reason});
}

std::uint64_t PreflightFindings::Count(PreflightFindingKind Kind) const {
    return All.Counts.at(IndexOf(Kind));
}

std::uint64_t PreflightFindings::Count() const {
    return std::accumulate(All.Counts.begin(), All.Counts.end(), std::uint64_t{0});
}

std::uint64_t PreflightFindings::CountIf(bool (*Belongs)(PreflightFindingKind)) const {
    std::uint64_t count = 0;
    for (std::size_t kind = 0; kind < kPreflightFindingKinds; ++kind) {
        count += Belongs(static_cast<PreflightFindingKind>(kind)) ? All.Counts.at(kind) : 0;
    }
    return count;
}
