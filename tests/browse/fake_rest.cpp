#include "fake_rest.h"

#include <sys/timerfd.h>

namespace {

bool gHeld = false;
int gClock = -1;
int gCount = 0;
long gMilliseconds = 0;

} // namespace

extern "C" {

int __real_timerfd_settime(int Clock, int Flags, const itimerspec* Wanted, itimerspec* Before);
int __wrap_timerfd_settime(int Clock, int Flags, const itimerspec* Wanted, itimerspec* Before);

int __wrap_timerfd_settime(int Clock, int Flags, const itimerspec* Wanted, itimerspec* Before) {
    gClock = Clock;
    ++gCount;
    gMilliseconds = Wanted->it_value.tv_sec * 1000 + Wanted->it_value.tv_nsec / 1'000'000;
    constexpr itimerspec kNever{};
    constexpr itimerspec kAtOnce{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = 1}};
    return __real_timerfd_settime(Clock, Flags, gHeld ? &kNever : &kAtOnce, Before);
}
}

FakeRest::FakeRest() {
    gHeld = true;
    gCount = 0;
}

FakeRest::~FakeRest() {
    gHeld = false;
}

void FakeRest::End() {
    constexpr itimerspec kAtOnce{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = 1}};
    const int relative = 0;
    __real_timerfd_settime(gClock, relative, &kAtOnce, nullptr);
}

long FakeRest::Milliseconds() const {
    return gMilliseconds;
}

int FakeRest::Count() const {
    return gCount;
}
