// Lists one directory without readdir, because opendir makes a status query of its own.

#pragma once

#include "owned_descriptor.h"

#include <cstddef>
#include <utility>
#include <vector>

#include <dirent.h>

class DirectoryReader {
public:
    // What the entries are read into; it can be used again when the reader is gone.
    using Buffer = std::vector<std::byte>;

    // Of a directory that has just been opened; without one, errno says why.
    DirectoryReader(OwnedDescriptor Opened, Buffer& BufferToUse);

    // The errno of the call that failed last, or 0.
    int Error() const { return LastError; }
    int Descriptor() const { return Directory.Get(); }
    // Requires: it is not read any more.
    OwnedDescriptor Release() { return std::move(Directory); }

    // The next entry other than "." and "..", valid until the next call; nothing at the end, and
    // when there is an error.
    const dirent64* Next();

private:
    bool Fill();

    Buffer& Entries;
    OwnedDescriptor Directory;
    int LastError = 0;
    std::size_t Length = 0;
    std::size_t Position = 0;
};
