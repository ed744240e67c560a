// A file for a library that writes to nothing else.

#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

class MemoryFile {
public:
    // Errors: std::system_error.
    MemoryFile() {
        const int descriptor = memfd_create("frame", MFD_CLOEXEC);
        File.reset(descriptor < 0 ? nullptr : fdopen(descriptor, "w+"));
        if (!File) {
            const int error = errno;
            close(descriptor);
            throw std::system_error(error, std::generic_category(), "memfd_create");
        }
    }

    std::FILE* Stream() const { return File.get(); }

    // What has been written since, past the stream's own buffer.
    std::string Take() {
        const int descriptor = fileno(File.get());
        const off_t size = lseek(descriptor, 0, SEEK_END);
        std::string bytes(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
        const ssize_t count = pread(descriptor, bytes.data(), bytes.size(), 0);
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        if (ftruncate(descriptor, 0) == 0) {
            lseek(descriptor, 0, SEEK_SET);
        }
        return bytes;
    }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> File{nullptr, std::fclose};
};
