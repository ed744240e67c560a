// Jobs registered, collected, finished and released on many threads at once.

#include "tarvanetransfer.h"

#include "counting_sound.h"

#include <atomic>
#include <map>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

// A row's label is "<registrar>/<number>"; numbers of one registrar grow as it registers.
struct RowName {
    explicit RowName(const std::string& Label)
        : Registrar(Label.substr(0, Label.find('/'))),
          Number(std::stoi(Label.substr(Label.find('/') + 1))) {}

    std::string Registrar;
    int Number;
};

constexpr int kLeastJobs = 1500;
constexpr int kMostJobs = 10'000'000;
constexpr int kLeastCollections = 200;

// Registers jobs one after the other until there were enough collections meanwhile, holds the last
// few, and lets them end in all ways.
void RegisterAndRelease(const std::string& Registrar, const std::atomic<int>& Collections) {
    std::vector<std::shared_ptr<TarvaneTransferJob>> held;
    for (int number = 0;
         number < kMostJobs && (number < kLeastJobs || Collections < kLeastCollections); ++number) {
        const std::string label = Registrar + "/" + std::to_string(number);
        const bool bMove = number % 2 == 0;
        auto job = std::make_shared<TarvaneTransferJob>(bMove, 1, label);
        RegisterTarvaneTransferJob(job);
        job->SetCurrentPath("/path", 10);
        job->AddBytesDone(10);
        if (number % 3 == 0) {
            job->FinishFailure("failed");
        }
        held.push_back(std::move(job));
        if (held.size() > 4) {
            held.erase(held.begin());
        }
    }
}

// Must hold for every collection: each registrar's jobs come in the order of their registration, no
// job comes twice, no row comes from a job that had finished when the collection began, and a job
// that lives through all of it is always there, first of all.
void ExpectRowsInOrder(const std::vector<TarvaneTransferJobSnapshot>& Rows) {
    ASSERT_FALSE(Rows.empty());
    EXPECT_EQ(Rows.front().Source, "anchor/0");
    std::map<std::string, int> last;
    for (const TarvaneTransferJobSnapshot& row : Rows) {
        const RowName name(row.Source);
        const auto [entry, bFirst] = last.try_emplace(name.Registrar, name.Number);
        EXPECT_TRUE(bFirst || entry->second < name.Number) << row.Source;
        EXPECT_NE(name.Registrar, "finished");
        entry->second = name.Number;
    }
}

TEST(RegistryThreads, ListEachRunningJobOnceAndInOrder) {
    const CountingSound sound;
    const auto anchor = std::make_shared<TarvaneTransferJob>(false, 1, "anchor/0");
    const auto finished = std::make_shared<TarvaneTransferJob>(false, 1, "finished/0");
    RegisterTarvaneTransferJob(anchor);
    RegisterTarvaneTransferJob(finished);
    finished->FinishSuccess("");

    std::atomic<int> registering{2};
    std::atomic<int> collections{0};
    std::vector<std::thread> threads;
    for (const std::string registrar : {"first", "second"}) {
        threads.emplace_back([&registering, &collections, registrar] {
            RegisterAndRelease(registrar, collections);
            --registering;
        });
    }
    for (int collector = 0; collector < 2; ++collector) {
        threads.emplace_back([&registering, &collections] {
            while (registering > 0) {
                ExpectRowsInOrder(CollectActiveTarvaneTransferJobSnapshots());
                ++collections;
                std::this_thread::yield();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GE(collections, kLeastCollections);
    const auto rows = CollectActiveTarvaneTransferJobSnapshots();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows.front().Source, "anchor/0");
}

// Must hold: a worker finishes its job and lets go of it while collections run; no collection waits
// for it in a circle, and after the last one is gone nothing is listed.
TEST(RegistryThreads, WorkersEndWhileTheirJobsAreListed) {
    const CountingSound sound;
    std::atomic<bool> bDone{false};
    std::thread collector([&] {
        while (!bDone) {
            CollectActiveTarvaneTransferJobSnapshots();
            std::this_thread::yield();
        }
    });
    for (int round = 0; round < 300; ++round) {
        auto job =
            std::make_shared<TarvaneTransferJob>(false, 1, "worker/" + std::to_string(round));
        RegisterTarvaneTransferJob(job);
        std::thread worker([job] {
            job->SetStage(TarvaneTransferStage::Copying, "");
            job->AddBytesDone(10);
            job->FinishSuccess("done");
        });
        job->RequestCancel();
        job.reset();
        worker.join();
    }
    bDone = true;
    collector.join();
    EXPECT_TRUE(CollectActiveTarvaneTransferJobSnapshots().empty());
}

} // namespace
