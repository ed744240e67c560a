// Is in each program that is measured; see coverage.cmake.

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

// A program that is killed while it writes its counters spoils those of one source for good, so
// each name of a program has counters of its own: the unit tests, which nobody kills, keep theirs.
// A test may have said where, for a user who must not write here. The program is not ready for
// anything yet, allocations included.
[[gnu::constructor]] void CountApart() {
    const char* const given = std::getenv("GCOV_PREFIX");
    if (given != nullptr && std::string_view(given).rfind(TARVANE_COUNTERS, 0) != 0) {
        return;
    }
    const bool bReplaces = true;
    std::array<char, PATH_MAX> folder{};
    std::snprintf(folder.data(), folder.size(), "%s/%s", TARVANE_COUNTERS,
                  program_invocation_short_name);
    setenv("GCOV_PREFIX", folder.data(), bReplaces);
}

} // namespace

extern "C" {

void __gcov_dump();
void __gcov_reset();
[[noreturn]] void __real__exit(int Status);
[[noreturn]] void __wrap__exit(int Status);
int __real_raise(int Signal);
int __wrap_raise(int Signal);

void __wrap__exit(int Status) {
    __gcov_dump();
    __real__exit(Status);
}

// A program that the signal only stops goes on counting, from nothing.
int __wrap_raise(int Signal) {
    __gcov_dump();
    __gcov_reset();
    return __real_raise(Signal);
}
}
