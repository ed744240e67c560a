#include "destination_facts.h"

#include "full_path.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kMaxFatFileBytes = 0xFFFFFFFF;
constexpr std::uint64_t kFixedAttributes = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;

bool MayAccess(const fs::path& Path, int Access) {
    return ::faccessat(AT_FDCWD, Path.c_str(), Access, AT_EACCESS) == 0;
}

// The status of the entry itself when it is a link.
bool QueryEntry(const fs::path& Path, struct statx& OutStatus) {
    return ::statx(AT_FDCWD, Path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_MNT_ID,
                   &OutStatus) == 0;
}

// In a directory that many share, entries belong to their owners.
bool MayTakeFrom(const fs::path& Directory, const struct statx& Entry) {
    struct stat directory {};
    if (!MayChangeDirectory(Directory) || ::stat(Directory.c_str(), &directory) != 0) {
        return false;
    }
    const uid_t user = ::geteuid();
    const bool bShared = (directory.st_mode & S_ISVTX) != 0;
    return !bShared || user == 0 || user == directory.st_uid || user == Entry.stx_uid;
}

std::vector<FileIdentity> LineageOf(const fs::path& Directory) {
    std::error_code ec;
    std::vector<FileIdentity> lineage;
    for (fs::path path = fs::canonical(Directory, ec); !path.empty(); path = path.parent_path()) {
        struct stat status {};
        if (::stat(path.c_str(), &status) == 0) {
            lineage.push_back(IdentityOf(status));
        }
        if (!path.has_relative_path()) {
            break;
        }
    }
    return lineage;
}

void AddFileSystemFacts(DestinationFacts& OutFacts) {
    struct statfs fileSystem {};
    if (::statfs(OutFacts.Directory.c_str(), &fileSystem) != 0) {
        return;
    }
    // File systems without a size of their own say 0.
    if (fileSystem.f_blocks > 0 && fileSystem.f_frsize > 0) {
        OutFacts.BlockBytes = static_cast<std::uint64_t>(fileSystem.f_frsize);
        OutFacts.FreeBytes = fileSystem.f_bavail * OutFacts.BlockBytes;
    }
    if (fileSystem.f_type == MSDOS_SUPER_MAGIC) {
        OutFacts.MaxFileBytes = kMaxFatFileBytes;
    }
    // An overlay copies directories of its lower layers on a rename, or refuses.
    OutFacts.bRenamesDirectories = fileSystem.f_type != OVERLAYFS_SUPER_MAGIC;
}

} // namespace

DestinationFacts FactsOf(const fs::path& Directory) {
    DestinationFacts facts;
    facts.Directory = Directory;
    facts.bWritable = MayChangeDirectory(Directory);
    // The slash leads through a link to the directory.
    struct statx status {};
    if (QueryEntry(Directory / "", status)) {
        facts.Device = makedev(status.stx_dev_major, status.stx_dev_minor);
        facts.MountId = status.stx_mnt_id;
    }
    AddFileSystemFacts(facts);
    facts.Lineage = LineageOf(Directory);
    return facts;
}

bool MayChangeDirectory(const fs::path& Directory) {
    return MayAccess(Directory, W_OK | X_OK);
}

bool CanBeRenamed(const fs::path& Source, const DestinationFacts& Destination) {
    struct statx status {};
    if (!QueryEntry(Source, status)) {
        return false;
    }
    const bool bSameMount =
        makedev(status.stx_dev_major, status.stx_dev_minor) == Destination.Device &&
        status.stx_mnt_id == Destination.MountId;
    const bool bFixed = (status.stx_attributes & kFixedAttributes) != 0;
    if (!bSameMount || bFixed || !Destination.bWritable || !MayTakeFrom(ParentOf(Source), status)) {
        return false;
    }
    // A directory must be writable itself, for its link to the directory above.
    return !S_ISDIR(status.stx_mode) ||
           (Destination.bRenamesDirectories && MayAccess(Source, W_OK));
}
