// The completion sound of a test program: silent, counted, and open to a look at the job.

#pragma once

#include <functional>

// Counts the sounds for its lifetime; one object at a time.
//
// Threads: any may play the sound; the listener runs on the thread that plays it and must be set
// before that.
class CountingSound {
public:
    CountingSound();
    CountingSound(const CountingSound&) = delete;
    CountingSound& operator=(const CountingSound&) = delete;
    ~CountingSound();

    // Listener is called on each sound, while it plays.
    void Listen(std::function<void()> Listener);
    int Played() const;
};
