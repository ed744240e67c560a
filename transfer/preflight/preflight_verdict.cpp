#include "preflight_verdict.h"

#include "number_text.h"
#include "size_text.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

std::string CountText(std::uint64_t Entries, std::uint64_t Bytes) {
    if (Entries == 0) {
        return "nothing";
    }
    return EntriesText(Entries) + ", " + SizeTextWithBytes(Bytes);
}

// "; 3 replaced, 2 skipped", without what there is none of.
std::string TakenText(const TakenNameCounts& Taken) {
    std::string text;
    AppendCount(text, Taken.Replaced, "replaced");
    AppendCount(text, Taken.Skipped, "skipped");
    AppendCount(text, Taken.Renamed, "renamed");
    AppendCount(text, Taken.Compared, "compared");
    AppendCount(text, Taken.Asked, "to be asked about");
    AppendCount(text, Taken.Refused, "in the way");
    return text;
}

// Whether the run would not succeed; that of an unreadable directory lacks its contents.
bool WouldFail(const PreflightFindings& Findings) {
    return Findings.AnyStopsJob() || Findings.CountIf(IsUnreadDirectory) > 0;
}

RunOutcome DryRunOutcome(const TransferRequest& Request, const PreflightResult& Result,
                         bool bRefused) {
    // Directories that are there already are not copied.
    const auto without = [](std::uint64_t Merged, std::uint64_t Entries) {
        return Entries - std::min(Entries, Merged);
    };
    const TakenNameCounts& taken = Result.Taken;
    const std::uint64_t entries =
        without(taken.Merged - taken.MergedBehindLinks, Result.Entries - Result.SkippedEntries);
    const std::uint64_t bytes = Result.Bytes - Result.SkippedBytes;
    const std::uint64_t copied = without(taken.Merged, Result.CopiedEntries);
    std::string text = std::string("Would ") + (Request.bMove ? "move " : "copy ") +
                       CountText(entries, bytes) + TakenText(Result.Taken) + ".";
    if (copied != entries || Result.CopiedBytes != bytes) {
        text += " Really to be copied: " + CountText(copied, Result.CopiedBytes) + ".";
    }
    const bool bFails = bRefused || WouldFail(Result.Findings);
    return {.Result = bFails ? RunResult::Failed : RunResult::Succeeded, .Text = text};
}

// Why a run does not begin, in the one sentence that there is or in a count of all.
std::string RefusalText(const PreflightFindings& Findings) {
    const std::uint64_t count = Findings.CountRefusals();
    if (count > 1) {
        return "nothing was touched: " + NumberText(count) + " names are in the way";
    }
    const auto refusal = std::ranges::find_if(Findings.Kept(), IsRefusal, &PreflightFinding::Kind);
    return refusal == Findings.Kept().end() ? std::string() : DescribeFinding(*refusal);
}

RunOutcome Failed(std::string Text) {
    return {.Result = RunResult::Failed, .Text = std::move(Text)};
}

// Findings that nobody has to be asked about: what was named is made, links may be allowed
// beforehand, and who wants no look does not want to hear before the end what cannot be read.
std::uint64_t AllowedFindings(const TransferRequest& Request, const PreflightFindings& Findings) {
    std::uint64_t allowed = Findings.Count(PreflightFindingKind::MadeDirectory);
    if (!Request.bPreflight) {
        allowed += Findings.CountIf(IsUnreadDirectory);
    }
    if (!Request.bFollowLinks) {
        return allowed;
    }
    return allowed + Findings.Count(PreflightFindingKind::LinkToDirectory) +
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
    if (Result.Findings.CountRefusals() > 0) {
        return {.Decision = PreflightVerdict::Kind::Stop,
                .Outcome = Failed(RefusalText(Result.Findings))};
    }
    if (bCanAsk && Result.Findings.Count() > AllowedFindings(Request, Result.Findings)) {
        return {.Decision = PreflightVerdict::Kind::Ask,
                .Question =
                    std::string("Go on with the ") + (Request.bMove ? "move" : "copy") + "?"};
    }
    if (bRefused) {
        return {.Decision = PreflightVerdict::Kind::Stop,
                .Outcome = Failed("the move would remove entries that were not selected; pass "
                                  "--follow-links to allow it")};
    }
    return {};
}
