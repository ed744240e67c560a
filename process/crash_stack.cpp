#include "crash_stack.h"

#include <climits>
#include <csignal>
#include <cstddef>
#include <new>
#include <pthread.h>

namespace {

constexpr std::size_t kCrashStackBytes = 65536;

// At the end of a thread.
void TakeAway(void* Memory) {
    const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
    sigaltstack(&none, nullptr);
    operator delete(Memory);
}

// One that no value can be set for where there are too many.
pthread_key_t MakeKey() {
    pthread_key_t key = PTHREAD_KEYS_MAX;
    pthread_key_create(&key, TakeAway);
    return key;
}

} // namespace

// The memory is no object of the thread: the C library ends the process where it has no memory to
// take note of one. For the first keys of a process it needs none.
void ArmCrashStack() {
    static const pthread_key_t key = MakeKey();
    stack_t now{};
    if (sigaltstack(nullptr, &now) != 0 || (now.ss_flags & SS_DISABLE) == 0) {
        return;
    }
    // Without memory for it the thread does its work all the same.
    void* const memory = operator new(kCrashStackBytes, std::nothrow);
    if (memory == nullptr || pthread_setspecific(key, memory) != 0) {
        operator delete(memory);
        return;
    }
    const stack_t ours{.ss_sp = memory, .ss_flags = 0, .ss_size = kCrashStackBytes};
    sigaltstack(&ours, nullptr);
}
