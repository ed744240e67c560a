#include "conflict_tally.h"

#include <utility>

using Action = TarvaneTransferConflictAction;
using Kind = TarvaneTransferConflictKind;

namespace {

ConflictOutcome OutcomeOf(const AnsweredConflict& Answered, const ItemCounters& After) {
    if (After.Done == Answered.Before.Done) {
        return ConflictOutcome::Unfinished;
    }
    // The engine may have skipped names in the directory by itself.
    if (Answered.Action == Action::Merge) {
        return Answered.Conflict.bDestinationDirectory ? ConflictOutcome::Merged
                                                       : ConflictOutcome::Replaced;
    }
    if (After.Skipped > Answered.Before.Skipped) {
        return ConflictOutcome::Skipped;
    }
    return Answered.Action == Action::Rename ? ConflictOutcome::Renamed : ConflictOutcome::Replaced;
}

bool IsSizedFile(const TarvaneTransferConflict& Conflict) {
    return Conflict.Kind == Kind::File && Conflict.bSourceHasSize;
}

} // namespace

std::optional<SettledConflict> ConflictTally::Add(const AnsweredConflict& Answered) {
    std::optional<SettledConflict> settled = Settle(Answered.Before);
    Last = Answered;
    return settled;
}

std::optional<SettledConflict> ConflictTally::Finish(const ItemCounters& Final) {
    return Settle(Final);
}

std::optional<SettledConflict> ConflictTally::Settle(const ItemCounters& Now) {
    if (!Last) {
        return std::nullopt;
    }
    const ConflictOutcome outcome = OutcomeOf(*Last, Now);
    ReplacedNames += outcome == ConflictOutcome::Replaced ? 1 : 0;
    RenamedNames += outcome == ConflictOutcome::Renamed ? 1 : 0;
    MergedNames += outcome == ConflictOutcome::Merged ? 1 : 0;
    const bool bSkipped = outcome == ConflictOutcome::Skipped;
    bSkippedOthers = bSkippedOthers || (bSkipped && !IsSizedFile(Last->Conflict));
    return SettledConflict{*std::exchange(Last, std::nullopt), outcome};
}
