// Failures as bytes and back.

#include "entry_failures.h"

#include <gtest/gtest.h>

namespace {

EntryFailures SomeFailures(int Count) {
    EntryFailures failures;
    for (int i = 0; i < Count; ++i) {
        failures.Add({"cannot \xff\n" + std::to_string(i), i});
    }
    return failures;
}

} // namespace

TEST(EntryFailures, PassAsTheyAre) {
    for (const int count : {0, 1, 10}) {
        const auto read = FailuresFrom(ReplyFrom(SomeFailures(count)));
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->Count, static_cast<std::uint64_t>(count));
        ASSERT_EQ(read->First.size(), static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            const EntryFailure& failure = read->First[static_cast<std::size_t>(i)];
            EXPECT_EQ(failure.What, "cannot \xff\n" + std::to_string(i));
            EXPECT_EQ(failure.Error, i);
        }
    }
}

TEST(EntryFailures, AreCountedBeyondTheFirst) {
    const EntryFailures many = SomeFailures(1000);
    EXPECT_FALSE(many.HasRoom());
    const auto read = FailuresFrom(ReplyFrom(many));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->Count, 1000U);
    ASSERT_EQ(read->First.size(), 10U);
    EXPECT_EQ(read->First.back().Error, 9);
}

TEST(EntryFailures, AreNothingWhenTheReplyIsCutAnywhere) {
    const std::string whole = ReplyFrom(SomeFailures(11));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(FailuresFrom(whole.substr(0, length)).has_value()) << length;
    }
}

TEST(EntryFailures, AreNothingWhenThereIsMoreThanTheReplySays) {
    for (const int count : {0, 1, 11}) {
        EXPECT_FALSE(FailuresFrom(ReplyFrom(SomeFailures(count)) + '\0').has_value()) << count;
    }
}
