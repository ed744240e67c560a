// Whether something has changed in the directories that are looked at.

#pragma once

#include "owned_descriptor.h"

#include <filesystem>

// Notices entries that come, go, or change, in the directory that was last given to a
// ListingReader with this watch's descriptor: the reader's process asks the kernel to watch it,
// as a file system that does not answer would hold whoever asks.
//
// Threads: one.
// Errors: where the kernel watches nothing, nothing is noticed.
class FolderWatch {
public:
    FolderWatch();

    // For poll, and for ListingReader. -1 where there is none.
    int Fd() const { return Watch.Get(); }
    // Takes all that has been noticed. Whether there was anything.
    bool TakeChange();

private:
    OwnedDescriptor Watch;
};

// In the reader's process: watches Place from now on, and what was watched before no longer.
void WatchOnly(int Watch, const std::filesystem::path& Place);
