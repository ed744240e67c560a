// 32 jobs at once in one process, built for the thread sanitizer:
//
//   tarvane_jobs_at_once DIRECTORY ROUNDS
//
// In every round 32 jobs copy a tree each while one thread polls and answers them, as a front end
// does, and another one asks for the list of jobs 60 times a second. A quarter of them is canceled
// on the way.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "load_check.h"
#include "ring_sound.h"
#include "tarvanetransfer.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kJobs = 32;
constexpr std::size_t kFiles = 24;
constexpr std::size_t kFileBytes = 70'000;
constexpr std::size_t kCanceledEvery = 4;

std::atomic<std::size_t> gSounds{0};
LoadTally gTally;

// Of one round.
struct OneJob {
    fs::path Destination;
    std::shared_ptr<TarvaneTransferJob> Job;
    bool bToCancel = false;
    // As the poll has seen it last.
    TarvaneTransferUiSnapshot Seen = {};
};

// A third of the names is taken already, by files that are empty.
void MakeTree(const fs::path& Source, const fs::path& Destination) {
    for (std::size_t i = 0; i < kFiles; ++i) {
        const std::string name = "d" + std::to_string(i % 3) + "/f" + std::to_string(i);
        WriteFile(Source / name, kFileBytes);
        if (i % 3 == 0) {
            WriteFile(Destination / name, 0);
        }
    }
}

void Poll(OneJob& InOut, std::size_t Turn) {
    using Action = TarvaneTransferConflictAction;
    const TarvaneTransferUiSnapshot now = InOut.Job->MakeUiSnapshot();
    gTally.Expect(now.DoneBytes >= InOut.Seen.DoneBytes && now.DoneItems >= InOut.Seen.DoneItems,
                  "counters never go back");
    gTally.Expect(now.TotalItems == 0 || now.DoneItems <= now.TotalItems,
                  "no more is done than there is");
    gTally.Expect(!InOut.Seen.bFinished || now.bFinished, "a job ends once");
    InOut.Seen = now;
    TarvaneTransferConflict conflict;
    if (!InOut.Job->GetPendingConflict(conflict)) {
        return;
    }
    const bool bDirectory = conflict.Kind == TarvaneTransferConflictKind::Directory;
    constexpr Action kForFiles[] = {Action::Overwrite, Action::Skip, Action::CompareByContent,
                                    Action::OverwriteAll};
    if (InOut.bToCancel && !bDirectory) {
        InOut.Job->RequestCancel();
    } else {
        InOut.Job->ResolveConflict(bDirectory ? Action::Merge : kForFiles[Turn % 4], {});
    }
}

void PollUntilOver(std::vector<OneJob>& InOutJobs) {
    std::size_t turn = 0;
    bool bAnyRuns = true;
    while (bAnyRuns) {
        bAnyRuns = false;
        for (OneJob& each : InOutJobs) {
            Poll(each, ++turn);
            bAnyRuns = bAnyRuns || !each.Seen.bFinished;
        }
        std::this_thread::yield();
    }
}

void ListUntil(const std::atomic<bool>& bOver) {
    constexpr std::chrono::microseconds kFrame{1'000'000 / 60};
    auto next = std::chrono::steady_clock::now();
    while (!bOver) {
        gTally.Expect(CollectActiveTarvaneTransferJobSnapshots().size() <= kJobs,
                      "the list has the jobs that run");
        std::this_thread::sleep_until(next += kFrame);
    }
}

// A file that was there keeps its length where it was skipped.
void CheckFiles(const OneJob& Ended) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Ended.Destination)) {
        const std::uintmax_t size = entry.is_regular_file() ? entry.file_size() : 0;
        gTally.Expect(size == 0 || size == kFileBytes, "no partial file stays");
    }
}

void Check(const OneJob& Ended) {
    const TarvaneTransferUiSnapshot end = Ended.Job->MakeUiSnapshot();
    gTally.Expect(!end.MessageText.empty(), "a job ends with a sentence");
    gTally.Expect(end.bSucceeded != end.bCanceled && end.bCanceled == Ended.bToCancel,
                  "a job succeeds unless it is canceled");
    gTally.Expect(!end.bSucceeded ||
                      (end.DoneItems == end.TotalItems && end.DoneBytes == end.TotalBytes),
                  "all is done in the end");
    CheckFiles(Ended);
}

void RunRound(const fs::path& Directory) {
    std::vector<OneJob> jobs;
    std::vector<std::thread> workers;
    const std::size_t soundsBefore = gSounds;
    for (std::size_t i = 0; i < kJobs; ++i) {
        const fs::path source = Directory / "from" / std::to_string(i);
        const fs::path destination = Directory / "to" / std::to_string(i);
        MakeTree(source, destination);
        auto job = std::make_shared<TarvaneTransferJob>(false, 1, "load");
        jobs.push_back({destination, job, i % kCanceledEvery == 0});
        RegisterTarvaneTransferJob(job);
        workers.emplace_back(
            [job, plan = PlanFor(source, destination)] { RunTarvaneTransferJob(job, plan); });
    }
    std::atomic<bool> bOver{false};
    std::thread list([&bOver] { ListUntil(bOver); });
    PollUntilOver(jobs);
    for (std::thread& worker : workers) {
        worker.join();
    }
    bOver = true;
    list.join();
    std::ranges::for_each(jobs, Check);
    gTally.Expect(gSounds - soundsBefore == kJobs - kJobs / kCanceledEvery,
                  "each success is told once");
    gTally.Expect(CollectActiveTarvaneTransferJobSnapshots().empty(), "no job stays in the list");
    fs::remove_all(Directory / "from");
    fs::remove_all(Directory / "to");
}

} // namespace

void PlayTarvaneTransferCompleteSound() noexcept {
    ++gSounds;
}

int main(int Argc, char** Argv) {
    if (Argc != 3) {
        return 2;
    }
    for (int left = std::atoi(Argv[2]); left > 0; --left) {
        for (std::size_t i = 0; i < kJobs; ++i) {
            gTally.Try();
        }
        RunRound(Argv[1]);
    }
    return gTally.Print();
}
