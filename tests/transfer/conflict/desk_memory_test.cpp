// The desk and the tally keep the latest answers, and nothing else that grows with the names.

#include "conflict_desk.h"
#include "conflict_tally.h"

#include <malloc.h>

#include <string>
#include <thread>

#include <gtest/gtest.h>

// The sanitizers bring an allocator of their own, of which mallinfo2 knows nothing: there, the test
// could not fail.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

constexpr int kNames = 30000;
constexpr int kNamesUntilFull = 2 * static_cast<int>(ConflictDesk::kKeptAnswers);

std::size_t AllocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// A directory that is skipped with all below it.
void AskAboutNext(TarvaneTransferJob& Job, int Number) {
    TarvaneTransferConflict conflict;
    conflict.Kind = TarvaneTransferConflictKind::Directory;
    conflict.SourcePath = "/from/a/directory/with/a/name/of/its/own/" + std::to_string(Number);
    conflict.DestinationPath = "/to/a/directory/with/a/name/of/its/own/" + std::to_string(Number);
    TarvaneTransferConflictAction action = TarvaneTransferConflictAction::Cancel;
    std::string renamePath;
    if (Job.WaitForConflict(conflict, action, renamePath)) {
        Job.MarkItemsDone(1);
        Job.MarkSkipped(1, 0);
    }
}

} // namespace

TEST(ConflictDeskMemory, StaysFlatHoweverManyNamesAreTaken) {
    constexpr std::size_t kMostGrowth = std::size_t{256} * 1024;
    TarvaneTransferJob job(false, 1, "");
    ConflictDesk desk(job, ConflictPolicy({.ForFiles = FileConflictChoice::Skip,
                                           .ForDirectories = DirectoryConflictChoice::Skip}));
    ConflictTally tally;
    std::thread worker([&job] {
        for (int i = 0; i < kNames; ++i) {
            AskAboutNext(job, i);
        }
    });
    std::size_t whenFull = 0;
    while (desk.AnsweredCount() < kNames) {
        if (const AnsweredConflict* answered = desk.Attend()) {
            tally.Add(*answered);
            whenFull = desk.AnsweredCount() == kNamesUntilFull ? AllocatedBytes() : whenFull;
        } else {
            std::this_thread::yield();
        }
    }
    const std::size_t atTheEnd = AllocatedBytes();
    worker.join();
    EXPECT_LT(atTheEnd, whenFull + kMostGrowth);
    EXPECT_EQ(desk.Answered().size(), ConflictDesk::kKeptAnswers);
    EXPECT_EQ(job.GetSkippedItems(), static_cast<std::uint64_t>(kNames));
}

#endif
