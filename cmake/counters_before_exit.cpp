// Replaces calls of _exit in programs that are measured; see coverage.cmake.

extern "C" {

void __gcov_dump();
[[noreturn]] void __real__exit(int Status);
[[noreturn]] void __wrap__exit(int Status);

void __wrap__exit(int Status) {
    __gcov_dump();
    __real__exit(Status);
}
}
