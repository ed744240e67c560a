#include "look_step.h"

#include "preflight_findings.h"

namespace {

PreflightScope ScopeOf(const TransferRequest& Request, bool bWantsTotals) {
    if (Request.bDryRun) {
        return PreflightScope::Everything;
    }
    if (!Request.bPreflight) {
        return PreflightScope::GuardsOnly;
    }
    return bWantsTotals ? PreflightScope::Everything : PreflightScope::Findings;
}

UnreadDirectories UnreadIn(const PreflightFindings& Findings) {
    UnreadDirectories unread{.Count = Findings.CountIf(IsUnreadDirectory)};
    for (const PreflightFinding& finding : Findings.Kept()) {
        if (IsUnreadDirectory(finding.Kind)) {
            unread.First.push_back(finding.Path);
        }
    }
    return unread;
}

} // namespace

RunOutcome CanceledBeforehand(std::optional<int> EndSignal) {
    return {.Result = RunResult::Canceled,
            .Text = "Canceled before anything was touched.",
            .EndSignal = EndSignal};
}

LookStep::LookStep(const TransferRequest& RequestOfRun, const TarvaneTransferPlan& Plan,
                   const KnownDiscs& Discs, bool bWantsTotals, StatusRecord* Record)
    : Request(RequestOfRun), Look({.Plan = Plan,
                                   .Rules = RulesOf(Request),
                                   .Scope = ScopeOf(Request, bWantsTotals),
                                   .Discs = Discs,
                                   .Record = Record}) {}

const PreflightResult* LookStep::Result() const {
    return Look.Failure().empty() ? &Look.Result() : nullptr;
}

PreflightVerdict LookStep::Judge(bool bCanAsk) const {
    if (const PreflightResult* const result = Result()) {
        return JudgePreflight(Request, *result, bCanAsk);
    }
    return {.Decision = PreflightVerdict::Kind::Stop,
            .Outcome = {.Result = RunResult::Failed,
                        .Text = "cannot look through the sources: " + Look.Failure()}};
}

FoundBeforehand LookStep::Found() const {
    const PreflightResult* const result = Result();
    if (result == nullptr) {
        return {};
    }
    FoundBeforehand found{.Unread = UnreadIn(result->Findings)};
    if (result->bTakesOnlyFiles) {
        found.TakenFiles = result->Taken.Replaced + result->Taken.Skipped;
    }
    return found;
}
