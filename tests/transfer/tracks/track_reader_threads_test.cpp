// Readers beside threads of all kinds: a process that is forked while another thread holds a lock
// has a copy of that lock which nobody opens. So it must not come near one, and memory has the lock
// that everybody takes.

#include "track_reader.h"

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <linux/cdrom.h>
#include <memory>
#include <new>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <variant>

#include <gtest/gtest.h>

namespace {

const pid_t kTestProcess = getpid();

// A disc of 99 audio tracks in every drive, which takes no memory to answer.
int Answer(unsigned long Code, void* Argument) {
    if (Code == CDROMREADTOCHDR) {
        *static_cast<cdrom_tochdr*>(Argument) = {1, 99};
        return 0;
    }
    auto* entry = static_cast<cdrom_tocentry*>(Argument);
    const auto minute = entry->cdte_track == CDROM_LEADOUT ? __u8{100} : entry->cdte_track;
    entry->cdte_addr.msf = {minute, 0, 0};
    return 0;
}

std::size_t CountTracks(TrackReader& Reader) {
    constexpr int kLimitMilliseconds = 20000;
    while (true) {
        if (const auto result = Reader.TakeResult()) {
            const auto* list = std::get_if<TrackList>(&*result);
            return list == nullptr ? 0 : list->Tracks.size();
        }
        pollfd event{Reader.OverFd(), POLLIN, 0};
        if (poll(&event, 1, kLimitMilliseconds) != 1) {
            return 0;
        }
    }
}

} // namespace

// The name that the linker gives to what replaces ioctl.
int WrappedIoctl(int Descriptor, unsigned long Code, ...) asm("__wrap_ioctl");

int WrappedIoctl(int, unsigned long Code, ...) {
    va_list arguments;
    va_start(arguments, Code);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return Answer(Code, argument);
}

void* operator new(std::size_t Size) {
    if (getpid() != kTestProcess) {
        std::abort();
    }
    void* memory = std::malloc(Size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void operator delete(void* Memory) noexcept {
    std::free(Memory);
}

void operator delete(void* Memory, std::size_t) noexcept {
    std::free(Memory);
}

TEST(TrackReaderProcess, TakesNoMemory) {
    TrackReader reader("/dev/null");
    EXPECT_EQ(CountTracks(reader), 99U);
}

TEST(TrackReaderProcess, AnswersHoweverManyThereAreBesideBusyThreads) {
    constexpr int kReaders = 200;
    std::atomic<bool> bStop{false};
    const auto allocate = [&bStop] {
        for (std::size_t size = 1; !bStop; size = size % 100000 + 1) {
            const auto bytes = std::make_unique<char[]>(size);
        }
    };
    std::thread first(allocate);
    std::thread second(allocate);
    for (int i = 0; i < kReaders; ++i) {
        TrackReader reader("/dev/null");
        if (i % 2 == 0) {
            EXPECT_EQ(CountTracks(reader), 99U) << i;
        }
    }
    bStop = true;
    first.join();
    second.join();
}
