// Which file a path names, whatever the path looks like.

#pragma once

#include <compare>

#include <sys/stat.h>
#include <sys/types.h>

struct FileIdentity {
    dev_t Device = 0;
    ino_t Inode = 0;

    auto operator<=>(const FileIdentity&) const = default;
};

inline FileIdentity IdentityOf(const struct stat& Status) {
    return {Status.st_dev, Status.st_ino};
}
