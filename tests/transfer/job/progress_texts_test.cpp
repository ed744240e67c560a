#include "progress_texts.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr bool kMove = true;
constexpr bool kCopy = false;

class ProgressLineTest : public testing::Test {
protected:
    ProgressLineTest() {
        Snapshot.StageText = "Stage: Copying | Copying items";
        Snapshot.OverallText = "Overall 1.5 GB / 12.0 GB | Items 3 / 12";
        Snapshot.IoText = "Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52";
        Snapshot.HintText = "Press Esc to cancel.";
        Snapshot.TotalItems = 12;
    }

    TarvaneTransferUiSnapshot Snapshot;
    ProgressClaims Claims;
};

TEST_F(ProgressLineTest, HoldsTheOverallAndTheRateTextUnchanged) {
    EXPECT_EQ(JobText(Snapshot, Claims),
              "Overall 1.5 GB / 12.0 GB | Items 3 / 12 | Rate 6.0 MB/s | Spent 04:16 | "
              "Remaining 29:52");
}

TEST_F(ProgressLineTest, IsTheStageWhileNothingIsCounted) {
    Snapshot.TotalItems = 0;
    Snapshot.StageText = "Stage: Preparing | Scanning transfer contents";
    EXPECT_EQ(JobText(Snapshot, Claims), "Stage: Preparing | Scanning transfer contents");
}

TEST_F(ProgressLineTest, SaysThatTheCopyIsStalled) {
    Claims.StalledSeconds = 12;
    EXPECT_EQ(JobText(Snapshot, Claims),
              "Overall 1.5 GB / 12.0 GB | Items 3 / 12 | Rate 6.0 MB/s | Spent 04:16 | "
              "Remaining 29:52 | Stalled: nothing copied for 12 s.");
}

TEST_F(ProgressLineTest, SaysThatMoreWasCopiedThanCounted) {
    Claims.bMoreThanCounted = true;
    EXPECT_EQ(JobText(Snapshot, Claims),
              "Overall 1.5 GB / 12.0 GB | Items 3 / 12 | Rate 6.0 MB/s | Spent 04:16 | "
              "Remaining 29:52 | More was copied than was counted, so the totals are too low.");
}

TEST_F(ProgressLineTest, HoldsTheHintOnceACancelIsRequested) {
    Snapshot.bCancelRequested = true;
    Snapshot.HintText = "Canceling transfer.";
    EXPECT_EQ(JobText(Snapshot, Claims),
              "Overall 1.5 GB / 12.0 GB | Items 3 / 12 | Rate 6.0 MB/s | Spent 04:16 | "
              "Remaining 29:52 | Canceling transfer.");
}

TEST(PreflightText, CountsEntriesInWords) {
    EXPECT_EQ(PreflightText(0), "Looking through the sources: 0 entries.");
    EXPECT_EQ(PreflightText(1), "Looking through the sources: 1 entry.");
    EXPECT_EQ(PreflightText(12345), "Looking through the sources: 12,345 entries.");
}

TEST(CountsText, LeavesOutWhatIsNothing) {
    TransferCounts counts{.Entries = 12345, .Bytes = 7194070221, .Seconds = 192.0};
    EXPECT_EQ(CountsText(counts, kCopy), "Copied 12,345 entries, 6.7 GB, in 03:12 (35.7 MB/s).");
    counts.Skipped = 12;
    counts.Replaced = 3;
    counts.Renamed = 1;
    EXPECT_EQ(CountsText(counts, kCopy),
              "Copied 12,345 entries, 6.7 GB, in 03:12 (35.7 MB/s); 12 skipped, 3 replaced, 1 "
              "renamed.");
    counts.Skipped = counts.Replaced = 0;
    EXPECT_EQ(CountsText(counts, kMove),
              "Moved 12,345 entries, 6.7 GB, in 03:12 (35.7 MB/s); 1 renamed.");
}

TEST(CountsText, MakesUpNoRate) {
    TransferCounts counts{.Entries = 1, .Bytes = 4, .Seconds = 0.999};
    EXPECT_EQ(CountsText(counts, kCopy), "Copied 1 entry, 4 B.");
    counts.Seconds = 1.0;
    EXPECT_EQ(CountsText(counts, kCopy), "Copied 1 entry, 4 B, in 00:01 (4 B/s).");
    counts.Bytes = 0;
    EXPECT_EQ(CountsText(counts, kCopy), "Copied 1 entry, in 00:01.");
}

TEST(CountsText, SaysThatNothingWasDone) {
    EXPECT_EQ(CountsText({}, kCopy), "Nothing copied.");
    EXPECT_EQ(CountsText({.Skipped = 1200}, kMove), "Nothing moved; 1,200 skipped.");
}

TEST(FilePercent, StaysBelowAHundredUntilTheJobHasSucceeded) {
    TarvaneTransferUiSnapshot snapshot;
    snapshot.CurrentFileTotalBytes = 1000;
    snapshot.FileProgress01 = 1.0;
    EXPECT_EQ(FilePercent(snapshot, {}), 99);
    snapshot.bSucceeded = true;
    EXPECT_EQ(FilePercent(snapshot, {}), 100);
}

TEST(FilePercent, IsThatOfTheWholeForWhatHasNoBytes) {
    TarvaneTransferUiSnapshot snapshot;
    snapshot.FileProgress01 = 0.9;
    EXPECT_EQ(FilePercent(snapshot, {.Percent = 42}), 42);
}

class ProgressWatchTest : public testing::Test {
protected:
    // A running copy of 1000 bytes in 10 entries.
    ProgressWatchTest() {
        Snapshot.TotalBytes = 1000;
        Snapshot.TotalItems = 10;
    }

    ProgressClaims ClaimsAt(milliseconds After, bool bWaiting = false) {
        return Watch.Observe(Snapshot, bWaiting, Start + After);
    }

    ProgressWatch::Clock::time_point Start = ProgressWatch::Clock::now();
    TarvaneTransferUiSnapshot Snapshot;
    ProgressWatch Watch;
};

TEST_F(ProgressWatchTest, RoundsThePercentageDown) {
    Snapshot.OverallProgress01 = 0.139;
    EXPECT_EQ(ClaimsAt(seconds(0)).Percent, 13);
}

TEST_F(ProgressWatchTest, Stays99UntilTheJobHasSucceeded) {
    Snapshot.OverallProgress01 = 1.0;
    EXPECT_EQ(ClaimsAt(seconds(0)).Percent, 99);
    Snapshot.bFinished = true;
    Snapshot.bSucceeded = true;
    EXPECT_EQ(ClaimsAt(seconds(1)).Percent, 100);
}

TEST_F(ProgressWatchTest, NeverLetsThePercentageFall) {
    Snapshot.OverallProgress01 = 0.5;
    ClaimsAt(seconds(0));
    Snapshot.OverallProgress01 = 0.2;
    EXPECT_EQ(ClaimsAt(seconds(1)).Percent, 50);
}

TEST_F(ProgressWatchTest, SaysHowFarAJobHasComeThatFailsBetweenTwoLooks) {
    ClaimsAt(seconds(0));
    Snapshot.bFinished = true;
    Snapshot.OverallProgress01 = 0.3;
    EXPECT_EQ(ClaimsAt(seconds(1)).Percent, 30);
    Snapshot.OverallProgress01 = 1.0;
    EXPECT_EQ(ClaimsAt(seconds(2)).Percent, 99);
}

TEST_F(ProgressWatchTest, AddsNothingWhenAJobFailsUncounted) {
    Snapshot.TotalItems = 0;
    Snapshot.bFinished = true;
    Snapshot.OverallProgress01 = 1.0;
    EXPECT_EQ(ClaimsAt(seconds(0)).Percent, 0);
}

TEST_F(ProgressWatchTest, CallsFourSecondsWithoutAnythingAStall) {
    ClaimsAt(seconds(0));
    EXPECT_EQ(ClaimsAt(milliseconds(3999)).StalledSeconds, 0);
    EXPECT_EQ(ClaimsAt(milliseconds(4000)).StalledSeconds, 4);
    EXPECT_EQ(ClaimsAt(milliseconds(12500)).StalledSeconds, 12);
}

TEST_F(ProgressWatchTest, EndsAStallWithTheNextByte) {
    ClaimsAt(seconds(0));
    ClaimsAt(seconds(9));
    Snapshot.DoneBytes = 1;
    EXPECT_EQ(ClaimsAt(seconds(10)).StalledSeconds, 0);
    EXPECT_EQ(ClaimsAt(seconds(13)).StalledSeconds, 0);
    EXPECT_EQ(ClaimsAt(seconds(14)).StalledSeconds, 4);
}

TEST_F(ProgressWatchTest, TakesAnEntryWithoutBytesForProgress) {
    ClaimsAt(seconds(0));
    Snapshot.DoneItems = 1;
    EXPECT_EQ(ClaimsAt(seconds(9)).StalledSeconds, 0);
}

TEST_F(ProgressWatchTest, DoesNotCallTheScanAStall) {
    Snapshot.TotalItems = 0;
    ClaimsAt(seconds(0));
    EXPECT_EQ(ClaimsAt(seconds(9)).StalledSeconds, 0);
    Snapshot.TotalItems = 10;
    EXPECT_EQ(ClaimsAt(seconds(10)).StalledSeconds, 0);
}

TEST_F(ProgressWatchTest, DoesNotCallTheWaitForAnAnswerAStall) {
    ClaimsAt(seconds(0));
    const bool bWaiting = true;
    EXPECT_EQ(ClaimsAt(seconds(9), bWaiting).StalledSeconds, 0);
    EXPECT_EQ(ClaimsAt(seconds(10)).StalledSeconds, 0);
}

TEST_F(ProgressWatchTest, DoesNotCallTheEndAStall) {
    ClaimsAt(seconds(0));
    Snapshot.bFinished = true;
    EXPECT_EQ(ClaimsAt(seconds(9)).StalledSeconds, 0);
}

TEST_F(ProgressWatchTest, NoticesMoreBytesThanCounted) {
    Snapshot.DoneBytes = 1000;
    EXPECT_FALSE(ClaimsAt(seconds(0)).bMoreThanCounted);
    Snapshot.DoneBytes = 1001;
    EXPECT_TRUE(ClaimsAt(seconds(0)).bMoreThanCounted);
}

TEST_F(ProgressWatchTest, NoticesMoreEntriesThanCounted) {
    Snapshot.DoneItems = 11;
    EXPECT_TRUE(ClaimsAt(seconds(0)).bMoreThanCounted);
}

TEST_F(ProgressWatchTest, SaysNothingAboutTotalsThatAreNotCountedYet) {
    Snapshot.TotalItems = 0;
    Snapshot.TotalBytes = 0;
    Snapshot.DoneBytes = 1;
    EXPECT_FALSE(ClaimsAt(seconds(0)).bMoreThanCounted);
}

// A copy that is looked at while a file of 500 bytes is copied, the second of the job.
class ShrinkingFile : public ProgressWatchTest {
protected:
    ShrinkingFile() {
        Snapshot.DoneItems = 1;
        Snapshot.DoneBytes = 100;
        LookAtFile(0);
        LookAtFile(200);
        LookAtFile(300);
    }

    // DoneBytes of the file in sight.
    bool LookAtFile(std::uint64_t DoneBytes) {
        Snapshot.CurrentFileTotalBytes = 500;
        Snapshot.CurrentFileDoneBytes = DoneBytes;
        Snapshot.DoneBytes = 100 + DoneBytes;
        return IsLess();
    }
    // The next entry has no bytes.
    bool LookAtNext(std::uint64_t DoneBytes) {
        Snapshot.CurrentFileTotalBytes = 0;
        Snapshot.CurrentFileDoneBytes = 0;
        ++Snapshot.DoneItems;
        Snapshot.DoneBytes = DoneBytes;
        return IsLess();
    }
    bool IsLess() { return ClaimsAt(seconds(0)).bLessThanCounted; }
};

TEST_F(ShrinkingFile, IsNoticedWhenItIsDone) {
    EXPECT_FALSE(LookAtFile(400));
    EXPECT_TRUE(LookAtNext(599));
    EXPECT_TRUE(LookAtNext(1000));
}

// The engine shows the file as whole before it counts the entry.
TEST_F(ShrinkingFile, IsNoticedAlthoughItIsShownAsWhole) {
    Snapshot.CurrentFileDoneBytes = 500;
    EXPECT_FALSE(IsLess());
    ++Snapshot.DoneItems;
    EXPECT_TRUE(IsLess());
}

TEST_F(ShrinkingFile, IsNoneWhenAllOfItHasCome) {
    EXPECT_FALSE(LookAtNext(600));
    EXPECT_FALSE(LookAtNext(600));
}

TEST_F(ShrinkingFile, IsNoneWhenItHasGrown) {
    EXPECT_FALSE(LookAtFile(600));
    EXPECT_FALSE(LookAtNext(700));
}

// What was counted last before the copy, or a tree that cannot be renamed.
TEST_F(ShrinkingFile, IsNoneBeforeItsFirstByte) {
    LookAtFile(0);
    LookAtFile(0);
    EXPECT_FALSE(LookAtNext(100));
}

// The total may be that of the file before, read just before the next one began.
TEST_F(ShrinkingFile, IsNoneInASingleLook) {
    LookAtNext(600);
    Snapshot.CurrentFileTotalBytes = 400;
    Snapshot.CurrentFileDoneBytes = 10;
    EXPECT_FALSE(IsLess());
    EXPECT_FALSE(LookAtNext(610));
}

TEST(ProgressClaimTexts, AreEmptyWhenThereIsNothingToSay) {
    EXPECT_EQ(StalledText({}), "");
    EXPECT_EQ(WrongTotalsText({}), "");
}

TEST(ProgressClaimTexts, SayInWhichWaysTheTotalsAreWrong) {
    ProgressClaims claims;
    claims.bLessThanCounted = true;
    EXPECT_EQ(WrongTotalsText(claims), "Less was copied than was counted: a file is shorter now.");
    claims.bMoreThanCounted = true;
    EXPECT_EQ(WrongTotalsText(claims),
              "More was copied than was counted, so the totals are too low. Less was copied than "
              "was counted: a file is shorter now.");
}

} // namespace
