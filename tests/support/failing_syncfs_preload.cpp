// Preloaded into a program, this is a disk whose last writes fail: a flush waits for as many
// milliseconds as FAILING_SYNCFS_MS says and then reports an input/output error.

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

extern "C" __attribute__((visibility("default"))) int syncfs(int /*Descriptor*/) {
    const char* milliseconds = std::getenv("FAILING_SYNCFS_MS");
    std::this_thread::sleep_for(
        std::chrono::milliseconds(milliseconds == nullptr ? 0 : std::atoi(milliseconds)));
    errno = EIO;
    return -1;
}
