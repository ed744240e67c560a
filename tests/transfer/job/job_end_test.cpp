// What a job that is over comes to, told from its counters.

#include "job_end.h"

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;

class JobEnd : public testing::Test {
protected:
    // Ten entries and 1000 bytes are counted.
    JobEnd() { Job.SetTotals(10, 1000); }

    void DoFile(std::uint64_t Bytes) {
        Job.SetCurrentPath("/from/file", Bytes);
        Job.AddBytesDone(Bytes);
        Job.MarkItemsDone(1);
    }
    void DoEntries(std::uint64_t Entries, std::uint64_t Bytes) {
        DoFile(Bytes);
        Job.MarkItemsDone(Entries - 1);
    }
    void SkipFile(std::uint64_t Bytes) {
        Names.Add(Answered(Action::Skip));
        DoFile(Bytes);
        Job.MarkSkipped(1, Bytes);
        Names.Finish(CountersOf(Job));
    }
    AnsweredConflict Answered(Action Answer) const {
        AnsweredConflict answered;
        answered.Conflict.SourcePath = "/from/file";
        answered.Conflict.bSourceHasSize = true;
        answered.Action = Answer;
        answered.Before = CountersOf(Job);
        return answered;
    }
    void SkipDirectory(const std::string& Path, std::uint64_t Entries) {
        AnsweredConflict answered = Answered(Action::Skip);
        answered.Conflict.Kind = TarvaneTransferConflictKind::Directory;
        answered.Conflict.SourcePath = Path;
        answered.Conflict.bSourceHasSize = false;
        Names.Add(answered);
        Job.MarkItemsDone(Entries);
        Job.MarkSkipped(Entries, 0);
        Names.Finish(CountersOf(Job));
        Unread.LeaveOut(Path);
    }

    RunOutcome End() const { return OutcomeOf(Ended()); }
    EndedJob Ended() const { return {Job, Plan, Names, nullptr, Unread, FailSentence}; }
    void ExpectEnd(RunResult Result, const std::string& Text) const {
        EXPECT_EQ(End().Result, Result);
        EXPECT_EQ(End().Text, Text);
    }

    TarvaneTransferJob Job{false, 1, ""};
    TarvaneTransferPlan Plan;
    ConflictTally Names;
    UnreadDirectories Unread;
    std::string FailSentence;
};

TEST_F(JobEnd, CountsWhatWasDoneWithoutWhatWasSkipped) {
    Names.Add(Answered(Action::Overwrite));
    DoEntries(7, 600);
    Names.Add(Answered(Action::Rename));
    DoFile(100);
    Names.Finish(CountersOf(Job));
    SkipFile(200);
    SkipFile(100);
    Job.FinishSuccess("Copied 1 item(s).");
    const RunOutcome end = End();
    ASSERT_TRUE(end.Counts);
    EXPECT_EQ(end.Counts->Entries, 8U);
    EXPECT_EQ(end.Counts->Bytes, 700U);
    EXPECT_EQ(end.Counts->Skipped, 2U);
    EXPECT_EQ(end.Counts->Replaced, 1U);
    EXPECT_EQ(end.Counts->Renamed, 1U);
    ExpectEnd(RunResult::Succeeded, "Copied 8 entries, 700 B; 2 skipped, 1 replaced, 1 renamed.");
    EXPECT_FALSE(IsLessThanCounted(Ended()));
}

TEST_F(JobEnd, HasReplacedWhatWasTakenAndNotSkippedWhereTheEngineHasAnswered) {
    DoEntries(7, 700);
    DoFile(300);
    Job.MarkItemsDone(2);
    Job.MarkSkipped(3, 300);
    Job.FinishSuccess("Copied 1 item(s).");
    EndedJob ended = Ended();
    ended.FilesLeftToEngine = 5;
    EXPECT_EQ(OutcomeOf(ended).Text, "Copied 7 entries, 700 B; 3 skipped, 2 replaced.");
}

TEST_F(JobEnd, DoesNotSayWhatWasReplacedWhereNobodyKnows) {
    DoEntries(4, 300);
    Job.FinishCanceled("Copy canceled. Partial destination files may remain.");
    EndedJob ended = Ended();
    ended.FilesLeftToEngine = 5;
    EXPECT_EQ(OutcomeOf(ended).Counts->Entries, 4U);
    EXPECT_EQ(OutcomeOf(ended).Counts->Replaced, 0U);
}

TEST_F(JobEnd, NamesNoFileThatWasAnsweredLongBefore) {
    AnsweredConflict first = Answered(Action::OverwriteAll);
    first.Conflict.DestinationPath = "/to/file";
    Job.FinishFailure("Failed to replace destination directory: Permission denied");
    EndedJob ended = Ended();
    ended.LastAnswer = &first;
    ended.FilesLeftToEngine = 5;
    EXPECT_EQ(OutcomeOf(ended).Text, "Failed to replace destination directory: Permission denied");
}

TEST_F(JobEnd, DoesNotCountAFileThatWasRemovedAgain) {
    DoEntries(4, 300);
    Job.SetCurrentPath("/from/big", 500);
    Job.AddBytesDone(120);
    Job.FinishFailure("Failed while writing destination file.");
    EXPECT_EQ(End().Counts->Entries, 4U);
    EXPECT_EQ(End().Counts->Bytes, 300U);
    ExpectEnd(RunResult::Failed, "Failed while writing destination file.");
}

TEST_F(JobEnd, DoesNotCountAFileThatCouldNotBeFlushed) {
    DoEntries(4, 300);
    Job.SetCurrentPath("/from/small", 50);
    Job.AddBytesDone(50);
    Job.FinishFailure("Failed to flush destination file.");
    EXPECT_EQ(End().Counts->Bytes, 300U);
}

TEST_F(JobEnd, IsACancelUnlessAChoiceHasEndedTheJob) {
    DoEntries(4, 300);
    Job.FinishCanceled("Copy canceled. Partial destination files may remain.");
    ExpectEnd(RunResult::Canceled, "Copy canceled. Partial destination files may remain.");
    EXPECT_EQ(End().Counts->Entries, 4U);
    FailSentence = "cannot create '/to/a': File exists";
    ExpectEnd(RunResult::Failed, "cannot create '/to/a': File exists");
}

TEST_F(JobEnd, HasFailedWhereDirectoriesCouldNotBeRead) {
    DoEntries(10, 1000);
    Job.FinishSuccess("Copied 1 item(s).");
    Unread = {{"/from/a"}, 1};
    ExpectEnd(RunResult::Failed, "a directory could not be read and is empty now: '/from/a'");
    Unread = {{"/from/a", "/from/b", "/from/c", "/from/d"}, 1234};
    ExpectEnd(RunResult::Failed,
              "1,234 directories could not be read and are empty now: '/from/a', '/from/b', "
              "'/from/c' and 1,231 more");
    EXPECT_EQ(End().Counts->Entries, 10U);
}

TEST_F(JobEnd, DoesNotMissWhatWasSkipped) {
    Unread = {{"/from/dir/secret"}, 1};
    DoEntries(8, 900);
    SkipDirectory("/from/dir", 2);
    Job.FinishSuccess("Copied 1 item(s).");
    ExpectEnd(RunResult::Succeeded, "Copied 8 entries, 900 B; 2 skipped.");
}

TEST_F(JobEnd, MissesWhatLiesBesideASkippedDirectory) {
    Unread = {{"/from/directory"}, 1};
    DoEntries(8, 1000);
    SkipDirectory("/from/dir", 2);
    Job.FinishSuccess("Copied 1 item(s).");
    ExpectEnd(RunResult::Failed,
              "a directory could not be read and is empty now: '/from/directory'");
}

TEST_F(JobEnd, HasFailedWhereEntriesHaveVanished) {
    DoEntries(9, 1000);
    Job.FinishSuccess("Copied 1 item(s).");
    ExpectEnd(RunResult::Failed, "1 entry vanished before the turn came to it");
    EXPECT_TRUE(IsLessThanCounted(Ended()));
    Unread = {{"/from/a"}, 1};
    ExpectEnd(RunResult::Failed, "a directory could not be read and is empty now: '/from/a'; 1 "
                                 "entry vanished before the turn came to it");
}

TEST_F(JobEnd, HasFailedWhereFilesHaveBecomeShorter) {
    DoEntries(9, 700);
    SkipFile(100);
    Job.FinishSuccess("Copied 1 item(s).");
    ExpectEnd(RunResult::Failed, "files have become shorter since they were counted, by 200 B");
    EXPECT_TRUE(IsLessThanCounted(Ended()));
}

TEST_F(JobEnd, HasSucceededWhereFilesHaveGrown) {
    DoEntries(10, 1200);
    Job.FinishSuccess("Copied 1 item(s).");
    ExpectEnd(RunResult::Succeeded, "Copied 10 entries, 1.2 KB.");
}

} // namespace
