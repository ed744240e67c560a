// What became of taken names, told from the counters that the desk has written down.

#include "conflict_tally.h"

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;
using Kind = TarvaneTransferConflictKind;

AnsweredConflict AnsweredWith(Action Answer, ItemCounters Before = {}) {
    AnsweredConflict answered;
    answered.Conflict.SourcePath = "/from/a";
    answered.Conflict.bSourceHasSize = true;
    answered.Action = Answer;
    answered.Before = Before;
    return answered;
}

AnsweredConflict DirectoryAnsweredWith(Action Answer) {
    AnsweredConflict answered = AnsweredWith(Answer);
    answered.Conflict.Kind = Kind::Directory;
    answered.Conflict.bDestinationDirectory = true;
    answered.Conflict.bSourceHasSize = false;
    return answered;
}

constexpr ItemCounters kOneMore{.Done = 1, .Skipped = 0};
constexpr ItemCounters kOneSkipped{.Done = 1, .Skipped = 1};

// Of the only taken name of a job.
ConflictOutcome OutcomeOf(const AnsweredConflict& Answered, const ItemCounters& Final) {
    ConflictTally tally;
    EXPECT_FALSE(tally.Add(Answered));
    const std::optional<SettledConflict> settled = tally.Finish(Final);
    EXPECT_FALSE(tally.Finish(Final)) << "it is settled once";
    return settled ? settled->Outcome : throw std::logic_error("nothing is settled");
}

TEST(ConflictTally, TellsAnOverwrittenNameFromOneThatWasSkipped) {
    EXPECT_EQ(OutcomeOf(AnsweredWith(Action::Overwrite), kOneMore), ConflictOutcome::Replaced);
    EXPECT_EQ(OutcomeOf(AnsweredWith(Action::Skip), kOneSkipped), ConflictOutcome::Skipped);
    EXPECT_EQ(OutcomeOf(AnsweredWith(Action::Rename), kOneMore), ConflictOutcome::Renamed);
}

TEST(ConflictTally, TellsWhatACompareHasFound) {
    const AnsweredConflict compared = AnsweredWith(Action::CompareByContent);
    EXPECT_EQ(OutcomeOf(compared, kOneMore), ConflictOutcome::Replaced);
    EXPECT_EQ(OutcomeOf(compared, kOneSkipped), ConflictOutcome::Skipped);
}

TEST(ConflictTally, CallsAFileThatMadeRoomForADirectoryReplaced) {
    AnsweredConflict merged = DirectoryAnsweredWith(Action::Merge);
    EXPECT_EQ(OutcomeOf(merged, kOneMore), ConflictOutcome::Merged);
    merged.Conflict.bDestinationDirectory = false;
    EXPECT_EQ(OutcomeOf(merged, kOneMore), ConflictOutcome::Replaced);
}

TEST(ConflictTally, CallsADirectoryMergedThoughNamesInItWereSkippedUnheard) {
    EXPECT_EQ(OutcomeOf(DirectoryAnsweredWith(Action::Merge), {.Done = 3, .Skipped = 2}),
              ConflictOutcome::Merged);
}

TEST(ConflictTally, ClaimsNothingAboutANameThatTheJobEndedAt) {
    EXPECT_EQ(OutcomeOf(AnsweredWith(Action::Overwrite, {5, 2}), {5, 2}),
              ConflictOutcome::Unfinished);
    EXPECT_EQ(OutcomeOf(AnsweredWith(Action::Cancel), {}), ConflictOutcome::Unfinished);
}

TEST(ConflictTally, SettlesANameWithTheNextAndCountsAll) {
    ConflictTally tally;
    EXPECT_FALSE(tally.Add(AnsweredWith(Action::Overwrite, {.Done = 3, .Skipped = 1})));
    AnsweredConflict second = AnsweredWith(Action::Rename, {.Done = 9, .Skipped = 1});
    second.RenamePath = "/to/a-2";
    const std::optional<SettledConflict> first = tally.Add(second);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->Outcome, ConflictOutcome::Replaced);
    EXPECT_EQ(tally.Add(AnsweredWith(Action::Overwrite, {10, 1}))->Answered.RenamePath, "/to/a-2");
    EXPECT_EQ(tally.Add(AnsweredWith(Action::Skip, {11, 1}))->Outcome, ConflictOutcome::Replaced);
    EXPECT_EQ(tally.Finish({12, 2})->Outcome, ConflictOutcome::Skipped);
    EXPECT_EQ(tally.Replaced(), 2U);
    EXPECT_EQ(tally.Renamed(), 1U);
    EXPECT_FALSE(tally.SkippedOtherThanFiles());
}

TEST(ConflictTally, KnowsThatADirectoryWasSkipped) {
    ConflictTally tally;
    tally.Add(DirectoryAnsweredWith(Action::Skip));
    tally.Finish({5, 5});
    EXPECT_TRUE(tally.SkippedOtherThanFiles());
}

TEST(ConflictTally, KnowsThatAFileWithoutASizeWasSkipped) {
    AnsweredConflict track = AnsweredWith(Action::Skip);
    track.Conflict.bSourceHasSize = false;
    ConflictTally tally;
    tally.Add(track);
    tally.Finish(kOneSkipped);
    EXPECT_TRUE(tally.SkippedOtherThanFiles());
}

} // namespace
