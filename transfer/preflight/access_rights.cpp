#include "access_rights.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

AccessRights::AccessRights() : User(::geteuid()), Group(::getegid()) {
    const int count = ::getgroups(0, nullptr);
    OtherGroups.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    if (::getgroups(count, OtherGroups.data()) != count) {
        OtherGroups.clear();
    }
}

bool AccessRights::MayAccess(int Parent, const char* Name, const struct stat& Status,
                             int Access) const {
    return MayDoEverything() || BitsAllow(Status, static_cast<mode_t>(Access)) ||
           ::faccessat(Parent, Name, Access, AT_EACCESS) == 0;
}

bool AccessRights::BitsAllow(const struct stat& Status, mode_t Access) const {
    mode_t bits = Status.st_mode;
    if (Status.st_uid == User) {
        bits >>= 6U;
    } else if (IsMember(Status.st_gid)) {
        bits >>= 3U;
    }
    return (bits & Access) == Access;
}

bool AccessRights::IsMember(gid_t Wanted) const {
    return Wanted == Group ||
           std::find(OtherGroups.begin(), OtherGroups.end(), Wanted) != OtherGroups.end();
}
