// Threads that cannot be started.

#pragma once

#include <cstddef>
#include <pthread.h>

// While an object of this class lives, no thread can be started: each would get a stack that fits
// into no memory. One object at a time.
class NoRoomForThreads {
public:
    NoRoomForThreads() {
        pthread_getattr_default_np(&Before);
        constexpr std::size_t kStackBytes = std::size_t{1} << 50U;
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, kStackBytes);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }

    ~NoRoomForThreads() {
        pthread_setattr_default_np(&Before);
        pthread_attr_destroy(&Before);
    }

    NoRoomForThreads(const NoRoomForThreads&) = delete;
    NoRoomForThreads& operator=(const NoRoomForThreads&) = delete;

private:
    pthread_attr_t Before;
};
