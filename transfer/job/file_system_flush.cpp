#include "file_system_flush.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::optional<MountIdentity> IdentityOf(int Directory, const char* Path, int Flags) {
    struct statx status {};
    if (::statx(Directory, Path, Flags, STATX_MNT_ID, &status) != 0) {
        return std::nullopt;
    }
    return MountIdentity{makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_mnt_id};
}

FlushReply FlushInput() {
    FlushReply reply;
    if (::syncfs(STDIN_FILENO) == 0) {
        // Some file systems leave what they have written in the cache of the device otherwise.
        // Others have no such call for directories.
        reply.bDevice = ::fsync(STDIN_FILENO) == 0;
        reply.Error = reply.bDevice || errno == EINVAL ? 0 : errno;
    } else if (errno == EBADF) {
        // The directory must not be read, so all file systems are flushed.
        ::sync();
    } else {
        reply.Error = errno;
    }
    return reply;
}

std::optional<std::size_t> FindDisplaced(const std::vector<fs::path>& Paths) {
    const std::optional<MountIdentity> opened = IdentityOf(STDIN_FILENO, "", AT_EMPTY_PATH);
    for (std::size_t i = 0; i < Paths.size(); ++i) {
        const std::optional<MountIdentity> found = MountIdentityOf(Paths[i]);
        const bool bMayBeMissing = i > 0;
        if (found ? found != opened : !bMayBeMissing) {
            return i;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<MountIdentity> MountIdentityOf(const fs::path& Path) {
    constexpr int kFollowLinks = 0;
    return IdentityOf(AT_FDCWD, Path.c_str(), kFollowLinks);
}

OwnedDescriptor OpenForFlush(const fs::path& Directory) {
    constexpr int kFlags = O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;
    OwnedDescriptor opened(::open(Directory.c_str(), O_RDONLY | kFlags));
    return opened.Get() >= 0 ? std::move(opened)
                             : OwnedDescriptor(::open(Directory.c_str(), O_PATH | kFlags));
}

WorkerProcess::Work FlushOf(const std::vector<fs::path>& Paths) {
    return [Paths, reply = FlushReply()]() mutable {
        reply = FlushInput();
        reply.Displaced = FindDisplaced(Paths);
        return AsReply(reply);
    };
}
