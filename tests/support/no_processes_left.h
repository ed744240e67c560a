// A user who may start no process more.

#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

// Every fork fails with EAGAIN for the lifetime of this object. Root, whom the limit does not
// concern, becomes nobody meanwhile.
class NoProcessesLeft {
public:
    NoProcessesLeft() {
        getrlimit(RLIMIT_NPROC, &Previous);
        const rlimit none{0, Previous.rlim_max};
        if (setrlimit(RLIMIT_NPROC, &none) != 0 || (bRoot && setresuid(kNobody, kNobody, 0) != 0)) {
            throw std::system_error(errno, std::generic_category(), "limiting processes");
        }
    }
    ~NoProcessesLeft() {
        if ((bRoot && setresuid(0, 0, 0) != 0) || setrlimit(RLIMIT_NPROC, &Previous) != 0) {
            std::abort();
        }
    }
    NoProcessesLeft(const NoProcessesLeft&) = delete;
    NoProcessesLeft& operator=(const NoProcessesLeft&) = delete;

private:
    static constexpr uid_t kNobody = 65534;

    const bool bRoot = geteuid() == 0;
    rlimit Previous{};
};
