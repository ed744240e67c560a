#include "destination_facts.h"

#include "full_path.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/capability.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kMaxFatFileBytes = 0xFFFFFFFF;
constexpr std::uint64_t kFixedAttributes = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;

int WhyNoAccess(const fs::path& Path, int Access) {
    return ::faccessat(AT_FDCWD, Path.c_str(), Access, AT_EACCESS) == 0 ? 0 : errno;
}

// The status of the entry itself when it is a link.
bool QueryEntry(const fs::path& Path, struct statx& OutStatus) {
    return ::statx(AT_FDCWD, Path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_MNT_ID,
                   &OutStatus) == 0;
}

// Whether this process may do with the files of others what only their owners may.
bool ActsForOwners() {
    __user_cap_header_struct header{};
    header.version = _LINUX_CAPABILITY_VERSION_3;
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
    return ::syscall(SYS_capget, &header, sets.data()) == 0 &&
           (sets[CAP_TO_INDEX(CAP_FOWNER)].effective & CAP_TO_MASK(CAP_FOWNER)) != 0;
}

// In a directory that many share, entries belong to their owners.
bool MayTakeFrom(const SourceDirectoryFacts& Directory, const struct statx& Entry) {
    const uid_t user = ::geteuid();
    return Directory.bWritable && (!Directory.bShared || user == Directory.Owner ||
                                   user == Entry.stx_uid || ActsForOwners());
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
        // Root may use what is reserved.
        const auto blocks = ::geteuid() == 0 ? fileSystem.f_bfree : fileSystem.f_bavail;
        OutFacts.FreeBytes = blocks * OutFacts.BlockBytes;
    }
    if (fileSystem.f_type == MSDOS_SUPER_MAGIC) {
        OutFacts.MaxFileBytes = kMaxFatFileBytes;
    }
    if (fileSystem.f_namelen > 0) {
        OutFacts.MaxNameBytes = static_cast<std::uint64_t>(fileSystem.f_namelen);
    }
    // An overlay copies directories of its lower layers on a rename, or refuses.
    OutFacts.bRenamesDirectories = fileSystem.f_type != OVERLAYFS_SUPER_MAGIC;
}

} // namespace

DestinationFacts FactsOf(const fs::path& Wanted) {
    DestinationFacts facts;
    facts.Directory = NearestExistingDirectory(Wanted);
    facts.bMissing = facts.Directory != Wanted;
    facts.WriteError = WhyUnchangeable(facts.Directory);
    // The slash leads through a link to the directory.
    struct statx status {};
    if (QueryEntry(facts.Directory / "", status)) {
        facts.Device = IdentityOf(status).Device;
        facts.MountId = status.stx_mnt_id;
    }
    AddFileSystemFacts(facts);
    facts.Lineage = LineageOf(facts.Directory);
    return facts;
}

SourceDirectoryFacts SourceDirectoryFactsOf(const fs::path& Directory) {
    SourceDirectoryFacts facts;
    struct statx status {};
    if (QueryEntry(Directory / "", status)) {
        facts.Identity = IdentityOf(status);
        facts.bShared = (status.stx_mode & S_ISVTX) != 0;
        facts.Owner = status.stx_uid;
        const bool bAppendOnly = (status.stx_attributes & STATX_ATTR_APPEND) != 0;
        facts.bWritable = !bAppendOnly && WhyUnchangeable(Directory) == 0;
    }
    return facts;
}

int WhyUnchangeable(const fs::path& Directory) {
    return WhyNoAccess(Directory, W_OK | X_OK);
}

bool CanBeRemoved(const fs::path& Source, const SourceDirectoryFacts& SourceDirectory) {
    struct statx status {};
    return !QueryEntry(Source, status) || ((status.stx_attributes & kFixedAttributes) == 0 &&
                                           MayTakeFrom(SourceDirectory, status));
}

bool CanBeRenamed(const fs::path& Source, const SourceDirectoryFacts& SourceDirectory,
                  const DestinationFacts& Destination) {
    struct statx status {};
    if (!QueryEntry(Source, status)) {
        return false;
    }
    const bool bSameMount =
        IdentityOf(status).Device == Destination.Device && status.stx_mnt_id == Destination.MountId;
    const bool bFixed = (status.stx_attributes & kFixedAttributes) != 0;
    if (!bSameMount || bFixed || Destination.WriteError != 0 ||
        !MayTakeFrom(SourceDirectory, status)) {
        return false;
    }
    if (!S_ISDIR(status.stx_mode)) {
        return true;
    }
    // A directory that gets another parent must be writable itself, for its link to that.
    const bool bStaysInDirectory = !Destination.bMissing && !Destination.Lineage.empty() &&
                                   SourceDirectory.Identity == Destination.Lineage.front();
    return Destination.bRenamesDirectories && (bStaysInDirectory || WhyNoAccess(Source, W_OK) == 0);
}
