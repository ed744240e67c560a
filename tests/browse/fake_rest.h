// The rest of a browser between two readings, which a test ends.
//
// Requires: the executable wraps timerfd_settime and links fake_rest.cpp. Without an object of this
// class a rest is over at once.

#pragma once

// Holds every rest that begins in its lifetime; one object at a time.
class FakeRest {
public:
    FakeRest();
    FakeRest(const FakeRest&) = delete;
    FakeRest& operator=(const FakeRest&) = delete;
    ~FakeRest();

    // The last one that has begun.
    void End();
    // How long it was meant to be.
    long Milliseconds() const;
    int Count() const;
};
