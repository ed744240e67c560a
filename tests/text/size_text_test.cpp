#include "size_text.h"

#include <limits>

#include <gtest/gtest.h>

TEST(SizeText, UsesTheLargestUnitThatTheSizeFills) {
    EXPECT_EQ(SizeText(0), "0 B");
    EXPECT_EQ(SizeText(1023), "1023 B");
    EXPECT_EQ(SizeText(1024), "1.0 KB");
    EXPECT_EQ(SizeText(1536), "1.5 KB");
    EXPECT_EQ(SizeText(48230), "47.1 KB");
    EXPECT_EQ(SizeText(1048576), "1.0 MB");
    EXPECT_EQ(SizeText(12884901888), "12.0 GB");
    EXPECT_EQ(SizeText(1ULL << 40), "1.0 TB");
}

TEST(SizeText, ChoosesTheUnitBeforeRounding) {
    EXPECT_EQ(SizeText(1048575), "1024.0 KB");
}

TEST(SizeText, HasNoUnitAboveTerabytes) {
    EXPECT_EQ(SizeText(1ULL << 50), "1024.0 TB");
    EXPECT_EQ(SizeText(std::numeric_limits<std::uint64_t>::max()), "16777216.0 TB");
}

TEST(SizeText, GivesTheBytesBesideIt) {
    EXPECT_EQ(SizeTextWithBytes(48230), "47.1 KB (48230 bytes)");
    EXPECT_EQ(SizeTextWithBytes(0), "0 B (0 bytes)");
    EXPECT_EQ(SizeTextWithBytes(1), "1 B (1 byte)");
}
