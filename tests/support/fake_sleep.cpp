#include "fake_sleep.h"

#include <cerrno>
#include <ctime>
#include <utility>

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1000000000;

thread_local FakeSleep* gSleep = nullptr;

} // namespace

// The names that the linker gives to the sleep and to what replaces it.
int RealNanosleep(const timespec* Wait, timespec* Remaining) asm("__real_nanosleep");
int WrappedNanosleep(const timespec* Wait, timespec* Remaining) asm("__wrap_nanosleep");

int WrappedNanosleep(const timespec* Wait, timespec* Remaining) {
    if (gSleep == nullptr) {
        return RealNanosleep(Wait, Remaining);
    }
    const bool normalized = Wait->tv_nsec >= 0 && Wait->tv_nsec < kNanosecondsPerSecond;
    if (!normalized || Wait->tv_sec < 0) {
        errno = EINVAL;
        return -1;
    }
    const FakeSleep::Ending ending =
        gSleep->Sleep(Wait->tv_sec * kNanosecondsPerSecond + Wait->tv_nsec);
    if (ending.Error == 0) {
        return 0;
    }
    Remaining->tv_sec = ending.RemainingNanoseconds / kNanosecondsPerSecond;
    Remaining->tv_nsec = ending.RemainingNanoseconds % kNanosecondsPerSecond;
    errno = ending.Error;
    return -1;
}

FakeSleep::FakeSleep(Sleeper BehaviorOfSleeps) : Behavior(std::move(BehaviorOfSleeps)) {
    gSleep = this;
}

FakeSleep::~FakeSleep() {
    gSleep = nullptr;
}

FakeSleep::Ending FakeSleep::Sleep(std::int64_t Nanoseconds) {
    Requested.push_back(Nanoseconds);
    return Behavior ? Behavior(Nanoseconds) : Ending{};
}
