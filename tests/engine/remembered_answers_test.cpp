// Which answers decide later conflicts, of which kind, and as what.

#include "tarvanetransfer.h"

#include "counting_sound.h"
#include "job_access.h"
#include "scripted_wait.h"

#include <optional>

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;
using Kind = TarvaneTransferConflictKind;
using Stage = TarvaneTransferStage;

class Conflicts {
public:
    // Asks about a conflict, and answers with Given when the worker has to wait for that.
    Action Ask(Kind OfKind, Action Given) {
        Action action = Action::Cancel;
        bAsked = false;
        RenamePath = "stale";
        TarvaneTransferConflict conflict;
        conflict.Kind = OfKind;
        ScriptedWait wait({[&] {
            bAsked = true;
            EXPECT_TRUE(Job.ResolveConflict(Given, Given == Action::Rename ? "/given" : ""));
        }});
        EXPECT_TRUE(Job.WaitForConflict(conflict, action, RenamePath));
        return action;
    }

    CountingSound Sound;
    TarvaneTransferJob Job{false, 1, ""};
    bool bAsked = false;
    std::string RenamePath;
};

struct AnswerRule {
    const char* Name;
    Kind OfKind;
    Action Given;
    // What later conflicts of the kind get without being asked, if anything.
    std::optional<Action> Later;
};

constexpr std::nullopt_t kAskAgain = std::nullopt;

const AnswerRule kRules[] = {
    {"MergeForADirectory", Kind::Directory, Action::Merge, kAskAgain},
    {"MergeAllForADirectory", Kind::Directory, Action::MergeAll, Action::Merge},
    {"SkipForADirectory", Kind::Directory, Action::Skip, kAskAgain},
    {"SkipAllForADirectory", Kind::Directory, Action::SkipAll, Action::Skip},
    {"OverwriteForADirectory", Kind::Directory, Action::Overwrite, kAskAgain},
    {"RenameForADirectory", Kind::Directory, Action::Rename, kAskAgain},
    {"OverwriteAllForADirectory", Kind::Directory, Action::OverwriteAll, kAskAgain},
    {"CompareByContentForADirectory", Kind::Directory, Action::CompareByContent, kAskAgain},
    {"OverwriteAllOlderForADirectory", Kind::Directory, Action::OverwriteAllOlder, kAskAgain},
    {"MergeForAFile", Kind::File, Action::Merge, kAskAgain},
    {"MergeAllForAFile", Kind::File, Action::MergeAll, kAskAgain},
    {"SkipForAFile", Kind::File, Action::Skip, kAskAgain},
    {"SkipAllForAFile", Kind::File, Action::SkipAll, Action::Skip},
    {"OverwriteForAFile", Kind::File, Action::Overwrite, kAskAgain},
    {"RenameForAFile", Kind::File, Action::Rename, kAskAgain},
    {"OverwriteAllForAFile", Kind::File, Action::OverwriteAll, Action::Overwrite},
    {"CompareByContentForAFile", Kind::File, Action::CompareByContent, kAskAgain},
    {"OverwriteAllOlderForAFile", Kind::File, Action::OverwriteAllOlder, Action::OverwriteAllOlder},
};

class EveryAnswer : public testing::TestWithParam<AnswerRule>, public Conflicts {};

TEST_P(EveryAnswer, IsReturnedAsItWasGiven) {
    EXPECT_EQ(Ask(GetParam().OfKind, GetParam().Given), GetParam().Given);
    EXPECT_TRUE(bAsked);
    EXPECT_EQ(RenamePath, GetParam().Given == Action::Rename ? "/given" : "");
}

TEST_P(EveryAnswer, DecidesLaterConflictsOfItsKindOnlyIfItIsRemembered) {
    const Action otherAnswer =
        GetParam().Given == Action::CompareByContent ? Action::Skip : Action::CompareByContent;
    Ask(GetParam().OfKind, GetParam().Given);
    EXPECT_EQ(Ask(GetParam().OfKind, otherAnswer), GetParam().Later.value_or(otherAnswer));
    EXPECT_EQ(bAsked, !GetParam().Later.has_value());
    EXPECT_EQ(RenamePath, "");
}

TEST_P(EveryAnswer, DecidesNoConflictOfTheOtherKind) {
    const Kind otherKind = GetParam().OfKind == Kind::File ? Kind::Directory : Kind::File;
    Ask(GetParam().OfKind, GetParam().Given);
    EXPECT_EQ(Ask(otherKind, Action::Skip), Action::Skip);
    EXPECT_TRUE(bAsked);
}

INSTANTIATE_TEST_SUITE_P(, EveryAnswer, testing::ValuesIn(kRules),
                         [](const auto& Info) { return Info.param.Name; });

class RememberedAnswer : public testing::Test, public Conflicts {};

TEST_F(RememberedAnswer, SkipAllForAFileSkipsTheNextFileAtOnceAndLeavesStageAndStatus) {
    Ask(Kind::File, Action::SkipAll);
    Job.SetStage(Stage::Preparing, "Something else");
    EXPECT_EQ(Ask(Kind::File, Action::Overwrite), Action::Skip);
    EXPECT_FALSE(bAsked);
    EXPECT_EQ(Job.MakeUiSnapshot().StageText, "Stage: Preparing | Something else");
}

TEST_F(RememberedAnswer, SkipAllForAFileStillLetsADirectoryBeAsked) {
    Ask(Kind::File, Action::SkipAll);
    EXPECT_EQ(Ask(Kind::Directory, Action::Merge), Action::Merge);
    EXPECT_TRUE(bAsked);
}

TEST_F(RememberedAnswer, MergeAllReturnsMergeForLaterDirectories) {
    EXPECT_EQ(Ask(Kind::Directory, Action::MergeAll), Action::MergeAll);
    EXPECT_EQ(Ask(Kind::Directory, Action::Skip), Action::Merge);
    EXPECT_EQ(Ask(Kind::Directory, Action::Skip), Action::Merge);
}

TEST_F(RememberedAnswer, OverwriteAllOlderReturnsItselfForLaterFiles) {
    EXPECT_EQ(Ask(Kind::File, Action::OverwriteAllOlder), Action::OverwriteAllOlder);
    EXPECT_EQ(Ask(Kind::File, Action::Skip), Action::OverwriteAllOlder);
    EXPECT_EQ(Ask(Kind::File, Action::Skip), Action::OverwriteAllOlder);
}

TEST_F(RememberedAnswer, OfOneKindStandsBesideThatOfTheOther) {
    Ask(Kind::Directory, Action::MergeAll);
    Ask(Kind::File, Action::SkipAll);
    EXPECT_EQ(Ask(Kind::Directory, Action::Cancel), Action::Merge);
    EXPECT_EQ(Ask(Kind::File, Action::Cancel), Action::Skip);
}

TEST_F(RememberedAnswer, StaysWhenAnotherKindIsAnsweredOnce) {
    Ask(Kind::File, Action::OverwriteAll);
    Ask(Kind::Directory, Action::Skip);
    EXPECT_EQ(Ask(Kind::File, Action::Cancel), Action::Overwrite);
    EXPECT_FALSE(bAsked);
}

TEST_F(RememberedAnswer, EveryKindOtherThanDirectoryCountsAsFile) {
    const auto unknownKind = static_cast<Kind>(7);
    EXPECT_EQ(Ask(unknownKind, Action::OverwriteAll), Action::OverwriteAll);
    EXPECT_EQ(Ask(Kind::File, Action::Cancel), Action::Overwrite);
    EXPECT_EQ(Ask(unknownKind, Action::Cancel), Action::Overwrite);
    EXPECT_FALSE(bAsked);
}

TEST_F(RememberedAnswer, IsKnownBeforeTheNextConflictOfItsKind) {
    EXPECT_FALSE(Job.RemembersAnswerFor(Kind::File));
    Ask(Kind::File, Action::Skip);
    EXPECT_FALSE(Job.RemembersAnswerFor(Kind::File));
    Ask(Kind::File, Action::OverwriteAllOlder);
    EXPECT_TRUE(Job.RemembersAnswerFor(Kind::File));
    EXPECT_FALSE(Job.RemembersAnswerFor(Kind::Directory));
    Ask(Kind::Directory, Action::MergeAll);
    EXPECT_TRUE(Job.RemembersAnswerFor(Kind::Directory));
}

TEST_F(RememberedAnswer, GivesWayToACancel) {
    Ask(Kind::File, Action::SkipAll);
    Job.RequestCancel();
    Action action = Action::Overwrite;
    EXPECT_FALSE(Job.WaitForConflict(TarvaneTransferConflict(), action, RenamePath));
    EXPECT_EQ(action, Action::Cancel);
}

} // namespace
