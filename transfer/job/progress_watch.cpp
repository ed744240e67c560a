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

// Nothing before the first byte: until then the counters may be those of a tree that is to be
// renamed, or of what was counted last.
std::uint64_t BytesLeftOf(const TarvaneTransferUiSnapshot& Snapshot) {
    const bool bAtWork = Snapshot.CurrentFileDoneBytes > 0 &&
                         Snapshot.CurrentFileDoneBytes < Snapshot.CurrentFileTotalBytes;
    return bAtWork ? Snapshot.CurrentFileTotalBytes - Snapshot.CurrentFileDoneBytes : 0;
}

} // namespace

int FilePercent(const TarvaneTransferUiSnapshot& Snapshot, const ProgressClaims& Claims) {
    const auto percent = static_cast<int>(Snapshot.FileProgress01 * 100.0);
    return Snapshot.CurrentFileTotalBytes > 0
               ? std::clamp(percent, 0, Snapshot.bSucceeded ? 100 : 99)
               : std::clamp(percent, 0, Claims.Percent);
}

ProgressClaims ProgressWatch::Observe(const TarvaneTransferUiSnapshot& Snapshot, bool bWaiting,
                                      Clock::time_point Now) {
    ProgressClaims claims;
    Percent = std::max(Percent, PercentOf(Snapshot));
    claims.Percent = Percent;
    claims.StalledSeconds = StalledSeconds(Snapshot, bWaiting, Now);
    claims.bMoreThanCounted =
        Snapshot.TotalItems > 0 &&
        (Snapshot.DoneBytes > Snapshot.TotalBytes || Snapshot.DoneItems > Snapshot.TotalItems);
    bLess = bLess || IsLessThanCounted(Snapshot);
    claims.bLessThanCounted = bLess;
    return claims;
}

// The entry is counted after its bytes, and a snapshot reads the entries first. So once an entry
// more is done, all bytes of the file are there, whatever others have been added to them.
bool ProgressWatch::IsLessThanCounted(const TarvaneTransferUiSnapshot& Snapshot) {
    const FileAtWork now = {.ItemsBefore = Snapshot.DoneItems,
                            .TotalBytes = Snapshot.CurrentFileTotalBytes,
                            .BytesLeft = BytesLeftOf(Snapshot),
                            .DoneBytes = Snapshot.DoneBytes};
    if (Seen.ItemsBefore == now.ItemsBefore && Seen.TotalBytes == now.TotalBytes) {
        Confirmed = Seen;
    }
    Seen = now;
    const bool bFileIsDone = Snapshot.DoneItems > Confirmed.ItemsBefore;
    return bFileIsDone && Snapshot.DoneBytes - Confirmed.DoneBytes < Confirmed.BytesLeft;
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
