// Comparing two files by content: every failure reads as a difference.

#include "engine_source.h"

#include "link_names.h"
#include "mounts.h"
#include "transfer_fixture.h"

#include <fstream>
#include <malloc.h>

std::istream& RealRead(std::istream* In, char* Buffer, std::streamsize Size) REAL(StreamRead);
std::istream& WrappedRead(std::istream* In, char* Buffer, std::streamsize Size) WRAPPED(StreamRead);

namespace {

// Looks at the buffer of every read before it is filled.
std::function<void(const char* Buffer, std::size_t Size)> gBeforeRead;

class ContentComparison : public TransferTest {
protected:
    bool Same(std::string_view SourceBytes, std::string_view DestinationBytes) {
        WriteFile(Source, SourceBytes);
        WriteFile(Destination, DestinationBytes);
        return LocalFilesHaveSameContent(Source, Destination);
    }

    const fs::path Source = Directory / "source";
    const fs::path Destination = Directory / "destination";
};

TEST_F(ContentComparison, FindsTwoEmptyFilesTheSame) {
    EXPECT_TRUE(Same("", ""));
}

TEST_F(ContentComparison, FindsEqualBytesTheSame) {
    EXPECT_TRUE(Same("0123456789", "0123456789"));
}

TEST_F(ContentComparison, FindsDifferentSizesDifferent) {
    EXPECT_FALSE(Same("0123456789", "012345678"));
    EXPECT_FALSE(Same("", "0"));
}

TEST_F(ContentComparison, FindsADifferenceInTheLastByte) {
    EXPECT_FALSE(Same("0123456789", "012345678X"));
}

TEST_F(ContentComparison, FindsADifferenceInTheFirstByte) {
    EXPECT_FALSE(Same("0123456789", "X123456789"));
}

// Around the size of the read buffers, where a block boundary could hide a byte.
TEST_F(ContentComparison, ComparesEveryBlock) {
    for (const std::size_t size :
         {kTransferBufferBytes - 1, kTransferBufferBytes, kTransferBufferBytes + 1,
          3 * kTransferBufferBytes, 3 * kTransferBufferBytes + 17}) {
        const std::string bytes = PatternBytes(size);
        EXPECT_TRUE(Same(bytes, bytes)) << size;
        std::string changed = bytes;
        changed.back() = static_cast<char>(changed.back() ^ 1);
        EXPECT_FALSE(Same(bytes, changed)) << size;
    }
}

TEST_F(ContentComparison, FindsADifferenceInAMiddleBlock) {
    const std::string bytes = PatternBytes(3 * kTransferBufferBytes);
    std::string changed = bytes;
    changed[kTransferBufferBytes] = static_cast<char>(changed[kTransferBufferBytes] ^ 1);
    EXPECT_FALSE(Same(bytes, changed));
}

TEST_F(ContentComparison, FindsAMissingSourceDifferent) {
    WriteFile(Destination, "");
    EXPECT_FALSE(LocalFilesHaveSameContent(Source, Destination));
}

TEST_F(ContentComparison, FindsAMissingDestinationDifferent) {
    WriteFile(Source, "");
    EXPECT_FALSE(LocalFilesHaveSameContent(Source, Destination));
}

TEST_F(ContentComparison, FindsADirectoryDifferent) {
    WriteFile(Source, "");
    fs::create_directory(Destination);
    EXPECT_FALSE(LocalFilesHaveSameContent(Source, Destination));
    EXPECT_FALSE(LocalFilesHaveSameContent(Destination, Source));
}

TEST_F(ContentComparison, FindsFilesThatMayNotBeReadDifferent) {
    WriteFile(Source, "same");
    WriteFile(Destination, "same");
    const fs::path secret = Directory / "secret";
    WriteFile(secret, "same");
    fs::permissions(secret, fs::perms::none);
    const ActingAsNobody nobody;
    EXPECT_TRUE(LocalFilesHaveSameContent(Source, Destination));
    EXPECT_FALSE(LocalFilesHaveSameContent(secret, Destination));
    EXPECT_FALSE(LocalFilesHaveSameContent(Source, secret));
}

// The process's own memory is a regular file of no size whose first bytes cannot be read.
TEST_F(ContentComparison, FindsAFileThatFailsWhileItIsReadDifferent) {
    WriteFile(Destination, "");
    EXPECT_FALSE(LocalFilesHaveSameContent("/proc/self/mem", Destination));
    EXPECT_FALSE(LocalFilesHaveSameContent(Destination, "/proc/self/mem"));
}

// Files of the kernel say that they have no size, and then have contents.
TEST_F(ContentComparison, TrustsTheBytesThatAreReadMoreThanTheSize) {
    WriteFile(Destination, "");
    EXPECT_FALSE(LocalFilesHaveSameContent("/proc/version", Destination));
    EXPECT_FALSE(LocalFilesHaveSameContent(Destination, "/proc/version"));
    EXPECT_TRUE(LocalFilesHaveSameContent("/proc/version", "/proc/self/../version"));
}

// The same kind of file tells whether files of different sizes are read at all.
TEST_F(ContentComparison, DoesNotReadFilesOfDifferentSizes) {
    std::ifstream version("/proc/version");
    std::string line;
    std::getline(version, line);
    WriteFile(Destination, line + "\n");
    EXPECT_FALSE(LocalFilesHaveSameContent("/proc/version", Destination));
    EXPECT_FALSE(LocalFilesHaveSameContent(Destination, "/proc/version"));
}

// Fresh memory is dirty here, as it is in a program that has run for a while.
TEST_F(ContentComparison, ReadsIntoBuffersOfZeros) {
    constexpr int filledWith = 0x5a;
    constexpr int usualThreshold = 128 * 1024;
    ::mallopt(M_MMAP_THRESHOLD, 4 * static_cast<int>(kTransferBufferBytes));
    ::mallopt(M_PERTURB, filledWith);
    std::vector<bool> zeros;
    gBeforeRead = [&](const char* buffer, std::size_t size) {
        zeros.push_back(std::all_of(buffer, buffer + size, [](char byte) { return byte == 0; }));
    };
    EXPECT_FALSE(Same("0123456789", "012345678X"));
    gBeforeRead = nullptr;
    ::mallopt(M_PERTURB, 0);
    ::mallopt(M_MMAP_THRESHOLD, usualThreshold);
    EXPECT_EQ(zeros, (std::vector<bool>{true, true}));
}

} // namespace

std::istream& WrappedRead(std::istream* In, char* Buffer, std::streamsize Size) {
    if (gBeforeRead) {
        gBeforeRead(Buffer, static_cast<std::size_t>(Size));
    }
    return RealRead(In, Buffer, Size);
}
