// Tracks of an audio CD as entries of a plan: scanned, copied, skipped, renamed and moved.

#include "engine_source.h"

#include "answering_interface.h"
#include "fake_drive.h"
#include "file_tree.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

const char* const kTrackPath = "cdda:/dev/fake-cd/Track 01.wav";
constexpr std::uint64_t kWavBytes = 44 + 1000 * 2352;

// Track 1 from frame 150 to 1150, track 2 to 1160.
FakeDisc TwoTracks() {
    return AudioDisc({150, 1150}, 1160);
}

class TrackCopy : public testing::Test {
protected:
    TransferCopyResult Copy(TarvaneTransferConflictPolicy Policy, bool bMove = false) {
        return CopyPathWithProgress(kTrackPath, Wav, Job, Policy, bMove, ErrorMessage);
    }

    void ExpectCounters(std::uint64_t Bytes, std::uint64_t Items) {
        const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
        EXPECT_EQ(snapshot.DoneBytes, Bytes);
        EXPECT_EQ(snapshot.DoneItems, Items);
    }

    ScopedDrive Drive{TwoTracks()};
    TemporaryDirectory Directory;
    fs::path Wav = Directory / "Track 01.wav";
    TarvaneTransferJob Job{false, 1, "Audio CD"};
    std::string ErrorMessage = "untouched";
};

TEST_F(TrackCopy, NeedsNoEntryInTheFileSystem) {
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Ask), TransferCopyResult::Succeeded);
    EXPECT_EQ(ErrorMessage, "untouched");
    EXPECT_EQ(fs::file_size(Wav), kWavBytes);
    EXPECT_EQ(ReadFile(Wav).substr(44), FakeFrames(1, 150, 1000));
    ExpectCounters(std::uint64_t{1000} * 2352, 1);
}

TEST_F(TrackCopy, FailsWithTheReasonOfTheExtraction) {
    Drive.Disc().bPresent = false;
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Ask), TransferCopyResult::Failed);
    EXPECT_EQ(ErrorMessage, "No readable audio CD TOC in /dev/fake-cd: No medium found");
    EXPECT_EQ(TreeOf(Directory.Path()), Tree{});
    ExpectCounters(0, 0);
}

TEST_F(TrackCopy, WithThePolicySkipCountsAnItemWithoutItsBytes) {
    WriteFile(Wav, "old");
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Skip), TransferCopyResult::Skipped);
    EXPECT_EQ(ReadFile(Wav), "old");
    EXPECT_EQ(Drive.Calls, Strings{});
    ExpectCounters(0, 1);
    EXPECT_EQ(Job.GetSkippedItems(), 1U);
    EXPECT_EQ(Job.GetSkippedBytes(), 0U);
    EXPECT_EQ(Job.MakeUiSnapshot().PathText, "Current: cdda:/dev/fake-cd/Track 01.wav");
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileTotalBytes, 0U);
}

TEST_F(TrackCopy, WithThePolicyOverwriteReplacesTheFile) {
    WriteFile(Wav, PatternBytes(kWavBytes + 1));
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Overwrite), TransferCopyResult::Succeeded);
    EXPECT_EQ(fs::file_size(Wav), kWavBytes);
    ExpectCounters(std::uint64_t{1000} * 2352, 1);
}

TEST_F(TrackCopy, AsksAboutATakenNameWithoutSizeAndDateOfTheTrack) {
    WriteFile(Wav, "old");
    AnsweringInterface interface(Job, {{TarvaneTransferConflictAction::Skip, "", nullptr}});
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Ask), TransferCopyResult::Skipped);
    const std::vector<TarvaneTransferConflict> questions = interface.Stop();
    ASSERT_EQ(questions.size(), 1U);
    EXPECT_EQ(questions[0].Kind, TarvaneTransferConflictKind::File);
    EXPECT_EQ(questions[0].SourcePath, kTrackPath);
    EXPECT_EQ(questions[0].DestinationPath, Wav.string());
    EXPECT_FALSE(questions[0].bSourceDirectory);
    EXPECT_FALSE(questions[0].bSourceHasSize);
    EXPECT_FALSE(questions[0].bSourceHasModifiedTime);
    EXPECT_TRUE(questions[0].bDestinationHasSize);
    ExpectCounters(0, 1);
}

TEST_F(TrackCopy, TakesTheAnsweredName) {
    WriteFile(Wav, "old");
    const std::string other = (Directory / "other.wav").string();
    const AnsweringInterface interface(Job,
                                       {{TarvaneTransferConflictAction::Rename, other, nullptr}});
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Ask), TransferCopyResult::Succeeded);
    EXPECT_EQ(ReadFile(Wav), "old");
    EXPECT_EQ(fs::file_size(other), kWavBytes);
}

TEST_F(TrackCopy, ComparedByContentIsAlwaysDifferent) {
    WriteFile(Wav, "old");
    const AnsweringInterface interface(
        Job, {{TarvaneTransferConflictAction::CompareByContent, "", nullptr}});
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Ask), TransferCopyResult::Succeeded);
    EXPECT_EQ(fs::file_size(Wav), kWavBytes);
}

TEST_F(TrackCopy, IsNeverNewer) {
    WriteFile(Wav, "old");
    const AnsweringInterface interface(
        Job, {{TarvaneTransferConflictAction::OverwriteAllOlder, "", nullptr}});
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Ask), TransferCopyResult::Skipped);
    EXPECT_EQ(ReadFile(Wav), "old");
}

TEST_F(TrackCopy, FailsWhenTheQuestionIsCanceled) {
    WriteFile(Wav, "old");
    const AnsweringInterface interface(Job, {{TarvaneTransferConflictAction::Cancel, "", nullptr}});
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Ask), TransferCopyResult::Failed);
    EXPECT_EQ(ErrorMessage, "Transfer canceled.");
    EXPECT_EQ(ReadFile(Wav), "old");
    EXPECT_EQ(Drive.Calls, Strings{});
}

TEST_F(TrackCopy, AsAMoveOnlyCopies) {
    EXPECT_EQ(Copy(TarvaneTransferConflictPolicy::Ask, true), TransferCopyResult::Succeeded);
    EXPECT_EQ(ErrorMessage, "untouched");
    EXPECT_EQ(fs::file_size(Wav), kWavBytes);
}

// A job that runs as the program runs it, on this thread.
class TrackJob : public testing::Test {
protected:
    TarvaneTransferUiSnapshot
    Run(bool bMove, const Strings& Sources,
        TarvaneTransferConflictPolicy Policy = TarvaneTransferConflictPolicy::Overwrite) {
        TarvaneTransferPlan plan;
        plan.bMove = bMove;
        plan.ConflictPolicy = Policy;
        for (const std::string& source : Sources) {
            TarvaneTransferItemPlan item;
            item.SourcePath = source;
            item.DestinationPath = Target / fs::path(source).filename();
            plan.Items.push_back(item);
        }
        Job = std::make_shared<TarvaneTransferJob>(bMove, Sources.size(), "Audio CD");
        RunTarvaneTransferJob(Job, std::move(plan));
        return Job->MakeUiSnapshot();
    }

    ScopedDrive Drive{TwoTracks()};
    TemporaryDirectory Directory;
    fs::path Target = Directory / "target";
    std::shared_ptr<TarvaneTransferJob> Job;
};

TEST_F(TrackJob, ScansATrackAsOneItemOfItsAudio) {
    TransferTotals totals;
    std::string errorMessage = "untouched";
    TarvaneTransferJob job(false, 1, "Audio CD");
    EXPECT_TRUE(ScanTransferPath(kTrackPath, job, totals, errorMessage));
    EXPECT_EQ(totals.ItemCount, 1U);
    EXPECT_EQ(totals.ByteCount, 2352000U);
    EXPECT_EQ(errorMessage, "untouched");
    EXPECT_EQ(job.MakeUiSnapshot().PathText, "Current: cdda:/dev/fake-cd/Track 01.wav");
    EXPECT_EQ(job.MakeUiSnapshot().CurrentFileTotalBytes, 2352000U);
}

TEST_F(TrackJob, FailsInTheScanWithTheReasonOfTheRange) {
    Drive.Disc().Tracks[0].bData = true;
    const TarvaneTransferUiSnapshot snapshot = Run(false, {kTrackPath});
    EXPECT_FALSE(snapshot.bSucceeded);
    EXPECT_EQ(snapshot.MessageText, "Selected CD track is a data track, not audio.");
    EXPECT_FALSE(fs::exists(Target));
    EXPECT_EQ(snapshot.TotalItems, 0U);
    EXPECT_EQ(Drive.OpenDescriptors(), 0U);
}

TEST_F(TrackJob, FailsInTheScanBeforeAnythingIsCopied) {
    const TarvaneTransferUiSnapshot snapshot = Run(false, {kTrackPath, "cdda:/dev/fake-cd/13"});
    EXPECT_EQ(snapshot.MessageText, "Audio CD track is outside the disc TOC.");
    EXPECT_FALSE(fs::exists(Target));
}

TEST_F(TrackJob, CopiesATrackAndCountsIt) {
    const TarvaneTransferUiSnapshot snapshot = Run(false, {kTrackPath});
    EXPECT_TRUE(snapshot.bSucceeded);
    EXPECT_EQ(snapshot.MessageText, "Copied 1 item(s).");
    EXPECT_EQ(snapshot.TotalItems, 1U);
    EXPECT_EQ(snapshot.DoneItems, 1U);
    EXPECT_EQ(snapshot.TotalBytes, 2352000U);
    EXPECT_EQ(snapshot.DoneBytes, 2352000U);
    EXPECT_EQ(fs::file_size(Target / "Track 01.wav"), kWavBytes);
}

TEST_F(TrackJob, CopiesTracksAndFilesInOnePlan) {
    WriteFile(Directory / "cover.jpg", "cover");
    const TarvaneTransferUiSnapshot snapshot = Run(
        false, {kTrackPath, (Directory / "cover.jpg").string(), "cdda:/dev/fake-cd/Track 02.wav"});
    EXPECT_EQ(snapshot.MessageText, "Copied 3 item(s).");
    EXPECT_EQ(snapshot.TotalBytes, 1010U * 2352 + 5);
    EXPECT_EQ(snapshot.DoneBytes, 1010U * 2352 + 5);
    EXPECT_EQ(ReadFile(Target / "cover.jpg"), "cover");
    EXPECT_EQ(ReadFile(Target / "Track 02.wav").substr(44), FakeFrames(1, 1150, 10));
    EXPECT_EQ(Drive.OpenDescriptors(), 0U);
}

TEST_F(TrackJob, CountsASkippedTrackAsOneItemWithoutBytes) {
    WriteFile(Target / "Track 01.wav", "old");
    const TarvaneTransferUiSnapshot snapshot =
        Run(false, {kTrackPath}, TarvaneTransferConflictPolicy::Skip);
    EXPECT_EQ(snapshot.MessageText, "Copied 1 item(s).");
    EXPECT_EQ(snapshot.TotalBytes, 2352000U);
    EXPECT_EQ(snapshot.DoneBytes, 0U);
    EXPECT_EQ(snapshot.DoneItems, 1U);
    EXPECT_EQ(ReadFile(Target / "Track 01.wav"), "old");
}

TEST_F(TrackJob, MovesATrackByCopyingIt) {
    const TarvaneTransferUiSnapshot snapshot = Run(true, {kTrackPath});
    EXPECT_TRUE(snapshot.bSucceeded);
    EXPECT_EQ(snapshot.MessageText, "Moved 1 item(s).");
    EXPECT_EQ(fs::file_size(Target / "Track 01.wav"), kWavBytes);
    EXPECT_EQ(snapshot.DoneBytes, 2352000U);
    EXPECT_EQ(snapshot.DoneItems, 1U);
}

TEST_F(TrackJob, CanceledInATrackLeavesNoFile) {
    Drive.Before = [this](const std::string& Call) {
        if (Call == "read 646 16") {
            Job->RequestCancel();
        }
    };
    const TarvaneTransferUiSnapshot snapshot = Run(false, {kTrackPath});
    EXPECT_TRUE(snapshot.bCanceled);
    EXPECT_EQ(snapshot.MessageText, "Copy canceled. Partial destination files may remain.");
    EXPECT_EQ(TreeOf(Target), Tree{});
    EXPECT_EQ(Drive.OpenDescriptors(), 0U);
}

TEST_F(TrackJob, KeepsFinishedTracksWhenALaterOneFails) {
    Drive.Disc().Faults = {{"read 1150", EIO, 0}};
    const TarvaneTransferUiSnapshot snapshot =
        Run(false, {kTrackPath, "cdda:/dev/fake-cd/Track 02.wav"});
    EXPECT_EQ(snapshot.MessageText, "Failed reading audio CD sectors: Input/output error");
    EXPECT_EQ(snapshot.DoneItems, 1U);
    EXPECT_EQ(fs::file_size(Target / "Track 01.wav"), kWavBytes);
    EXPECT_FALSE(fs::exists(Target / "Track 02.wav"));
}

} // namespace
