// The processor time that the interface of a real program takes while a copy runs: drawing, and all
// the looks for questions, keys and signals in between.

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// Small files to copy, and a folder to copy them to.
class FilesToCopy {
public:
    FilesToCopy() {
        constexpr int kFiles = 4000;
        std::string name = (fs::temp_directory_path() / "tarvane-benchmark-XXXXXX").native();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        Root = name;
        fs::create_directory(Source());
        fs::create_directory(Destination());
        for (int i = 0; i < kFiles; ++i) {
            std::ofstream(Source() / ("file " + std::to_string(i))) << i;
        }
    }
    ~FilesToCopy() { fs::remove_all(Root); }
    FilesToCopy(const FilesToCopy&) = delete;
    FilesToCopy& operator=(const FilesToCopy&) = delete;

    fs::path Source() const { return Root / "source"; }
    fs::path Destination() const { return Root / "destination"; }

private:
    fs::path Root;
};

// A program that copies slowly, with a terminal of its own.
class SlowCopy {
public:
    explicit SlowCopy(const FilesToCopy& Files) {
        winsize size{};
        size.ws_col = 80;
        size.ws_row = 24;
        Child = forkpty(&Terminal, nullptr, nullptr, &size);
        if (Child < 0) {
            throw std::runtime_error("no process with a terminal of its own");
        }
        if (Child == 0) {
            setenv("LD_PRELOAD", SLOW_READS_LIBRARY, 1);
            setenv("TERM", "xterm-256color", 1);
            execl(TARVANE_PROGRAM, "tarvane", "copy", Files.Source().c_str(),
                  Files.Destination().c_str(), nullptr);
            _exit(127);
        }
    }
    ~SlowCopy() {
        kill(Child, SIGKILL);
        close(Terminal);
        waitpid(Child, nullptr, 0);
    }
    SlowCopy(const SlowCopy&) = delete;
    SlowCopy& operator=(const SlowCopy&) = delete;

    // Reads what the program draws until the text has come.
    void WaitForText(const std::string& Text) {
        std::string received;
        while (received.find(Text) == std::string::npos) {
            received += Read();
        }
    }

    void ReadFor(Seconds Time) {
        const auto end = Clock::now() + Time;
        while (Clock::now() < end) {
            Read();
        }
    }

    // The processor time of the first thread, which is the interface.
    Seconds InterfaceTime() const {
        const std::string id = std::to_string(Child);
        std::ifstream file("/proc/" + id + "/task/" + id + "/schedstat");
        double nanoseconds = 0.0;
        if (!(file >> nanoseconds)) {
            throw std::runtime_error("the kernel does not tell the time of a thread");
        }
        return Seconds(nanoseconds / 1e9);
    }

private:
    std::string Read() {
        constexpr int kLongestMilliseconds = 5000;
        std::array<char, 65536> bytes;
        pollfd wanted{Terminal, POLLIN, 0};
        if (poll(&wanted, 1, kLongestMilliseconds) <= 0) {
            throw std::runtime_error("the program draws nothing");
        }
        const ssize_t count = read(Terminal, bytes.data(), bytes.size());
        if (count <= 0) {
            throw std::runtime_error("the program ended too early");
        }
        return std::string(bytes.data(), static_cast<std::size_t>(count));
    }

    pid_t Child = -1;
    int Terminal = -1;
};

void Measure(benchmark::State& State) {
    const FilesToCopy files;
    SlowCopy copy(files);
    copy.WaitForText("Rate ");
    for ([[maybe_unused]] auto _ : State) {
        const Seconds before = copy.InterfaceTime();
        const auto start = Clock::now();
        copy.ReadFor(std::chrono::seconds(3));
        const Seconds passed = Clock::now() - start;
        State.SetIterationTime(passed.count());
        State.counters["percent_of_core"] =
            100.0 * (copy.InterfaceTime() - before).count() / passed.count();
    }
}

void InterfaceOfACopy(benchmark::State& State) {
    try {
        Measure(State);
    } catch (...) {
        // Ends the program, with its child and its files gone: only what is caught cleans up.
        throw;
    }
}
BENCHMARK(InterfaceOfACopy)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
