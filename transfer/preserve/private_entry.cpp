#include "private_entry.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

bool IsPrivate(const struct statx& Status) {
    const mode_t others = S_IRWXG | S_IRWXO;
    const bool bKind =
        S_ISDIR(Status.stx_mode) || (S_ISREG(Status.stx_mode) && Status.stx_nlink == 1);
    return bKind && (Status.stx_mode & others) == 0 && Status.stx_uid == ::geteuid();
}

bool LookAt(int Folder, const char* Name, int Flags, struct statx& Out) {
    return ::statx(Folder, Name, Flags, STATX_BASIC_STATS | STATX_BTIME, &Out) == 0;
}

} // namespace

// Looks before it opens, as opening a device can do something, and afterwards at what it has.
std::optional<PrivateEntry> OpenPrivateEntry(int Folder, const char* Name) {
    PrivateEntry entry;
    if (!LookAt(Folder, Name, AT_SYMLINK_NOFOLLOW, entry.Status) || !IsPrivate(entry.Status)) {
        return std::nullopt;
    }
    entry.Opened = OwnedDescriptor(
        ::openat(Folder, Name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (entry.Opened.Get() < 0 || !LookAt(entry.Opened.Get(), "", AT_EMPTY_PATH, entry.Status) ||
        !IsPrivate(entry.Status)) {
        return std::nullopt;
    }
    return entry;
}

// A directory has the group's bit from the one above it.
void OpenUp(const PrivateEntry& Entry, mode_t Umask) {
    const mode_t all = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    const mode_t search = S_IXUSR | S_IXGRP | S_IXOTH;
    const mode_t mode = Entry.IsDirectory() ? all | search : all;
    ::fchmod(Entry.Opened.Get(), (Entry.Status.stx_mode & S_ISGID) | (mode & ~Umask));
}
