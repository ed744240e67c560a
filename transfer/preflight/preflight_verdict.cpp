#include "preflight_verdict.h"

#include "size_text.h"

#include <cstdint>

namespace {

std::string CountText(std::uint64_t Entries, std::uint64_t Bytes) {
    return std::to_string(Entries) + (Entries == 1 ? " entry, " : " entries, ") +
           SizeTextWithBytes(Bytes);
}

RunOutcome DryRunOutcome(const TransferRequest& Request, const PreflightResult& Result,
                         bool bRefused) {
    std::string text = std::string("Would ") + (Request.bMove ? "move " : "copy ") +
                       CountText(Result.Entries, Result.Bytes) + ".";
    if (Result.CopiedEntries != Result.Entries || Result.CopiedBytes != Result.Bytes) {
        text +=
            " Really to be copied: " + CountText(Result.CopiedEntries, Result.CopiedBytes) + ".";
    }
    if (Result.bCanceled) {
        text += " There is more: the look was ended early.";
    }
    const bool bFails = bRefused || Result.Findings.AnyStopsJob();
    return {.Result = bFails ? RunResult::Failed : RunResult::Succeeded, .Text = text};
}

// Findings that the request has allowed beforehand.
std::uint64_t AllowedFindings(const TransferRequest& Request, const PreflightFindings& Findings) {
    if (!Request.bFollowLinks) {
        return 0;
    }
    return Findings.Count(PreflightFindingKind::LinkToDirectory) +
           Findings.Count(PreflightFindingKind::LinkToDirectoryOnMove);
}

} // namespace

PreflightVerdict JudgePreflight(const TransferRequest& Request, const PreflightResult& Result,
                                bool bCanAsk) {
    const bool bRefused = Result.bRemovesUnselected && !Request.bFollowLinks;
    if (Request.bDryRun) {
        return {.Decision = PreflightVerdict::Kind::Stop,
                .Outcome = DryRunOutcome(Request, Result, bRefused)};
    }
    if (bCanAsk && Result.Findings.Count() > AllowedFindings(Request, Result.Findings)) {
        return {.Decision = PreflightVerdict::Kind::Ask,
                .Question =
                    std::string("Go on with the ") + (Request.bMove ? "move" : "copy") + "?"};
    }
    if (bRefused) {
        return {.Decision = PreflightVerdict::Kind::Stop,
                .Outcome = {.Result = RunResult::Failed,
                            .Text = "the move would remove entries that were not selected; pass "
                                    "--follow-links to allow it"}};
    }
    return {};
}
