// A mutex that cannot be locked.
//
// Requires: the executable wraps pthread_mutex_lock and links failing_lock.cpp.

#pragma once

#include <mutex>

// Makes this thread's attempts to lock Mutex fail for its lifetime; one object a thread at a time.
class FailingLock {
public:
    explicit FailingLock(std::mutex& Mutex);
    FailingLock(const FailingLock&) = delete;
    FailingLock& operator=(const FailingLock&) = delete;
    ~FailingLock();
};
