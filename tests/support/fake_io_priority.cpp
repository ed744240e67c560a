#include "fake_io_priority.h"

#include <sys/syscall.h>

#include <cstdarg>
#include <cstdlib>

namespace {

constexpr int kWhoProcess = 1;
constexpr int kCallingThread = 0;

FakeIoPriority* gIoPriority = nullptr;

} // namespace

// The names that the linker gives to the system call and to what replaces it.
long RealSyscall(long Number, ...) asm("__real_syscall");
long WrappedSyscall(long Number, ...) asm("__wrap_syscall");

long WrappedSyscall(long Number, ...) {
    if (Number != SYS_ioprio_get && Number != SYS_ioprio_set) {
        std::abort();
    }
    const bool setting = Number == SYS_ioprio_set;
    va_list arguments;
    va_start(arguments, Number);
    const int who = va_arg(arguments, int);
    const int id = va_arg(arguments, int);
    const int priority = setting ? va_arg(arguments, int) : 0;
    va_end(arguments);

    if (gIoPriority == nullptr) {
        return RealSyscall(Number, who, id, priority);
    }
    gIoPriority->Targets.push_back({who, id});
    if (!setting) {
        return gIoPriority->Current;
    }
    gIoPriority->Set.push_back(priority);
    return gIoPriority->SetResult;
}

FakeIoPriority::FakeIoPriority() {
    gIoPriority = this;
}

FakeIoPriority::~FakeIoPriority() {
    gIoPriority = nullptr;
}

long RealIoPriority() {
    return RealSyscall(SYS_ioprio_get, kWhoProcess, kCallingThread);
}

void SetRealIoPriority(int Priority) {
    RealSyscall(SYS_ioprio_set, kWhoProcess, kCallingThread, Priority);
}
