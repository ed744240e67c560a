// Whether a mutex is held, without taking it on the thread that asks.

#pragma once

#include <mutex>
#include <thread>

// True when another thread could take Mutex now. The calling thread may hold it itself.
inline bool IsFree(std::mutex& Mutex) {
    bool bFree = false;
    std::thread other([&] {
        bFree = Mutex.try_lock();
        if (bFree) {
            Mutex.unlock();
        }
    });
    other.join();
    return bFree;
}
