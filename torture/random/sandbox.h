// Where the trees of the cases stand: two file systems in memory that no other process sees.

#pragma once

#include "model_files.h"

#include <string>

// Takes the process into a mount table of its own, which needs one thread and either root or user
// namespaces. Where neither is to be had, the trees stand in /dev/shm and have no other file
// system.
class Sandbox {
public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    // The directory "far" in it is the other file system.
    const std::string& Root() const { return RootPath; }
    bool HasOtherFileSystem() const { return bMounted; }
    ListingOrder Order() const { return OrderOfListing; }

private:
    std::string Base;
    std::string RootPath;
    bool bMounted;
    ListingOrder OrderOfListing;
};
