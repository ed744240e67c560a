// Replaces calls of _exit and raise in programs that are measured; see coverage.cmake.

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
