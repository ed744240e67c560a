#include "progress_texts.h"

#include "number_text.h"
#include "size_text.h"

namespace {

void AppendField(std::string& Line, const std::string& Field) {
    if (!Field.empty()) {
        Line += " | " + Field;
    }
}

// ", 6.7 GB, in 03:12 (35.7 MB/s)".
std::string SizeAndTime(const TransferCounts& Counts) {
    const bool bHasRate = Counts.Seconds >= 1.0 && Counts.Bytes > 0;
    std::string text = Counts.Bytes > 0 ? ", " + SizeText(Counts.Bytes) : "";
    if (Counts.Seconds >= 1.0) {
        text += ", in " + DurationText(Counts.Seconds);
    }
    if (bHasRate) {
        const double rate = static_cast<double>(Counts.Bytes) / Counts.Seconds;
        text += " (" + SizeText(static_cast<std::uint64_t>(rate)) + "/s)";
    }
    return text;
}

} // namespace

std::string CountsText(const TransferCounts& Counts, bool bMove) {
    std::string names;
    AppendCount(names, Counts.Skipped, "skipped");
    AppendCount(names, Counts.Replaced, "replaced");
    AppendCount(names, Counts.Renamed, "renamed");
    if (Counts.Entries == 0) {
        return std::string("Nothing ") + (bMove ? "moved" : "copied") + names + ".";
    }
    return (bMove ? "Moved " : "Copied ") + EntriesText(Counts.Entries) + SizeAndTime(Counts) +
           names + ".";
}

std::string JobText(const TarvaneTransferUiSnapshot& Snapshot, const ProgressClaims& Claims) {
    if (Snapshot.TotalItems == 0) {
        return Snapshot.StageText;
    }
    std::string line = Snapshot.OverallText;
    AppendField(line, Snapshot.IoText);
    AppendField(line, StalledText(Claims));
    AppendField(line, WrongTotalsText(Claims));
    if (Snapshot.bCancelRequested) {
        AppendField(line, Snapshot.HintText);
    }
    return line;
}

std::string StalledText(const ProgressClaims& Claims) {
    if (Claims.StalledSeconds == 0) {
        return {};
    }
    return "Stalled: nothing copied for " + std::to_string(Claims.StalledSeconds) + " s.";
}

std::string WrongTotalsText(const ProgressClaims& Claims) {
    std::string text;
    if (Claims.bMoreThanCounted) {
        text = "More was copied than was counted, so the totals are too low.";
    }
    if (Claims.bLessThanCounted) {
        text += text.empty() ? "" : " ";
        text += "Less was copied than was counted: a file is shorter now.";
    }
    return text;
}

std::string PreflightText(std::uint64_t EntriesSeen) {
    return "Looking through the sources: " + EntriesText(EntriesSeen) + ".";
}

std::string FinishText(const FinishProgress& Progress) {
    return "Setting modes and dates: " + NumberText(Progress.Done) + " of " +
           EntriesText(Progress.Total) + ".";
}

std::string FlushText(const FlushProgress& Progress) {
    std::string text = "Writing to the disk: ";
    text += Progress.RemainingBytes ? "at most " + SizeText(*Progress.RemainingBytes) + " left"
                                    : "waiting";
    if (Progress.BytesPerSecond > 0) {
        text += " | Rate " + SizeText(Progress.BytesPerSecond) + "/s";
    }
    return text;
}
