#include "private_mode.h"

#include "owned_descriptor.h"

#include <fcntl.h>

namespace {

bool IsSameFile(const MadePrivate& Old, const struct stat& Status) {
    return Status.st_dev == Old.Device && Status.st_ino == Old.Inode;
}

// A job that has succeeded has written to it, even where times are too coarse to show that.
bool IsWritten(const FinishTask& Task, const MadePrivate& Old, const struct stat& Status) {
    return Task.bWhole || !AreSameTimes(Old.Modified, Status.st_mtim);
}

} // namespace

// One that was found equal counts as replaced.
bool KeepsItsMode(const FinishTask& Task, const MadePrivate& Old, const struct stat& Status) {
    return S_ISLNK(Status.st_mode) ||
           (!IsWritten(Task, Old, Status) && !Task.Names.WasCompared(Old.Path));
}

std::optional<ChangeFailure> GiveBackMode(const FinishTask& Task, const MadePrivate& Old,
                                          const EntryPlace& Place, const struct stat& Status,
                                          const EntryChanges& Changes) {
    if (S_ISLNK(Status.st_mode)) {
        return GiveBackModeBehind(Task, Old, Place, Changes);
    }
    return IsSameFile(Old, Status) ? Changes.SetMode(Place, Old.Mode) : std::nullopt;
}

std::optional<ChangeFailure> GiveBackModeBehind(const FinishTask& Task, const MadePrivate& Old,
                                                const EntryPlace& Place,
                                                const EntryChanges& Changes) {
    const OwnedDescriptor file(
        ::openat(Place.Folder, Place.Name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (file.Get() < 0 || ::fstat(file.Get(), &status) != 0 || !IsSameFile(Old, status)) {
        return std::nullopt;
    }
    const mode_t mode =
        IsWritten(Task, Old, status) ? Old.Mode & (Old.SourceMode | S_IRWXU) : Old.Mode;
    return Changes.SetMode({.Folder = file.Get()}, mode);
}
