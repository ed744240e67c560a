// Who may read an entry, as far as its status tells.

#pragma once

#include <sys/stat.h>

struct EntryAccess {
    mode_t Mode = 0;
    uid_t Owner = 0;
    gid_t Group = 0;
};

// Whether somebody may read There who may not read Source.
inline bool IsMoreOpen(const EntryAccess& There, const EntryAccess& Source) {
    const mode_t others = S_IRWXG | S_IRWXO;
    return (There.Mode & ~Source.Mode & others) != 0 || There.Owner != Source.Owner ||
           There.Group != Source.Group;
}
