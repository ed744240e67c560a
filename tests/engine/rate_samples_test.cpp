// The samples of done bytes that the rate is computed from: when one is taken, when one is dropped.

#include "clocked_job.h"
#include "job_access.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

using Samples = std::deque<std::pair<std::chrono::steady_clock::time_point, std::uint64_t>>;

class RateSamples : public ClockedJob {
protected:
    Samples Taken() { return PrivateOf<JobMember::ByteSamples>(Job); }
};

TEST_F(RateSamples, NoneIsTakenAtConstruction) {
    EXPECT_EQ(Taken(), Samples());
}

TEST_F(RateSamples, TheFirstBytesTakeOne) {
    AddAfter(3ms, 10);
    EXPECT_EQ(Taken(), (Samples{{Clock.Now(), 10}}));
}

TEST_F(RateSamples, TwoCalls100msApartTakeOne) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(100ms, 10);
    EXPECT_EQ(Taken(), (Samples{{start, 10}}));
}

TEST_F(RateSamples, TwoCalls160msApartTakeTwo) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(160ms, 10);
    EXPECT_EQ(Taken(), (Samples{{start, 10}, {start + 160ms, 20}}));
}

TEST_F(RateSamples, OneNanosecondBelowTheIntervalIsNotDue) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(159'999'999ns, 10);
    EXPECT_EQ(Taken(), (Samples{{start, 10}}));
    AddAfter(1ns, 10);
    EXPECT_EQ(Taken(), (Samples{{start, 10}, {start + 160ms, 30}}));
}

TEST_F(RateSamples, TheIntervalCountsFromTheLastSampleNotFromTheLastCall) {
    const auto start = Clock.Now();
    AddAfter(0ms, 1);
    AddAfter(100ms, 1);
    AddAfter(100ms, 1);
    EXPECT_EQ(Taken(), (Samples{{start, 1}, {start + 200ms, 3}}));
}

TEST_F(RateSamples, AFiveSecondPauseLeavesTheNextSampleOnly) {
    AddAfter(0ms, 10);
    AddAfter(200ms, 10);
    AddAfter(5s, 10);
    EXPECT_EQ(Taken(), (Samples{{Clock.Now(), 30}}));
}

TEST_F(RateSamples, ASampleOfExactlyFourSecondsIsKept) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(4s, 10);
    EXPECT_EQ(Taken(), (Samples{{start, 10}, {start + 4s, 20}}));
}

TEST_F(RateSamples, ASampleOlderThanFourSecondsByANanosecondIsDropped) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(4s + 1ns, 10);
    EXPECT_EQ(Taken(), (Samples{{start + 4s + 1ns, 20}}));
}

TEST_F(RateSamples, OldOnesAreDroppedByACallThatTakesNone) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(3900ms, 10);
    AddAfter(100ms + 1ns, 10);
    EXPECT_EQ(Taken(), (Samples{{start + 3900ms, 20}}));
}

TEST_F(RateSamples, AddBytesDoneOfZeroChangesNothing) {
    AddAfter(0ms, 10);
    Clock.Advance(5s);
    const Samples before = Taken();
    const std::size_t reads = Clock.Reads();
    Job.AddBytesDone(0);
    EXPECT_EQ(Taken(), before);
    EXPECT_EQ(Clock.Reads(), reads);
    EXPECT_EQ(Job.MakeUiSnapshot().DoneBytes, 10u);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileDoneBytes, 10u);
}

TEST_F(RateSamples, StayBoundedHoweverLongTheTransferIs) {
    std::size_t most = 0;
    for (int call = 0; call < 60'000; ++call) {
        AddAfter(1ms, 1);
        most = std::max(most, PrivateOf<JobMember::ByteSamples>(Job).size());
    }
    EXPECT_EQ(most, 26u);
}

TEST_F(RateSamples, FinishSuccessTakesOneWhateverTheInterval) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(1ms, 5);
    Job.FinishSuccess("");
    EXPECT_EQ(Taken(), (Samples{{start, 10}, {start + 1ms, 15}}));
}

TEST_F(RateSamples, FinishFailureTakesOneWhateverTheInterval) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(1ms, 5);
    Job.FinishFailure("");
    EXPECT_EQ(Taken(), (Samples{{start, 10}, {start + 1ms, 15}}));
}

TEST_F(RateSamples, FinishCanceledTakesOneWhateverTheInterval) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    AddAfter(1ms, 5);
    Job.FinishCanceled("");
    EXPECT_EQ(Taken(), (Samples{{start, 10}, {start + 1ms, 15}}));
}

TEST_F(RateSamples, FinishersDropNone) {
    const auto start = Clock.Now();
    AddAfter(0ms, 10);
    Clock.Advance(9s);
    Job.FinishSuccess("");
    Job.FinishFailure("");
    Job.FinishCanceled("");
    const auto end = start + 9s;
    EXPECT_EQ(Taken(), (Samples{{start, 10}, {end, 10}, {end, 10}, {end, 10}}));
}

TEST_F(RateSamples, AFinisherTakesTheFirstOneOfAJobWithoutBytes) {
    Job.FinishSuccess("");
    EXPECT_EQ(Taken(), (Samples{{Clock.Now(), 0}}));
}

} // namespace
