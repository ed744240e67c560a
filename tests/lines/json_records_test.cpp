#include "json_records.h"

#include <gtest/gtest.h>

namespace {

class JsonProgress : public testing::Test {
protected:
    JsonProgress() {
        Job.SetStage(TarvaneTransferStage::Copying, "Copying items");
        Job.SetCurrentPath("/x/a.bin", 41037004);
        Running.Claims.Percent = 12;
        Running.Snapshot.MessageText = "Copying items";
        Running.Snapshot.DoneBytes = 1610612736;
        Running.Snapshot.TotalBytes = 12884901888;
        Running.Snapshot.DoneItems = 3;
        Running.Snapshot.TotalItems = 12;
        Running.Snapshot.CurrentFileDoneBytes = 25480396;
        Running.Snapshot.CurrentFileTotalBytes = 41037004;
        Running.Snapshot.TransferRateBytesPerSecond = 6291456;
        Running.Snapshot.ElapsedSeconds = 256.5;
        Running.Snapshot.RemainingSeconds = 1792.0;
    }

    TarvaneTransferJob Job{false, 12, ""};
    ProgressView Running{Job, {}, {}};
};

AnsweredConflict OverwrittenFile() {
    AnsweredConflict answer;
    answer.Conflict.Kind = TarvaneTransferConflictKind::File;
    answer.Conflict.SourcePath = "/a/cover.jpg";
    answer.Conflict.DestinationPath = "/b/cover.jpg";
    answer.Conflict.SourceDate = "2024-03-07 14:05:09";
    answer.Conflict.DestinationDate = "2023-12-24 18:00:00";
    answer.Conflict.bSourceHasSize = true;
    answer.Conflict.SourceSizeBytes = 48230;
    answer.Conflict.bDestinationHasSize = true;
    answer.Conflict.DestinationSizeBytes = 47110;
    answer.Action = TarvaneTransferConflictAction::Overwrite;
    answer.bByUser = true;
    return answer;
}

} // namespace

TEST_F(JsonProgress, ReportsTheNumbersOfARunningJob) {
    EXPECT_EQ(ProgressRecord(Running),
              R"({"event":"progress","stage":"Copying","status":"Copying items",)"
              R"("path":"/x/a.bin","percent":12,"done_bytes":1610612736,)"
              R"("total_bytes":12884901888,"done_items":3,"total_items":12,)"
              R"("file_done_bytes":25480396,"file_total_bytes":41037004,"rate":6291456,)"
              R"("elapsed":256.5,"remaining":1792.0,"stalled":0,"more_than_counted":false,)"
              R"("less_than_counted":false,"cancel_requested":false})");
}

TEST_F(JsonProgress, ReportsNullForWhatIsNotKnownYet) {
    const TarvaneTransferJob job(false, 1, "");
    ProgressView view{job, {}, {}};
    view.Snapshot.MessageText = "Scanning transfer contents";
    view.Snapshot.ElapsedSeconds = 0.25;
    EXPECT_EQ(ProgressRecord(view),
              R"({"event":"progress","stage":"Preparing","status":"Scanning transfer contents",)"
              R"("path":null,"percent":null,"done_bytes":0,"total_bytes":null,"done_items":0,)"
              R"("total_items":null,"file_done_bytes":0,"file_total_bytes":0,"rate":null,)"
              R"("elapsed":0.25,"remaining":null,"stalled":0,"more_than_counted":false,)"
              R"("less_than_counted":false,"cancel_requested":false})");
}

TEST_F(JsonProgress, ReportsThePercentageOfAJobThatEndedUncounted) {
    ProgressView view{Job, {}, {}};
    view.Snapshot.bFinished = true;
    EXPECT_NE(ProgressRecord(view).find(R"("percent":0,)"), std::string::npos);
}

TEST_F(JsonProgress, ReportsStallsWrongTotalsAndACancel) {
    ProgressView view = Running;
    view.Claims.StalledSeconds = 9;
    view.Claims.bMoreThanCounted = true;
    view.Claims.bLessThanCounted = true;
    view.Snapshot.bCancelRequested = true;
    EXPECT_NE(ProgressRecord(view).find(
                  R"("stalled":9,"more_than_counted":true,"less_than_counted":true,)"
                  R"("cancel_requested":true})"),
              std::string::npos);
}

TEST_F(JsonProgress, GivesTheBytesOfANameThatIsNotUtf8InHexadecimal) {
    Job.SetCurrentPath("/x/bad\xFF\xFE.bin", 0);
    EXPECT_NE(ProgressRecord(Running).find(R"("path":"/x/bad\ufffd\ufffd.bin",)"
                                           R"("path_hex":"2f782f626164fffe2e62696e",)"),
              std::string::npos);
}

TEST_F(JsonProgress, GivesTheWholePathHoweverLong) {
    const std::string path = "/x/" + std::string(200, 'y');
    Job.SetCurrentPath(path, 0);
    EXPECT_NE(ProgressRecord(Running).find("\"path\":\"" + path + "\","), std::string::npos);
}

TEST_F(JsonProgress, KeepsARecordOnOneLineWhateverTheName) {
    AnsweredConflict answer = OverwrittenFile();
    answer.Conflict.SourcePath = "/a/new\nline\x1B\"\\";
    EXPECT_NE(ConflictRecord({answer}).find(R"("source":"/a/new\nline\u001b\"\\",)"),
              std::string::npos);
}

// U+009B begins a control sequence as Escape and a bracket do, U+202E turns the text behind it.
TEST_F(JsonProgress, HoldsNothingThatDrivesATerminal) {
    Job.SetCurrentPath("/x/\x7F\u009B2J\u202Egnp.é", 0);
    EXPECT_NE(ProgressRecord(Running).find(R"("path":"/x/\u007f\u009b2J\u202egnp.\u00e9",)"),
              std::string::npos);
}

TEST_F(JsonProgress, ReportsAConflictAboutAFileWithItsAnswer) {
    EXPECT_EQ(ConflictRecord({OverwrittenFile(), ConflictOutcome::Replaced}),
              R"({"event":"conflict","kind":"file","source":"/a/cover.jpg",)"
              R"("destination":"/b/cover.jpg","source_size":48230,"destination_size":47110,)"
              R"("source_date":"2024-03-07 14:05:09","destination_date":"2023-12-24 18:00:00",)"
              R"("destination_is_directory":false,"answer":"overwrite","rename_path":null,)"
              R"("by":"user","outcome":"replaced"})");
}

TEST_F(JsonProgress, ReportsAConflictAboutADirectoryAnsweredByAChoice) {
    AnsweredConflict answer;
    answer.Conflict.Kind = TarvaneTransferConflictKind::Directory;
    answer.Conflict.SourcePath = "/a/Live";
    answer.Conflict.DestinationPath = "/b/Live";
    answer.Conflict.bDestinationDirectory = true;
    answer.Action = TarvaneTransferConflictAction::Merge;
    EXPECT_EQ(ConflictRecord({answer, ConflictOutcome::Merged}),
              R"({"event":"conflict","kind":"directory","source":"/a/Live",)"
              R"("destination":"/b/Live","source_size":null,"destination_size":null,)"
              R"("source_date":null,"destination_date":null,"destination_is_directory":true,)"
              R"("answer":"merge","rename_path":null,"by":"choice","outcome":"merged"})");
}

TEST_F(JsonProgress, NamesTheNewPathOfARename) {
    AnsweredConflict answer = OverwrittenFile();
    answer.Action = TarvaneTransferConflictAction::Rename;
    answer.RenamePath = "/b/\xFF.jpg";
    EXPECT_NE(ConflictRecord({answer}).find(R"("answer":"rename","rename_path":"/b/\ufffd.jpg",)"
                                            R"("rename_path_hex":"2f622fff2e6a7067",)"),
              std::string::npos);
}

TEST_F(JsonProgress, HasANameForEveryAnswer) {
    using Action = TarvaneTransferConflictAction;
    const std::pair<Action, std::string> names[] = {
        {Action::Merge, "merge"},
        {Action::Skip, "skip"},
        {Action::Overwrite, "overwrite"},
        {Action::Rename, "rename"},
        {Action::CompareByContent, "compare"},
        {Action::Cancel, "cancel"},
    };
    for (const auto& [action, name] : names) {
        AnsweredConflict answer = OverwrittenFile();
        answer.Action = action;
        EXPECT_NE(ConflictRecord({answer}).find("\"answer\":\"" + name + "\""), std::string::npos)
            << name;
    }
}

TEST_F(JsonProgress, SaysWhatBecameOfATakenName) {
    const std::pair<ConflictOutcome, std::string> names[] = {
        {ConflictOutcome::Replaced, "replaced"},     {ConflictOutcome::Merged, "merged"},
        {ConflictOutcome::Renamed, "renamed"},       {ConflictOutcome::Skipped, "skipped"},
        {ConflictOutcome::Unfinished, "unfinished"},
    };
    for (const auto& [outcome, name] : names) {
        EXPECT_TRUE(
            ConflictRecord({OverwrittenFile(), outcome}).ends_with("\"outcome\":\"" + name + "\"}"))
            << name;
    }
}

TEST_F(JsonProgress, ReportsAFindingOfThePreflight) {
    PreflightFinding finding;
    finding.Kind = PreflightFindingKind::DanglingLink;
    finding.Path = "/a/link";
    finding.bStopsJob = true;
    EXPECT_EQ(PreflightRecord(finding),
              R"({"event":"preflight","kind":"dangling-link","path":"/a/link",)"
              R"("text":"the job will stop at the link '/a/link', which leads nowhere",)"
              R"("stops_job":true})");
}

TEST_F(JsonProgress, ReportsTheTotalsOfThePreflight) {
    PreflightResult result;
    result.Entries = 5;
    result.Bytes = 600;
    result.CopiedEntries = 7;
    result.CopiedBytes = 800;
    EXPECT_EQ(TotalsRecord(result),
              R"({"event":"totals","entries":5,"bytes":600,"copied_entries":7,)"
              R"("copied_bytes":800,"complete":true})");
}

TEST_F(JsonProgress, ReportsTotalsOfALookForGuardsAsIncomplete) {
    PreflightResult result;
    result.bComplete = false;
    EXPECT_EQ(TotalsRecord(result), R"({"event":"totals","entries":0,"bytes":0,"copied_entries":0,)"
                                    R"("copied_bytes":0,"complete":false})");
}

TEST_F(JsonProgress, ReportsHowFarTheFinishingIs) {
    EXPECT_EQ(FinishingRecord({.Done = 3, .Total = 50}),
              R"({"event":"finishing","done":3,"total":50,"finished":false})");
    EXPECT_EQ(FinishingRecord({.Done = 50, .Total = 50, .bFinished = true}),
              R"({"event":"finishing","done":50,"total":50,"finished":true})");
}

TEST_F(JsonProgress, ReportsARunningFlush) {
    FlushProgress progress;
    progress.RemainingBytes = 4096;
    progress.BytesPerSecond = 1024;
    EXPECT_EQ(FlushRecord(progress),
              R"({"event":"flush","remaining_bytes":4096,"rate":1024,"finished":false,)"
              R"("error":null})");
}

TEST_F(JsonProgress, ReportsAFlushThatFailed) {
    FlushProgress progress;
    progress.bFinished = true;
    progress.ErrorText = "The disk is gone.";
    EXPECT_EQ(FlushRecord(progress),
              R"({"event":"flush","remaining_bytes":null,"rate":null,"finished":true,)"
              R"("error":"The disk is gone."})");
}

TEST_F(JsonProgress, EndsWithTheResultOfTheRun) {
    const std::string noJob = R"("entries":null,"bytes":null,"elapsed":null,"skipped":null,)"
                              R"("replaced":null,"renamed":null,"finished":null,"left_alone":null,)"
                              R"("changed_length":null,"unreached":null})";
    EXPECT_EQ(
        DoneRecord(
            {.Result = RunResult::Succeeded,
             .Text = "Copied 12 entries.",
             .Counts = TransferCounts{.Entries = 12,
                                      .Bytes = 34567,
                                      .Seconds = 1.5,
                                      .Skipped = 5,
                                      .Replaced = 3,
                                      .Renamed = 1},
             .Finishing =
                 FinishResult{.Finished = 9, .LeftAlone = 1, .ChangedLength = 4, .Unreached = 2},
             .bFlushed = true},
            0),
        R"({"event":"done","result":"succeeded","status":"Copied 12 entries.",)"
        R"("exit_status":0,"flushed":true,"entries":12,"bytes":34567,"elapsed":1.5,)"
        R"("skipped":5,"replaced":3,"renamed":1,"finished":9,"left_alone":1,)"
        R"("changed_length":4,"unreached":2})");
    EXPECT_EQ(DoneRecord({.Result = RunResult::Failed, .Text = "No space.", .bFlushed = false}, 1),
              R"({"event":"done","result":"failed","status":"No space.","exit_status":1,)"
              R"("flushed":false,)" +
                  noJob);
    EXPECT_EQ(DoneRecord({.Result = RunResult::Canceled, .Text = "Copy canceled."}, 143),
              R"({"event":"done","result":"canceled","status":"Copy canceled.",)"
              R"("exit_status":143,"flushed":null,)" +
                  noJob);
}
