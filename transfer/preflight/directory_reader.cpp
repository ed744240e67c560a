#include "directory_reader.h"

#include <cerrno>
#include <string_view>

namespace {

constexpr std::size_t kBufferBytes = 65536;

bool IsDotOrDotDot(std::string_view Name) {
    return Name == "." || Name == "..";
}

} // namespace

DirectoryReader::DirectoryReader(OwnedDescriptor Opened, Buffer& BufferToUse)
    : Entries(BufferToUse), Directory(std::move(Opened)) {
    if (Descriptor() < 0) {
        LastError = errno;
    }
    Entries.resize(kBufferBytes);
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
    const ssize_t read = ::getdents64(Descriptor(), Entries.data(), Entries.size());
    if (read < 0) {
        LastError = errno;
    }
    Position = 0;
    Length = read > 0 ? static_cast<std::size_t>(read) : 0;
    return Length > 0;
}
