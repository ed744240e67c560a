#include "fake_utimensat.h"

#include <cerrno>
#include <ctime>

namespace {

std::function<int()> gBeforeTimes;

} // namespace

extern "C" {
int __real_utimensat(int Folder, const char* Name, const timespec* Times, int Flags);
int __wrap_utimensat(int Folder, const char* Name, const timespec* Times, int Flags);
}

int __wrap_utimensat(int Folder, const char* Name, const timespec* Times, int Flags) {
    const int error = gBeforeTimes ? gBeforeTimes() : 0;
    if (error != 0) {
        errno = error;
        return -1;
    }
    return __real_utimensat(Folder, Name, Times, Flags);
}

FakeUtimensat::FakeUtimensat(std::function<int()> Before) {
    gBeforeTimes = std::move(Before);
}

FakeUtimensat::~FakeUtimensat() {
    gBeforeTimes = nullptr;
}
