// A CD drive at the link: calls of open, ioctl and close that concern its device reach the test's
// drive instead of the system.
//
// Requires: the executable wraps open, ioctl and close, and links fake_drive.cpp and fake_disc.cpp.

#pragma once

#include "fake_disc.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

// The drive of one test, "/dev/fake-cd", for the lifetime of the object; one object at a time.
//
// Threads: one thread at a time may use the drive.
class ScopedDrive {
public:
    explicit ScopedDrive(FakeDisc Disc);
    ~ScopedDrive();
    ScopedDrive(const ScopedDrive&) = delete;
    ScopedDrive& operator=(const ScopedDrive&) = delete;

    FakeDisc& Disc() { return Drive.Discs.front(); }

    // Every call that reached the drive, in order: "open", "header", "entry 3", "read 150 16",
    // "close".
    std::vector<std::string> Calls;
    // The flags of every open.
    std::vector<int> OpenFlags;
    // The error of every open, 0 to let it succeed; those beyond the last one succeed.
    std::vector<int> OpenErrors;
    // What every successful close leaves in errno; 0 leaves errno alone.
    int ErrnoAfterClose = 0;
    // Called with each entry of Calls before the call is answered.
    std::function<void(const std::string& Call)> Before;

    std::size_t OpenDescriptors() const { return Descriptors.size(); }
    // The reads among Calls.
    std::vector<std::string> Reads() const;

    // For the replaced calls only. Each returns what the call returns, with errno set.
    bool Owns(int Descriptor) const { return Descriptors.count(Descriptor) != 0; }
    int Open(int Flags);
    int Request(unsigned long Code, void* Argument);
    int Close(int Descriptor);

private:
    void Record(const std::string& Call);

    FakeDrive Drive;
    std::set<int> Descriptors;
};

inline const char* const kFakeDevice = "/dev/fake-cd";
