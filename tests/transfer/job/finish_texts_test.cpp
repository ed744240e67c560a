// What is said when the copies have got their modes, dates and owners, or have not.

#include "finish_texts.h"

#include <gtest/gtest.h>

namespace {

FinishResult NotChanged(std::uint64_t Entries) {
    return {.Failures = Entries,
            .FirstFailure = "cannot set the mode of '/d/x': Input/output error"};
}

TEST(FinishFailureText, IsEmptyWhereAllWentWell) {
    EXPECT_EQ(FinishFailureText({.Finished = 3, .LeftAlone = 1, .bModesLost = true}), "");
}

TEST(FinishFailureText, NamesTheFirstEntryAndCountsTheOthers) {
    EXPECT_EQ(FinishFailureText(NotChanged(1)),
              "cannot set the mode of '/d/x': Input/output error");
    EXPECT_EQ(FinishFailureText(NotChanged(2)),
              "cannot set the mode of '/d/x': Input/output error, and 1 entry more could not be "
              "changed");
    EXPECT_EQ(FinishFailureText(NotChanged(12346)),
              "cannot set the mode of '/d/x': Input/output error, and 12,345 entries more could "
              "not be changed");
}

TEST(FinishFailureText, CountsCopiesOfAnotherLength) {
    EXPECT_EQ(FinishFailureText({.ChangedLength = 1}), "1 copy is not as long as its source was");
    EXPECT_EQ(FinishFailureText({.ChangedLength = 2000}),
              "2,000 copies are not as long as their sources were");
}

TEST(FinishFailureText, SaysAllThatWentWrongInOneSentence) {
    FinishResult result = NotChanged(1);
    result.ChangedLength = 2;
    result.Broken = "Cannot allocate memory";
    EXPECT_EQ(FinishFailureText(result),
              "cannot set all modes and dates: Cannot allocate memory; cannot set the mode of "
              "'/d/x': Input/output error; 2 copies are not as long as their sources were");
}

TEST(FinishRemark, IsEmptyWhereNothingIsWorthSaying) {
    EXPECT_EQ(FinishRemark({.Finished = 3, .ChangedLength = 1, .Failures = 1}), "");
}

TEST(FinishRemark, NamesWhatTheDestinationCannotHold) {
    EXPECT_EQ(FinishRemark({.bModesLost = true}), "The destination does not keep modes.");
    EXPECT_EQ(FinishRemark({.bTimesLost = true}), "The destination does not keep exact dates.");
    EXPECT_EQ(FinishRemark({.bModesLost = true, .bOwnersLost = true}),
              "The destination does not keep modes and owners.");
    EXPECT_EQ(FinishRemark({.bModesLost = true, .bTimesLost = true, .bOwnersLost = true}),
              "The destination does not keep modes, owners and exact dates.");
}

TEST(FinishRemark, CountsWhatStaysPrivate) {
    EXPECT_EQ(FinishRemark({.StayPrivate = 1}),
              "1 entry that came late stays private: only its owner can read it.");
    EXPECT_EQ(FinishRemark({.StayPrivate = 2, .bModesLost = true}),
              "The destination does not keep modes. 2 entries that came late stay private: only "
              "their owner can read them.");
}

TEST(FinishRemark, CountsWhatWasLeftAlone) {
    EXPECT_EQ(FinishRemark({.LeftAlone = 1}),
              "1 entry was left alone: it is gone, or something else stands there now.");
    EXPECT_EQ(FinishRemark({.LeftAlone = 2, .bModesLost = true}),
              "The destination does not keep modes. 2 entries were left alone: they are gone, or "
              "something else stands there now.");
}

TEST(UnreachedText, SaysWhoCanReadWhatIsStillPrivate) {
    const bool bPrivate = true;
    EXPECT_EQ(UnreachedText(0, bPrivate), "");
    EXPECT_EQ(UnreachedText(1, bPrivate),
              "the copy of 1 entry is still private: only its owner can read it");
    EXPECT_EQ(UnreachedText(12345, bPrivate),
              "the copies of 12,345 entries are still private: only their owner can read them");
}

TEST(UnreachedText, CallsNothingPrivateThatNobodyMadeSo) {
    const bool bPrivate = false;
    EXPECT_EQ(UnreachedText(1, bPrivate), "the copy of 1 entry has not got what was to come along");
    EXPECT_EQ(UnreachedText(2, bPrivate),
              "the copies of 2 entries have not got what was to come along");
}

} // namespace
