// What a job costs the worker that feeds it, and the interface that looks at it.

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "running_job.h"

namespace {

// Looks at a job as a front end does, with a pause between two looks, until it is destroyed.
class Poller {
public:
    Poller(const TarvaneTransferJob& Job, std::chrono::microseconds Pause)
        : Looking([this, &Job, Pause] {
              while (!bEnd) {
                  benchmark::DoNotOptimize(Job.MakeUiSnapshot());
                  std::this_thread::sleep_for(Pause);
              }
          }) {}
    ~Poller() {
        bEnd = true;
        Looking.join();
    }
    Poller(const Poller&) = delete;
    Poller& operator=(const Poller&) = delete;

private:
    std::atomic<bool> bEnd{false};
    std::thread Looking;
};

void AddBytesDone(benchmark::State& State) {
    const auto job = MakeRunningJob();
    for ([[maybe_unused]] auto _ : State) {
        job->AddBytesDone(kBlockBytes);
    }
}
BENCHMARK(AddBytesDone);

void AddBytesDoneWhilePolled(benchmark::State& State) {
    const auto job = MakeRunningJob();
    const Poller poller(*job, std::chrono::microseconds(State.range(0)));
    for ([[maybe_unused]] auto _ : State) {
        job->AddBytesDone(kBlockBytes);
    }
}
// As often as the program looks, twenty times as often, and without a pause.
BENCHMARK(AddBytesDoneWhilePolled)->ArgName("PauseUs")->Arg(20000)->Arg(1000)->Arg(0);

void SetCurrentPath(benchmark::State& State) {
    const auto job = MakeRunningJob();
    const std::string paths[] = {PathOfFile(8), PathOfFile(9)};
    std::size_t number = 0;
    for ([[maybe_unused]] auto _ : State) {
        job->SetCurrentPath(paths[number++ % 2], kBlockBytes);
    }
}
BENCHMARK(SetCurrentPath);

void GetPendingConflict(benchmark::State& State) {
    const auto job = MakeRunningJob();
    TarvaneTransferConflict conflict;
    for ([[maybe_unused]] auto _ : State) {
        benchmark::DoNotOptimize(job->GetPendingConflict(conflict));
    }
}
BENCHMARK(GetPendingConflict);

void MakeUiSnapshot(benchmark::State& State) {
    const auto job = MakeRunningJob();
    for ([[maybe_unused]] auto _ : State) {
        benchmark::DoNotOptimize(job->MakeUiSnapshot());
    }
}
BENCHMARK(MakeUiSnapshot);

void CollectActiveJobs(benchmark::State& State) {
    std::vector<std::shared_ptr<TarvaneTransferJob>> jobs;
    for (std::int64_t i = 0; i < State.range(0); ++i) {
        jobs.push_back(MakeRunningJob());
        RegisterTarvaneTransferJob(jobs.back());
    }
    for ([[maybe_unused]] auto _ : State) {
        benchmark::DoNotOptimize(CollectActiveTarvaneTransferJobSnapshots());
    }
}
BENCHMARK(CollectActiveJobs)->ArgName("Jobs")->Arg(100);

} // namespace
