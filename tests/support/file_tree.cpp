#include "file_tree.h"

#include "require_success.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace {

constexpr std::size_t kShownBytes = 64;

// FNV-1a: enough to tell two contents of a test apart.
std::uint64_t Checksum(std::string_view Bytes) {
    std::uint64_t sum = 14695981039346656037U;
    for (const char byte : Bytes) {
        sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
    return sum;
}

std::string DescribeContents(const std::string& Bytes) {
    if (Bytes.size() <= kShownBytes) {
        return "file " + Bytes;
    }
    return "file of " + std::to_string(Bytes.size()) + " bytes, checksum " +
           std::to_string(Checksum(Bytes));
}

std::string Describe(const std::filesystem::path& Path) {
    struct stat info {};
    RequireSuccess(::lstat(Path.c_str(), &info), "describing " + Path.string());
    switch (info.st_mode & S_IFMT) {
    case S_IFDIR:
        return "dir";
    case S_IFREG:
        return DescribeContents(ReadFile(Path));
    case S_IFLNK:
        return "link " + std::filesystem::read_symlink(Path).string();
    case S_IFIFO:
        return "fifo";
    case S_IFSOCK:
        return "socket";
    default:
        return "device";
    }
}

} // namespace

Tree TreeOf(const std::filesystem::path& Root) {
    Tree tree;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Root)) {
        const std::filesystem::path name = entry.path().lexically_relative(Root);
        tree[name.string()] = Describe(entry.path());
    }
    return tree;
}

void WriteFile(const std::filesystem::path& Path, std::string_view Bytes) {
    std::filesystem::create_directories(Path.parent_path());
    std::ofstream out(Path, std::ios::binary | std::ios::trunc);
    out.write(Bytes.data(), static_cast<std::streamsize>(Bytes.size()));
    out.close();
    if (!out) {
        throw std::runtime_error("writing " + Path.string() + " failed");
    }
}

std::string ReadFile(const std::filesystem::path& Path) {
    std::ifstream in(Path, std::ios::binary);
    if (!in) {
        throw std::runtime_error("opening " + Path.string() + " failed");
    }
    std::string bytes(std::filesystem::file_size(Path), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

std::string PatternBytes(std::size_t Size) {
    std::string bytes(Size, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

void SetModifiedTime(const std::filesystem::path& Path, std::int64_t Seconds,
                     std::int64_t Nanoseconds) {
    const timespec times[2] = {{0, UTIME_OMIT}, {Seconds, Nanoseconds}};
    RequireSuccess(::utimensat(AT_FDCWD, Path.c_str(), times, 0), "dating " + Path.string());
}

void MakeFifo(const std::filesystem::path& Path) {
    RequireSuccess(::mkfifo(Path.c_str(), 0644), "creating the fifo " + Path.string());
}

void MakeSocket(const std::filesystem::path& Path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, Path.c_str(), sizeof(address.sun_path) - 1);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    const int result = ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    ::close(fd);
    RequireSuccess(result, "creating the socket " + Path.string());
}

std::vector<std::filesystem::path> ListingOf(const std::filesystem::path& Directory) {
    std::vector<std::filesystem::path> entries;
    for (const auto& entry : std::filesystem::directory_iterator(Directory)) {
        entries.push_back(entry.path());
    }
    return entries;
}
