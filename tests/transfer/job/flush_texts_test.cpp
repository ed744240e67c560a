// What is said of a flush when it is over, or waited for no more.

#include "flush_texts.h"

#include <gtest/gtest.h>

namespace {

TEST(WrittenText, CallsADiskSafeWhoseDeviceWasFlushed) {
    EXPECT_EQ(WrittenText(FlushReach::Device),
              "Everything is written. It is safe to unplug the disk.");
}

TEST(WrittenText, CallsNothingElseSafe) {
    EXPECT_EQ(WrittenText(FlushReach::Server),
              "Everything is written to the server as far as it says.");
    EXPECT_EQ(WrittenText(FlushReach::System), "Everything is written as far as the system says.");
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
