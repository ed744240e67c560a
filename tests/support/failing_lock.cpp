#include "failing_lock.h"

#include <cerrno>

#include <pthread.h>

namespace {

thread_local pthread_mutex_t* gFailing = nullptr;

} // namespace

// The names that the linker gives to the lock and to what replaces it.
int RealMutexLock(pthread_mutex_t* Mutex) noexcept asm("__real_pthread_mutex_lock");
int WrappedMutexLock(pthread_mutex_t* Mutex) noexcept asm("__wrap_pthread_mutex_lock");

int WrappedMutexLock(pthread_mutex_t* Mutex) noexcept {
    return Mutex == gFailing ? EINVAL : RealMutexLock(Mutex);
}

FailingLock::FailingLock(std::mutex& Mutex) {
    gFailing = Mutex.native_handle();
}

FailingLock::~FailingLock() {
    gFailing = nullptr;
}
