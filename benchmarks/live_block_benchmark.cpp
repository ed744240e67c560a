// What one frame of a running job costs at a prompt: the engine's texts, the layout of the block,
// the bytes that change the screen, and writing them into a terminal.

#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <pty.h>
#include <stdexcept>
#include <thread>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "block_drawer.h"
#include "live_block.h"
#include "output_queue.h"
#include "running_job.h"
#include "screen_text.h"

namespace {

using Seconds = std::chrono::duration<double>;

constexpr double kFramesPerSecond = 10.0;

// The processor time of this thread, without that of the terminal's other end.
Seconds ThreadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// A terminal that takes everything at once.
class DrainedTerminal {
public:
    DrainedTerminal() {
        if (openpty(&Outside, &Inside, nullptr, nullptr, nullptr) != 0) {
            throw std::runtime_error("no pseudo-terminal");
        }
        Draining = std::thread([this] {
            std::array<char, 65536> bytes;
            while (read(Outside, bytes.data(), bytes.size()) > 0) {}
        });
    }
    // Nothing can be read any more once the last descriptor inside is closed.
    ~DrainedTerminal() {
        close(Inside);
        Draining.join();
        close(Outside);
    }
    DrainedTerminal(const DrainedTerminal&) = delete;
    DrainedTerminal& operator=(const DrainedTerminal&) = delete;

    int Descriptor() const { return Inside; }

private:
    int Outside = -1;
    int Inside = -1;
    std::thread Draining;
};

// What the worker does between two frames.
void CopyOneFile(TarvaneTransferJob& Job, int Number) {
    Job.SetCurrentPath(PathOfFile(Number), 3 * kBlockBytes);
    Job.AddBytesDone(2 * kBlockBytes);
    Job.MarkItemsDone(1);
}

void LiveBlockFrame(benchmark::State& State) {
    setenv("TERM", "xterm-256color", 1);
    unsetenv("NO_COLOR");
    EnsureUtf8Locale();
    const TerminalSize size{static_cast<int>(State.range(0)), 24};
    const auto job = MakeRunningJob();
    DrainedTerminal terminal;
    OutputQueue output(terminal.Descriptor());
    ProgressWatch watch;
    LiveBlock block(BarCells::Blocks);
    BlockDrawer drawer;
    int number = 0;
    const Seconds before = ThreadTime();
    for ([[maybe_unused]] auto _ : State) {
        CopyOneFile(*job, ++number);
        const bool bWaiting = false;
        const TarvaneTransferUiSnapshot snapshot = job->MakeUiSnapshot();
        const ProgressClaims claims =
            watch.Observe(snapshot, bWaiting, std::chrono::steady_clock::now());
        output.Write(drawer.Draw(block.Lines(snapshot, claims, size), size));
    }
    const Seconds perFrame = (ThreadTime() - before) / static_cast<double>(State.iterations());
    State.counters["percent_of_core"] = 100.0 * kFramesPerSecond * perFrame.count();
}
BENCHMARK(LiveBlockFrame)->ArgName("Columns")->Arg(80)->Arg(200);

} // namespace
