// A file system that stops answering, like a network share whose server is gone.

#pragma once

#include "mounts.h"
#include "owned_descriptor.h"

#include <atomic>
#include <filesystem>
#include <thread>

// Shows an empty root directory and answers nothing beyond its status. Whoever asks for more is
// held in a sleep that not even SIGKILL ends, until this object is destroyed. Needs root and
// /dev/fuse.
//
// Requires: a mount namespace of the test's own.
class HangingFileSystem {
public:
    // A mount point that is missing is created.
    explicit HangingFileSystem(const std::filesystem::path& Where);
    // Lets go of everybody.
    ~HangingFileSystem();
    HangingFileSystem(const HangingFileSystem&) = delete;
    HangingFileSystem& operator=(const HangingFileSystem&) = delete;

    const std::filesystem::path& Path() const { return Mount.Path(); }
    // Whether somebody is held.
    bool IsHolding() const { return bHolding; }

private:
    void Serve();
    // The requests that are answered, so that the mount works at all; false for the others.
    bool Answer(const char* Request);

    std::atomic<bool> bHolding{false};
    // Closing it ends the file system, and what waits for it with an error.
    OwnedDescriptor Device;
    OwnedDescriptor Stop;
    ScopedMount Mount;
    std::thread Server;
};
