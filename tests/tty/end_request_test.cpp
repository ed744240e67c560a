#include "end_request.h"

#include <csignal>

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

const EndRequest::TimePoint kNow = std::chrono::steady_clock::now();

} // namespace

TEST(EndRequest, AsksForNothingAtFirst) {
    const EndRequest request;
    EXPECT_FALSE(request.IsAsked());
    EXPECT_FALSE(request.MustLeave(kNow));
}

TEST(EndRequest, CancelsAtTheFirstInterrupt) {
    EndRequest request;
    request.Interrupt();
    EXPECT_TRUE(request.IsAsked());
    EXPECT_FALSE(request.MustLeave(kNow + std::chrono::hours(1)));
    EXPECT_EQ(request.Signal(), SIGINT);
}

TEST(EndRequest, LeavesAtTheSecondInterrupt) {
    EndRequest request;
    request.Interrupt();
    request.Interrupt();
    EXPECT_TRUE(request.MustLeave(kNow));
    EXPECT_EQ(request.Signal(), SIGINT);
}

TEST(EndRequest, CancelsOnceMoreWhenTheFirstInterruptIsFulfilled) {
    EndRequest request;
    request.Interrupt();
    request.FulfillInterrupt();
    EXPECT_FALSE(request.IsAsked());
    request.Interrupt();
    EXPECT_TRUE(request.IsAsked());
    EXPECT_FALSE(request.MustLeave(kNow));
}

TEST(EndRequest, HasNoOtherRequestFulfilled) {
    EndRequest request;
    request.Terminate(SIGTERM, kNow);
    request.FulfillInterrupt();
    EXPECT_TRUE(request.IsAsked());
    EXPECT_EQ(request.Signal(), SIGTERM);
}

TEST(EndRequest, LeavesTwoSecondsForTheCleanUpAfterATerminatingSignal) {
    EndRequest request;
    request.Terminate(SIGTERM, kNow);
    EXPECT_TRUE(request.IsAsked());
    EXPECT_FALSE(request.MustLeave(kNow + milliseconds(1999)));
    EXPECT_TRUE(request.MustLeave(kNow + milliseconds(2000)));
    EXPECT_EQ(request.Signal(), SIGTERM);
}

TEST(EndRequest, DoesNotWaitLongerForASecondTerminatingSignal) {
    EndRequest request;
    request.Terminate(SIGHUP, kNow);
    request.Terminate(SIGTERM, kNow + milliseconds(1500));
    EXPECT_TRUE(request.MustLeave(kNow + milliseconds(2000)));
}

TEST(EndRequest, EndsWithTheTerminatingSignalAfterAnInterrupt) {
    EndRequest request;
    request.Interrupt();
    request.Terminate(SIGHUP, kNow);
    EXPECT_EQ(request.Signal(), SIGHUP);
}

TEST(EndRequest, LeavesAtAnInterruptAfterATerminatingSignal) {
    EndRequest request;
    request.Terminate(SIGTERM, kNow);
    request.Interrupt();
    EXPECT_TRUE(request.MustLeave(kNow));
    EXPECT_EQ(request.Signal(), SIGTERM);
}

TEST(EndRequest, LeavesAtOnceWhenItIsToQuit) {
    EndRequest request;
    request.Quit(SIGQUIT);
    EXPECT_TRUE(request.MustLeave(kNow));
    EXPECT_EQ(request.Signal(), SIGQUIT);
}
