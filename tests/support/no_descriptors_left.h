// A process that can open nothing more, which fails the opening of a directory as no permission
// does not.

#pragma once

#include "require_success.h"

#include <sys/resource.h>

// Every open fails with EMFILE for the lifetime of this object. The asan preset leaves out the
// check of dynamic types, which would fail as well: it opens a pipe to look at an object.
class NoDescriptorsLeft {
public:
    NoDescriptorsLeft() {
        RequireSuccess(::getrlimit(RLIMIT_NOFILE, &Previous), "reading RLIMIT_NOFILE");
        const rlimit none{0, Previous.rlim_max};
        RequireSuccess(::setrlimit(RLIMIT_NOFILE, &none), "setting RLIMIT_NOFILE");
    }

    ~NoDescriptorsLeft() { ::setrlimit(RLIMIT_NOFILE, &Previous); }
    NoDescriptorsLeft(const NoDescriptorsLeft&) = delete;
    NoDescriptorsLeft& operator=(const NoDescriptorsLeft&) = delete;

private:
    rlimit Previous{};
};
