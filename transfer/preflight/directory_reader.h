// Lists one directory without readdir, because opendir makes a status query of its own.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <dirent.h>

class DirectoryReader {
public:
    // What the entries are read into; it can be used again when the reader is gone.
    using Buffer = std::vector<std::byte>;

    DirectoryReader(const std::string& Path, Buffer& BufferToUse);
    ~DirectoryReader();
    DirectoryReader(const DirectoryReader&) = delete;
    DirectoryReader& operator=(const DirectoryReader&) = delete;

    // The errno of the call that failed last, or 0.
    int Error() const { return LastError; }
    int Descriptor() const { return OpenDirectory; }

    // The next entry other than "." and "..", valid until the next call; nothing at the end, and
    // when there is an error.
    const dirent64* Next();

private:
    bool Fill();

    Buffer& Entries;
    int OpenDirectory;
    int LastError = 0;
    std::size_t Length = 0;
    std::size_t Position = 0;
};
