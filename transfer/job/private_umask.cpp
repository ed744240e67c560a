#include "private_umask.h"

#include <charconv>
#include <fstream>
#include <mutex>
#include <optional>
#include <sched.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace {

constexpr mode_t kPrivate = S_IRWXG | S_IRWXO;

// The program's umask while it is private for those who have none of their own.
struct ProgramUmask {
    std::mutex Mutex;
    int Users = 0;
    // What the user has chosen. Requires: there are users.
    mode_t Before = 0;
};

ProgramUmask gProgramUmask;

// Nothing where the system does not tell it.
std::optional<mode_t> ReadUmask() {
    constexpr std::string_view kLabel = "Umask:\t";
    std::ifstream status("/proc/thread-self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(kLabel)) {
            constexpr int kOctal = 8;
            mode_t umask = 0;
            const char* const end = line.data() + line.size();
            const auto read = std::from_chars(line.data() + kLabel.size(), end, umask, kOctal);
            return read.ec == std::errc() ? std::optional(umask) : std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace

mode_t UserUmask() {
    const std::lock_guard lock(gProgramUmask.Mutex);
    if (gProgramUmask.Users > 0) {
        return gProgramUmask.Before;
    }
    if (const std::optional<mode_t> told = ReadUmask()) {
        return *told;
    }
    const mode_t current = ::umask(kPrivate);
    ::umask(current);
    return current;
}

PrivateUmask::PrivateUmask() : bOwn(::unshare(CLONE_FS) == 0) {
    if (bOwn) {
        Before = ::umask(kPrivate);
        return;
    }
    const std::lock_guard lock(gProgramUmask.Mutex);
    if (gProgramUmask.Users++ == 0) {
        gProgramUmask.Before = ::umask(kPrivate);
    }
}

PrivateUmask::~PrivateUmask() {
    if (bOwn) {
        ::umask(Before);
        return;
    }
    const std::lock_guard lock(gProgramUmask.Mutex);
    if (--gProgramUmask.Users == 0) {
        ::umask(gProgramUmask.Before);
    }
}
