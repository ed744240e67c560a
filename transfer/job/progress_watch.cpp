#include "progress_watch.h"

#include <algorithm>

namespace {

constexpr int kStallSeconds = 4;

// Until the job has succeeded, 99 is the most that may be said: rounding, or more bytes than were
// counted, would show a whole that is not there. The engine calls a job whole that has ended before
// anything was counted.
int PercentOf(const TarvaneTransferUiSnapshot& Snapshot) {
    if (Snapshot.bSucceeded) {
        return 100;
    }
    if (Snapshot.TotalItems == 0) {
        return 0;
    }
    return std::clamp(static_cast<int>(Snapshot.OverallProgress01 * 100.0), 0, 99);
}

} // namespace

ProgressClaims ProgressWatch::Observe(const TarvaneTransferUiSnapshot& Snapshot, bool bWaiting,
                                      Clock::time_point Now) {
    ProgressClaims claims;
    Percent = std::max(Percent, PercentOf(Snapshot));
    claims.Percent = Percent;
    claims.StalledSeconds = StalledSeconds(Snapshot, bWaiting, Now);
    claims.bMoreThanCounted =
        Snapshot.TotalItems > 0 &&
        (Snapshot.DoneBytes > Snapshot.TotalBytes || Snapshot.DoneItems > Snapshot.TotalItems);
    return claims;
}

int ProgressWatch::StalledSeconds(const TarvaneTransferUiSnapshot& Snapshot, bool bWaiting,
                                  Clock::time_point Now) {
    // The totals are set when the scan is over and copying starts.
    const bool bCopyingNow = Snapshot.TotalItems > 0 && !Snapshot.bFinished && !bWaiting;
    const bool bAdvanced = Snapshot.DoneBytes != LastBytes || Snapshot.DoneItems != LastItems;
    if (!bCopyingNow || !bCopying || bAdvanced) {
        LastAdvance = Now;
    }
    bCopying = bCopyingNow;
    LastBytes = Snapshot.DoneBytes;
    LastItems = Snapshot.DoneItems;
    const auto still = std::chrono::duration_cast<std::chrono::seconds>(Now - LastAdvance).count();
    return still < kStallSeconds ? 0 : static_cast<int>(still);
}
