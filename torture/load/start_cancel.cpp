// Transfers that are begun and canceled, one after the other:
//
//   tarvane_start_cancel DIRECTORY CYCLES
//
// Each is canceled at another moment: at once, between two looks, at a question, by the end of its
// session. No thread, no descriptor, no memory and no part of a file may stay.

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include <malloc.h>

#include "load_check.h"
#include "tarvanetransfer.h"
#include "transfer_session.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kSmallBytes = 1'000;
constexpr std::size_t kLargeBytes = 3'000'000;
// After so many cycles all that is made once is there.
constexpr int kWarmUp = 100;
constexpr int kMostLooks = 64;
// As the allocator cuts its memory in another way each time; a cycle that leaves anything leaves
// more in a few hundred.
constexpr std::size_t kBytesThatVary = 16'384;

LoadTally gTally;

struct Held {
    std::ptrdiff_t Threads = 0;
    std::ptrdiff_t Descriptors = 0;
    std::size_t Bytes = 0;
};

std::ptrdiff_t CountIn(const char* Directory) {
    return std::distance(fs::directory_iterator(Directory), fs::directory_iterator());
}

Held WhatIsHeld() {
    const struct mallinfo2 memory = mallinfo2();
    return {CountIn("/proc/self/task"), CountIn("/proc/self/fd"), memory.uordblks + memory.hblkhd};
}

void MakeSource(const fs::path& Source) {
    WriteFile(Source / "a", kSmallBytes);
    WriteFile(Source / "large", kLargeBytes);
    WriteFile(Source / "sub/b", kSmallBytes);
}

// Looks as often as Looks says, or until the job is over.
void LookFor(TransferSession& Session, int Looks) {
    for (int i = 0; i < Looks && !Session.IsOver(); ++i) {
        Session.Job().MakeUiSnapshot();
        CollectActiveTarvaneTransferJobSnapshots();
        std::this_thread::yield();
    }
}

void ExpectWholeFiles(const fs::path& Destination) {
    if (!fs::exists(Destination)) {
        return;
    }
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Destination)) {
        const std::uintmax_t size = entry.is_regular_file() ? entry.file_size() : kSmallBytes;
        gTally.Expect(size == kSmallBytes || size == kLargeBytes,
                      "no part of a file stays: " + entry.path().string());
    }
}

void RunCycle(const fs::path& Directory, int Number) {
    const fs::path destination = Directory / "to";
    const bool bTaken = Number % 3 == 0;
    if (bTaken) {
        WriteFile(destination / "a", kSmallBytes);
    }
    TarvaneTransferUiSnapshot end;
    {
        TransferSession session(PlanFor(Directory / "from", destination));
        LookFor(session, Number % kMostLooks);
        const bool bBySession = Number % 5 == 0;
        if (!bBySession) {
            session.Job().RequestCancel();
            while (!session.IsOver()) {
                std::this_thread::yield();
            }
            end = session.Job().MakeUiSnapshot();
            gTally.Expect(end.bFinished && end.bSucceeded != end.bCanceled &&
                              !end.MessageText.empty(),
                          "a job ends once, with a sentence");
            gTally.Expect(!bTaken || end.bCanceled, "nobody but the cancel answers a question");
        }
    }
    ExpectWholeFiles(destination);
    fs::remove_all(destination);
}

} // namespace

int main(int Argc, char** Argv) {
    if (Argc != 3) {
        return 2;
    }
    const fs::path directory = Argv[1];
    const int cycles = std::atoi(Argv[2]);
    MakeSource(directory / "from");
    for (int i = 0; i < kWarmUp; ++i) {
        RunCycle(directory, i);
    }
    const Held before = WhatIsHeld();
    for (int i = 0; i < cycles; ++i) {
        gTally.Try();
        RunCycle(directory, i);
    }
    const Held after = WhatIsHeld();
    gTally.Expect(after.Threads == before.Threads, "no thread stays");
    gTally.Expect(after.Descriptors == before.Descriptors, "no descriptor stays");
    gTally.Expect(after.Bytes <= before.Bytes + kBytesThatVary,
                  "no memory stays: " + std::to_string(before.Bytes) + " bytes before, " +
                      std::to_string(after.Bytes) + " after");
    return gTally.Print();
}
