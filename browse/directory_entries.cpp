#include "directory_entries.h"

#include "owned_descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <string_view>

int ForEachEntry(int Directory, const std::function<void(const dirent& Entry)>& Take) {
    // The copy is closed with the stream.
    const int copy = fcntl(Directory, F_DUPFD_CLOEXEC, 0);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(copy < 0 ? nullptr : fdopendir(copy),
                                                     closedir);
    if (stream == nullptr) {
        const int error = errno;
        const OwnedDescriptor closed(copy);
        return error;
    }
    errno = 0;
    while (const dirent* entry = readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            Take(*entry);
        }
        errno = 0;
    }
    return errno;
}
