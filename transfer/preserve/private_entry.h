// What a private job has made: nobody but this user may do anything with it.

#pragma once

#include "owned_descriptor.h"

#include <optional>

#include <sys/stat.h>
#include <sys/types.h>

struct PrivateEntry {
    OwnedDescriptor Opened;
    struct statx Status {};

    bool IsDirectory() const { return S_ISDIR(Status.stx_mode); }
};

// Nothing where no file or directory of that kind stands, or where it has another name too, which
// may be somebody else's. Follows no link.
std::optional<PrivateEntry> OpenPrivateEntry(int Folder, const char* Name);

// Gives it the mode that it would have if it had been made with this umask.
void OpenUp(const PrivateEntry& Entry, mode_t Umask);
