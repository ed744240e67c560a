// What is said of a flush when it is over, or waited for no more.

#include "flush_texts.h"

#include "transfer_fixture.h"

#include <gtest/gtest.h>

namespace {

RunOutcome Ended(RunResult Result, std::uint64_t Entries) {
    return {.Result = Result, .Counts = TransferCounts{.Entries = Entries}};
}

const RunOutcome kDone = Ended(RunResult::Succeeded, 2);
const TarvaneTransferPlan kCopyPlan = PlanOf(false, {{"/s/a", "/d/a"}, {"/s/b", "/d/b"}});
const TarvaneTransferPlan kMovePlan = PlanOf(true, {{"/s/a", "/d/a"}, {"/s/b", "/d/b"}});
const TarvaneTransferPlan kTrackMove = PlanOf(true, {{"cdda:/dev/sr0/1", "/d/track"}});

TEST(WrittenText, CallsADiskSafeWhoseDeviceWasFlushed) {
    EXPECT_EQ(WrittenText(FlushReach::Device, kCopyPlan, kDone),
              "Everything is written. It is safe to unplug the disk.");
}

TEST(WrittenText, CallsNothingElseSafe) {
    EXPECT_EQ(WrittenText(FlushReach::Server, kCopyPlan, kDone),
              "Everything is written to the server as far as it says.");
    EXPECT_EQ(WrittenText(FlushReach::System, kCopyPlan, kDone),
              "Everything is written as far as the system says.");
}

TEST(WrittenText, CountsWhatWasDoneBeforeTheEnd) {
    EXPECT_EQ(
        WrittenText(FlushReach::Device, kMovePlan, Ended(RunResult::Failed, 12345)),
        "12,345 entries were moved before; they are written now. It is safe to unplug the disk.");
    EXPECT_EQ(WrittenText(FlushReach::Device, kCopyPlan, Ended(RunResult::Canceled, 1)),
              "1 entry was copied before; it is written now. It is safe to unplug the disk.");
    EXPECT_EQ(WrittenText(FlushReach::Server, kMovePlan, Ended(RunResult::Canceled, 3)),
              "3 entries were moved before; they are written now to the server as far as it says.");
}

TEST(WrittenText, TakesNoTrackForMoved) {
    EXPECT_EQ(WrittenText(FlushReach::System, kTrackMove, Ended(RunResult::Failed, 1)),
              "1 entry was copied before; it is written now as far as the system says.");
}

TEST(LostText, SaysOfAMoveWhatIsGoneAndWhatMayBeIncomplete) {
    EXPECT_EQ(LostText("no", kMovePlan, kDone),
              "no; the sources that were moved are gone, and '/d/a' and '/d/b' may be incomplete");
}

TEST(LostText, NamesOnlyTheFirstOfMany) {
    const TarvaneTransferPlan move =
        PlanOf(true, {{"/s/a", "/d/a"}, {"/s/b", "/d/b"}, {"/s/c", "/d/c"}, {"/s/d", "/d/d"}});
    EXPECT_EQ(LostText("no", move, kDone), "no; the sources that were moved are gone, and '/d/a', "
                                           "'/d/b', '/d/c' and 1 more may be incomplete");
}

TEST(LostText, AddsNothingWhereTheSourcesAreThere) {
    EXPECT_EQ(LostText("no", kCopyPlan, kDone), "no");
    EXPECT_EQ(LostText("no", kTrackMove, kDone), "no");
    EXPECT_EQ(LostText("no", kMovePlan, Ended(RunResult::Succeeded, 0)), "no");
}

TEST(StillWritingText, WarnsOfADiskAndOfAServer) {
    EXPECT_EQ(StillWritingText(FlushReach::Device),
              "The copied files stay, but the system is still writing them. Do not unplug the disk "
              "yet.");
    EXPECT_EQ(StillWritingText(FlushReach::Server),
              "The copied files stay, but not all of them have reached the server yet.");
}

TEST(LeftFlushText, SaysWhyUmountRefuses) {
    EXPECT_EQ(LeftFlushText(FlushReach::Device),
              "The copied files stay, but the system is still writing them. Do not unplug the disk "
              "yet. Until everything is written, umount says that the target is busy.");
}

} // namespace
