// Which reads and writes of the system a copied file makes. The functions below stand in front of
// the system's own, also for the file streams of the C++ library.

#include "transfer_fixture.h"

#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using Calls = std::vector<std::string>;

// While it is null, nothing is listed.
Calls* gCalls = nullptr;

// Lists a call that concerns one of the two files, with the bytes that it moved.
ssize_t Listed(const char* Call, int Fd, ssize_t Bytes) {
    if (gCalls != nullptr) {
        const int callError = errno;
        std::error_code ec;
        const fs::path file = fs::read_symlink("/proc/self/fd/" + std::to_string(Fd), ec);
        if (file.filename() == "source" || file.filename() == "destination") {
            gCalls->push_back(Call + (" " + std::to_string(Bytes)));
        }
        errno = callError;
    }
    return Bytes;
}

} // namespace

ssize_t InterposedRead(int Fd, void* Bytes, std::size_t Size) asm("read");
ssize_t InterposedWrite(int Fd, const void* Bytes, std::size_t Size) asm("write");
ssize_t InterposedWritev(int Fd, const iovec* Parts, int Count) asm("writev");

ssize_t InterposedRead(int Fd, void* Bytes, std::size_t Size) {
    return Listed("read", Fd, ::syscall(SYS_read, Fd, Bytes, Size));
}

ssize_t InterposedWrite(int Fd, const void* Bytes, std::size_t Size) {
    return Listed("write", Fd, ::syscall(SYS_write, Fd, Bytes, Size));
}

// The streams hand what they hold and what is new to one call, which is one write.
ssize_t InterposedWritev(int Fd, const iovec* Parts, int Count) {
    return Listed("write", Fd, ::syscall(SYS_writev, Fd, Parts, Count));
}

namespace {

class BlockCalls : public TransferTest {
protected:
    Calls CallsForSize(std::size_t Size) {
        const fs::path source = Directory / "source";
        const fs::path destination = Directory / "destination";
        const std::string bytes = PatternBytes(Size);
        WriteFile(source, bytes);
        Calls calls;
        gCalls = &calls;
        RunTarvaneTransferJob(SharedJob, PlanOf(kCopy, {{source, destination}}));
        gCalls = nullptr;
        EXPECT_TRUE(ReadFile(destination) == bytes);
        return calls;
    }
};

TEST_F(BlockCalls, AreOneReadAndOneWriteForEachBlock) {
    EXPECT_EQ(
        CallsForSize(1024 * 1024 + 5),
        (Calls{"read 262144", "write 262144", "read 262144", "write 262144", "read 262144",
               "write 262144", "read 262144", "write 262144", "read 5", "read 0", "write 5"}));
}

TEST_F(BlockCalls, EndWithAnEmptyReadAfterAWholeBlock) {
    EXPECT_EQ(CallsForSize(262144), (Calls{"read 262144", "write 262144", "read 0"}));
}

TEST_F(BlockCalls, AreOneReadAndOneWriteForASmallFile) {
    EXPECT_EQ(CallsForSize(2000), (Calls{"read 2000", "read 0", "write 2000"}));
}

// So few bytes pass through the stream's own buffer.
TEST_F(BlockCalls, AreOneReadAndOneWriteForATinyFile) {
    EXPECT_EQ(CallsForSize(100), (Calls{"read 100", "read 0", "write 100"}));
}

TEST_F(BlockCalls, WriteNothingForAnEmptyFile) {
    EXPECT_EQ(CallsForSize(0), (Calls{"read 0"}));
}

} // namespace
