// syncfs, fsync and sync as a test wants them, at the link. The processes that a test starts
// inherit its instructions.
//
// Requires: the executable wraps syncfs, fsync and sync, and links fake_syncfs.cpp.

#pragma once

#include <functional>

// Stands in for the real calls for its lifetime; one object at a time. A call without an
// instruction is the real one.
class FakeSyncfs {
public:
    FakeSyncfs();
    ~FakeSyncfs();
    FakeSyncfs(const FakeSyncfs&) = delete;
    FakeSyncfs& operator=(const FakeSyncfs&) = delete;

    // The first two return what the calls return, with errno set.
    std::function<int(int Descriptor)> Syncfs;
    std::function<int(int Descriptor)> Fsync;
    std::function<void()> Sync;

    // Instructions for those two.
    static std::function<int(int)> FailWith(int Error);
    // Waits until the process is killed.
    static int NeverEnd(int Descriptor);
};
