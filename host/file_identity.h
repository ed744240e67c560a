// Which file a path names, whatever the path looks like.

#pragma once

#include <compare>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/types.h>

struct FileIdentity {
    dev_t Device = 0;
    ino_t Inode = 0;

    // The check takes the 0 that the comparison is compared with for a pointer.
    // NOLINTNEXTLINE(modernize-use-nullptr)
    auto operator<=>(const FileIdentity&) const = default;
};

inline FileIdentity IdentityOf(const struct stat& Status) {
    return {Status.st_dev, Status.st_ino};
}

inline FileIdentity IdentityOf(const struct statx& Status) {
    return {makedev(Status.stx_dev_major, Status.stx_dev_minor), Status.stx_ino};
}
