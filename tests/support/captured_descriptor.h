// Standard output or standard error of the test itself, led elsewhere for a while.

#pragma once

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>
#include <utility>

// While it lives, what is written to Descriptor goes to Replacement or, without one, is kept. The
// test framework writes there too, so expect nothing meanwhile.
//
// Errors: what cannot be set up throws std::system_error.
class CapturedDescriptor {
public:
    explicit CapturedDescriptor(int DescriptorToCapture)
        : CapturedDescriptor(DescriptorToCapture, memfd_create("captured", MFD_CLOEXEC)) {}
    // Takes Replacement over.
    CapturedDescriptor(int DescriptorToCapture, int Replacement)
        : Captured(DescriptorToCapture), Kept(Replacement) {
        std::fflush(nullptr);
        Before = fcntl(Captured, F_DUPFD_CLOEXEC, 0);
        if (Kept < 0 || Before < 0 || dup2(Kept, Captured) < 0) {
            throw std::system_error(errno, std::generic_category(), "capturing a descriptor");
        }
    }
    ~CapturedDescriptor() {
        std::fflush(nullptr);
        dup2(Before, Captured);
        close(Before);
        close(Kept);
    }
    CapturedDescriptor(const CapturedDescriptor&) = delete;
    CapturedDescriptor& operator=(const CapturedDescriptor&) = delete;

    // All that was kept so far. Requires: there is no replacement.
    std::string Text() const {
        std::string text(static_cast<std::size_t>(lseek(Kept, 0, SEEK_END)), '\0');
        const ssize_t size = pread(Kept, text.data(), text.size(), 0);
        text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return text;
    }

private:
    int Captured;
    int Kept;
    int Before = -1;
};

// The end of a pipe that is written to, whose reader has gone. Whoever writes gets EPIPE where
// SIGPIPE is ignored.
inline int BrokenPipe() {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) == 0) {
        close(ends[0]);
    }
    return ends[1];
}

// A pipe that takes nothing more, as behind a reader that is busy. The reader's end comes first.
inline std::pair<int, int> FullPipe() {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
        const std::string page(4096, '.');
        while (write(ends[1], page.data(), page.size()) > 0) {}
    }
    return {ends[0], ends[1]};
}

// What the reader of a pipe that does not wait finds in it now.
inline std::string ReadPipe(int Reader) {
    std::string text;
    std::array<char, 4096> bytes{};
    for (ssize_t size = 0; (size = read(Reader, bytes.data(), bytes.size())) > 0;) {
        text.append(bytes.data(), static_cast<std::size_t>(size));
    }
    return text;
}
