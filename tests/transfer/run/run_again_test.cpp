// The second run of a plan: what it replaces, and what it never does.

#include "run_again.h"

#include "run_fixture.h"

namespace {

using Files = FileConflictChoice;
using Directories = DirectoryConflictChoice;

Files FilesAgain(std::optional<Files> ForFiles, std::optional<Directories> ForDirectories = {}) {
    TransferRequest request;
    request.OnConflict = ForFiles;
    request.OnDirectoryConflict = ForDirectories;
    const TransferRequest again = RequestToRunAgain(request);
    EXPECT_EQ(again.OnDirectoryConflict, Directories::Merge);
    return *again.OnConflict;
}

class RunAgain : public RunFixture {
protected:
    // Carries everything out once more after somebody has changed "b".
    const RunOutcome& Repeat() {
        TransferRun first(Request, PlanOf({"a", "b"}));
        EXPECT_TRUE(Ends(first));
        WriteFile(Root / "to/b", "old");
        Again.emplace(RequestToRunAgain(first.Request()), first.Plan());
        EXPECT_TRUE(Ends(*Again));
        return Again->Outcome();
    }

    std::optional<TransferRun> Again;
};

} // namespace

TEST_F(RunAgain, ReplacesWhatDiffersWhereThatWasTheChoice) {
    Request.OnConflict = Files::Overwrite;
    const RunOutcome& outcome = Repeat();
    EXPECT_EQ(outcome.Result, RunResult::Succeeded) << outcome.Text;
    EXPECT_EQ(outcome.Counts->Skipped, 1U);
    EXPECT_EQ(outcome.Counts->Replaced, 1U);
    EXPECT_EQ(ReadFile(Root / "to/b"), "new");
}

TEST_F(RunAgain, LeavesAloneWhatIsThereWhereThatWasAsked) {
    const RunOutcome& outcome = Repeat();
    EXPECT_EQ(outcome.Result, RunResult::Succeeded) << outcome.Text;
    EXPECT_EQ(outcome.Counts->Skipped, 2U);
    EXPECT_EQ(ReadFile(Root / "to/b"), "old");
    EXPECT_TRUE(Again->Answered().empty() || !Again->Answered().front().bByUser);
}

TEST(RunAgainChoice, IsOneThatLeavesAloneWhatIsTheSame) {
    EXPECT_EQ(FilesAgain(Files::Overwrite), Files::Compare);
    for (const Files same :
         {Files::Skip, Files::Older, Files::Compare, Files::Larger, Files::SizeDiffers}) {
        EXPECT_EQ(FilesAgain(same), same);
    }
}

TEST(RunAgainChoice, ReplacesNothingThatNobodyHasAllowedToReplace) {
    EXPECT_EQ(FilesAgain(std::nullopt), Files::Skip);
    for (const Files first : {Files::Ask, Files::KeepBoth, Files::Fail}) {
        EXPECT_EQ(FilesAgain(first), Files::Skip);
    }
    for (const Directories first : {Directories::Ask, Directories::Skip, Directories::Fail}) {
        EXPECT_EQ(FilesAgain(Files::Overwrite, first), Files::Skip);
    }
}
