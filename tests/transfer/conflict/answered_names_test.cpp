#include "answered_names.h"

#include <string>
#include <unordered_map>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;

AnsweredConflict AnswerAbout(const std::string& Path, Action Given,
                             const std::string& RenamePath = "") {
    AnsweredConflict answered;
    answered.Conflict.SourcePath = "/from/somewhere";
    answered.Conflict.DestinationPath = Path;
    answered.Action = Given;
    answered.RenamePath = RenamePath;
    return answered;
}

TEST(AnsweredNames, KnowsNothingOfNamesThatWereNotTaken) {
    const AnsweredNames names;
    EXPECT_EQ(names.NewNameOf("/to/a"), nullptr);
    EXPECT_FALSE(names.WasCompared("/to/a"));
    EXPECT_FALSE(names.WasSkipped("/to/a"));
}

TEST(AnsweredNames, TellsTheNewName) {
    AnsweredNames names;
    names.Add(AnswerAbout("/to/a", Action::Rename, "/to/a-2"));
    ASSERT_NE(names.NewNameOf("/to/a"), nullptr);
    EXPECT_EQ(*names.NewNameOf("/to/a"), "/to/a-2");
    EXPECT_EQ(names.NewNameOf("/to/a-2"), nullptr);
    EXPECT_EQ(names.NewNameOf("/from/somewhere"), nullptr);
    EXPECT_FALSE(names.WasSkipped("/to/a"));
    EXPECT_FALSE(names.WasCompared("/to/a"));
}

TEST(AnsweredNames, TellsAllNewNames) {
    AnsweredNames names;
    names.Add(AnswerAbout("/to/a", Action::Rename, "/to/a-2"));
    names.Add(AnswerAbout("/to/b", Action::Rename, "/to/b-2"));
    EXPECT_EQ(names.Renamed(), (std::unordered_map<std::string, std::string>{
                                   {"/to/a", "/to/a-2"}, {"/to/b", "/to/b-2"}}));
}

TEST(AnsweredNames, TellsTheNewNamesOfTracks) {
    AnsweredNames names;
    AnsweredConflict track = AnswerAbout("/to/01.wav", Action::Rename, "/to/01-2.wav");
    track.Conflict.SourcePath = "cdda:/dev/sr0/1";
    names.Add(track);
    names.Add(AnswerAbout("/to/b", Action::Rename, "/to/b-2"));
    EXPECT_EQ(names.NewTrackNames(), std::vector<std::string>{"/to/01-2.wav"});
}

TEST(AnsweredNames, TellsWhatWasCompared) {
    AnsweredNames names;
    names.Add(AnswerAbout("/to/a", Action::CompareByContent));
    EXPECT_TRUE(names.WasCompared("/to/a"));
    EXPECT_FALSE(names.WasCompared("/to/b"));
    EXPECT_FALSE(names.WasSkipped("/to/a"));
    EXPECT_EQ(names.NewNameOf("/to/a"), nullptr);
}

TEST(AnsweredNames, TellsWhatWasSkipped) {
    AnsweredNames names;
    names.Add(AnswerAbout("/to/a", Action::Skip));
    names.Add(AnswerAbout("/to/b", Action::SkipAll));
    EXPECT_TRUE(names.WasSkipped("/to/a"));
    EXPECT_TRUE(names.WasSkipped("/to/b"));
    EXPECT_FALSE(names.WasSkipped("/to/c"));
    EXPECT_FALSE(names.WasCompared("/to/a"));
    EXPECT_EQ(names.NewNameOf("/to/b"), nullptr);
}

TEST(AnsweredNames, TakesTheAnswerCancelForSkipped) {
    AnsweredNames names;
    names.Add(AnswerAbout("/to/a", Action::Cancel));
    EXPECT_TRUE(names.WasSkipped("/to/a"));
}

TEST(AnsweredNames, ForgetsTheNewNameOfWhatWasLeftAlone) {
    AnsweredNames names;
    for (const char* name : {"1", "2"}) {
        AnsweredConflict track = AnswerAbout(name, Action::Rename, std::string(name) + "-2");
        track.Conflict.SourcePath = "cdda:/dev/sr0/1";
        names.Add(track);
    }
    names.LeaveAlone("2");
    EXPECT_TRUE(names.WasSkipped("2"));
    EXPECT_EQ(names.NewNameOf("2"), nullptr);
    EXPECT_EQ(names.NewTrackNames(), std::vector<std::string>{"1-2"});
    EXPECT_FALSE(names.WasSkipped("1"));
}

TEST(AnsweredNames, KeepsNothingOfTheOtherAnswers) {
    AnsweredNames names;
    for (const Action action : {Action::Overwrite, Action::OverwriteAll, Action::OverwriteAllOlder,
                                Action::Merge, Action::MergeAll}) {
        names.Add(AnswerAbout("/to/a", action));
    }
    EXPECT_EQ(names.NewNameOf("/to/a"), nullptr);
    EXPECT_FALSE(names.WasCompared("/to/a"));
    EXPECT_FALSE(names.WasSkipped("/to/a"));
}

} // namespace
