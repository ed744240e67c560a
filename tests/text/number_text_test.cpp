#include "number_text.h"

#include <limits>

#include <gtest/gtest.h>

TEST(NumberText, SeparatesThousands) {
    EXPECT_EQ(NumberText(0), "0");
    EXPECT_EQ(NumberText(999), "999");
    EXPECT_EQ(NumberText(1000), "1,000");
    EXPECT_EQ(NumberText(12345), "12,345");
    EXPECT_EQ(NumberText(123456), "123,456");
    EXPECT_EQ(NumberText(std::numeric_limits<std::uint64_t>::max()), "18,446,744,073,709,551,615");
}

TEST(NumberText, CountsEntries) {
    EXPECT_EQ(EntriesText(0), "0 entries");
    EXPECT_EQ(EntriesText(1), "1 entry");
    EXPECT_EQ(EntriesText(12345), "12,345 entries");
}

TEST(NumberText, ListsCountsThatAreNotZero) {
    std::string list;
    AppendCount(list, 0, "skipped");
    EXPECT_EQ(list, "");
    AppendCount(list, 1234, "replaced");
    AppendCount(list, 2, "in the way");
    EXPECT_EQ(list, "; 1,234 replaced, 2 in the way");
}

TEST(NumberText, GivesHoursOnlyToALongTime) {
    EXPECT_EQ(DurationText(0.4), "00:00");
    EXPECT_EQ(DurationText(192.4), "03:12");
    EXPECT_EQ(DurationText(3599.4), "59:59");
    EXPECT_EQ(DurationText(3599.6), "1:00:00");
    EXPECT_EQ(DurationText(100.0 * 3600 + 61), "100:01:01");
}
