// A moment in the middle of a copy: a program that reads a real file waits there while the test
// changes something.

#pragma once

#include "owned_descriptor.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

// Calls MakeChange once, when somebody opens or reads File for the nth time; whoever does waits for
// it. The kernel asks this object before it lets them. Needs root.
//
// Requires: MakeChange itself neither opens nor reads File. Errors: what MakeChange throws ends the
// test's program.
class ReadGate {
public:
    struct Moment {
        // At an opening, otherwise at a read; reading the end of the file counts too.
        bool bOpening = false;
        int Nth = 1;
    };

    ReadGate(const std::filesystem::path& File, Moment When, std::function<void()> MakeChange);
    // Lets everybody pass.
    ~ReadGate();
    ReadGate(const ReadGate&) = delete;
    ReadGate& operator=(const ReadGate&) = delete;

    // Whether the change has been made.
    bool WasReached() const { return bReached; }

private:
    void Serve();
    void AnswerOne();

    const std::function<void()> Change;
    int Remaining;
    std::atomic<bool> bReached{false};
    // Closing it lets everybody pass.
    OwnedDescriptor Events;
    OwnedDescriptor Stop;
    std::thread Server;
};
