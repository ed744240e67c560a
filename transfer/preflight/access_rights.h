// What this process may do with entries, told from their status as far as possible.

#pragma once

#include <vector>

#include <sys/stat.h>
#include <sys/types.h>

// The effective user and groups of the process at the time of construction.
class AccessRights {
public:
    AccessRights();

    // Whether Access, a combination of R_OK, W_OK and X_OK, is allowed to the entry Name of the
    // open directory Parent. Takes the permission bits' word for a yes; at a no it asks the kernel,
    // since an access list may allow what they do not. Root may do everything.
    bool MayAccess(int Parent, const char* Name, const struct stat& Status, int Access) const;
    bool MayDoEverything() const { return User == 0; }

private:
    bool BitsAllow(const struct stat& Status, mode_t Access) const;
    bool IsMember(gid_t Wanted) const;

    uid_t User;
    gid_t Group;
    std::vector<gid_t> OtherGroups;
};
