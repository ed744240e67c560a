#include "flush_texts.h"

#include "number_text.h"
#include "plan_sources.h"
#include "quoted.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

std::uint64_t EntriesOf(const RunOutcome& Outcome) {
    return Outcome.Counts.value_or(TransferCounts()).Entries;
}

// Nothing is removed from a disc.
bool RemovesSources(const TarvaneTransferPlan& Plan) {
    return Plan.bMove && !HasOnlyTracks(Plan);
}

// "'/to/a', '/to/b', '/to/c' and 4 more".
std::string DestinationsOf(const TarvaneTransferPlan& Plan) {
    constexpr std::size_t kMostNamed = 3;
    const std::size_t named = std::min(Plan.Items.size(), kMostNamed);
    const std::size_t more = Plan.Items.size() - named;
    std::string list;
    for (std::size_t i = 0; i < named; ++i) {
        const bool bLast = i + 1 == named && more == 0;
        list += i == 0 ? "" : bLast ? " and " : ", ";
        list += Quoted(Plan.Items[i].DestinationPath.native());
    }
    return more == 0 ? list : list + " and " + NumberText(more) + " more";
}

std::string WhatIsWritten(const TarvaneTransferPlan& Plan, const RunOutcome& Outcome) {
    if (Outcome.Result == RunResult::Succeeded) {
        return "Everything is written";
    }
    const std::string done = RemovesSources(Plan) ? "moved before; " : "copied before; ";
    const std::uint64_t entries = EntriesOf(Outcome);
    return EntriesText(entries) + (entries == 1 ? " was " + done + "it is written now"
                                                : " were " + done + "they are written now");
}

} // namespace

std::string WrittenText(FlushReach Reach, const TarvaneTransferPlan& Plan,
                        const RunOutcome& Outcome) {
    const std::string text = WhatIsWritten(Plan, Outcome);
    switch (Reach) {
    case FlushReach::Server:
        return text + " to the server as far as it says.";
    case FlushReach::System:
        return text + " as far as the system says.";
    case FlushReach::Device:
        break;
    }
    return text + ". It is safe to unplug the disk.";
}

std::string LostText(const std::string& ErrorText, const TarvaneTransferPlan& Plan,
                     const RunOutcome& Outcome) {
    if (!RemovesSources(Plan) || EntriesOf(Outcome) == 0) {
        return ErrorText;
    }
    return ErrorText + "; the sources that were moved are gone, and " + DestinationsOf(Plan) +
           " may be incomplete";
}

std::string StillWritingText(FlushReach Reach) {
    if (Reach == FlushReach::Server) {
        return "The copied files stay, but not all of them have reached the server yet.";
    }
    return "The copied files stay, but the system is still writing them. Do not unplug the disk "
           "yet.";
}

std::string LeftFlushText(FlushReach Reach) {
    return StillWritingText(Reach) +
           " Until everything is written, umount says that the target is busy.";
}
