// A moment that other threads and processes wait for.

#pragma once

#include <atomic>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

// Closed at first. Processes that are started while it lives share it, and may wait for it between
// fork and exec.
class SharedLatch {
public:
    SharedLatch() {
        void* memory = mmap(nullptr, sizeof(*bOpen), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            throw std::bad_alloc();
        }
        bOpen = new (memory) std::atomic<bool>(false);
    }
    ~SharedLatch() { munmap(bOpen, sizeof(*bOpen)); }
    SharedLatch(const SharedLatch&) = delete;
    SharedLatch& operator=(const SharedLatch&) = delete;

    void Open() { *bOpen = true; }

    // Returns after about 20 seconds at the latest, so that a test that has failed ends.
    void Wait() const {
        for (int polls = 0; polls < 20000 && !*bOpen; ++polls) {
            usleep(1000);
        }
    }

private:
    std::atomic<bool>* bOpen;
};
