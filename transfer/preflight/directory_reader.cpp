#include "directory_reader.h"

#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::size_t kBufferBytes = 65536;

bool IsDotOrDotDot(std::string_view Name) {
    return Name == "." || Name == "..";
}

} // namespace

DirectoryReader::DirectoryReader(const std::string& Path, Buffer& BufferToUse)
    : Entries(BufferToUse),
      OpenDirectory(::open(Path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC)) {
    if (OpenDirectory < 0) {
        LastError = errno;
    }
    Entries.resize(kBufferBytes);
}

DirectoryReader::~DirectoryReader() {
    if (OpenDirectory >= 0) {
        ::close(OpenDirectory);
    }
}

const dirent64* DirectoryReader::Next() {
    while (Position < Length || Fill()) {
        const void* record = &Entries[Position];
        const auto* entry = static_cast<const dirent64*>(record);
        Position += entry->d_reclen;
        if (!IsDotOrDotDot(entry->d_name)) {
            return entry;
        }
    }
    return nullptr;
}

bool DirectoryReader::Fill() {
    const ssize_t read = ::getdents64(OpenDirectory, Entries.data(), Entries.size());
    if (read < 0) {
        LastError = errno;
    }
    Position = 0;
    Length = read > 0 ? static_cast<std::size_t>(read) : 0;
    return Length > 0;
}
