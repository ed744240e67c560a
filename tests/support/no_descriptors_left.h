// A process that can open nothing more, which fails the opening of a directory as no permission
// does not.

#pragma once

#include <sys/resource.h>

#include <cerrno>
#include <system_error>

// Every open fails with EMFILE for the lifetime of this object. The asan preset leaves out the
// check of dynamic types, which would fail as well: it opens a pipe to look at an object.
class NoDescriptorsLeft {
public:
    NoDescriptorsLeft() {
        if (::getrlimit(RLIMIT_NOFILE, &Previous) != 0) {
            throw std::system_error(errno, std::generic_category(), "reading RLIMIT_NOFILE");
        }
        const rlimit none{0, Previous.rlim_max};
        if (::setrlimit(RLIMIT_NOFILE, &none) != 0) {
            throw std::system_error(errno, std::generic_category(), "setting RLIMIT_NOFILE");
        }
    }

    ~NoDescriptorsLeft() { ::setrlimit(RLIMIT_NOFILE, &Previous); }
    NoDescriptorsLeft(const NoDescriptorsLeft&) = delete;
    NoDescriptorsLeft& operator=(const NoDescriptorsLeft&) = delete;

private:
    rlimit Previous{};
};
