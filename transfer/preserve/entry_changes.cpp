#include "entry_changes.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Newer than the headers of many systems; its number is one for all of them.
constexpr long kModeCall = 452;
constexpr mode_t kModeBits = 07777;
constexpr mode_t kOwnerBound = S_ISUID | S_ISGID;

// Where system calls are filtered, one that is not known may be forbidden instead of missing. One
// that is there refuses this request for its flags.
bool HasModeCall() {
    constexpr int kNoFolder = -1;
    constexpr int kNoSuchFlags = -1;
    return ::syscall(kModeCall, kNoFolder, "", mode_t{0}, kNoSuchFlags) != 0 && errno == EINVAL;
}

// File systems differ in whether they hold odd seconds, and times before 1980 and after 2038.
std::size_t KindOfTime(const timespec& Time) {
    constexpr std::int64_t k1980 = 315532800;
    const std::int64_t seconds = Time.tv_sec;
    const std::size_t era =
        seconds < k1980 ? 0 : (seconds > std::numeric_limits<std::int32_t>::max() ? 1 : 2);
    return era * 2 + (seconds % 2 != 0 ? 1 : 0);
}

bool IsASecondOff(const timespec& First, const timespec& Second) {
    constexpr std::int64_t kNanoseconds = 1000000000;
    const std::int64_t seconds = First.tv_sec - Second.tv_sec;
    if (std::abs(seconds) > 1) {
        return true;
    }
    return std::abs(seconds * kNanoseconds + First.tv_nsec - Second.tv_nsec) >= kNanoseconds;
}

int LookAt(const EntryPlace& Place, struct stat& Out) {
    return Place.Name == nullptr ? ::fstat(Place.Folder, &Out)
                                 : ::fstatat(Place.Folder, Place.Name, &Out, AT_SYMLINK_NOFOLLOW);
}

bool HasOwnersOf(const struct stat& Status, const RecordedStatus& Source) {
    return Status.st_uid == Source.Owner && Status.st_gid == Source.Group;
}

void NoteFirst(std::optional<ChangeFailure>& InOut, const char* What, int Error) {
    if (!InOut) {
        InOut = {.What = What, .Error = Error};
    }
}

} // namespace

bool AreSameTimes(const timespec& First, const timespec& Second) {
    return First.tv_sec == Second.tv_sec && First.tv_nsec == Second.tv_nsec;
}

EntryChanges::EntryChanges(PreserveChoice Choice)
    : Preserve(Choice), User(::geteuid()), bHasModeCall(HasModeCall()) {}

// The owner comes first: changing it takes bits of the mode away.
std::optional<ChangeFailure> EntryChanges::Carry(const EntryPlace& Place, const struct stat& Status,
                                                 const RecordedStatus& Source) {
    Entry entry{.Place = Place, .Source = Source, .Status = Status, .On = Devices[Status.st_dev]};
    CarryOwner(entry);
    CarryMode(entry);
    CarryTimes(entry);
    if (entry.bLookAtMode || entry.bLookAtTimes) {
        LookAgain(entry);
    }
    return entry.Failure;
}

// One who may not give away this file may still give another to a group.
void EntryChanges::CarryOwner(Entry& InOut) {
    const RecordedStatus& source = InOut.Source;
    if (!Preserve.bOwner || InOut.On.bRefusesOwners || HasOwnersOf(InOut.Status, source)) {
        return;
    }
    const EntryPlace& place = InOut.Place;
    const int result = place.Name == nullptr ? ::fchown(place.Folder, source.Owner, source.Group)
                                             : ::fchownat(place.Folder, place.Name, source.Owner,
                                                          source.Group, AT_SYMLINK_NOFOLLOW);
    if (result == 0) {
        InOut.Status.st_uid = source.Owner;
        InOut.Status.st_gid = source.Group;
        InOut.Status.st_mode &= ~kOwnerBound;
    } else if (IsRefusal(errno, InOut.Status)) {
        bOwnersLost = true;
        InOut.On.bRefusesOwners = User == 0;
    } else {
        NoteFirst(InOut.Failure, "set the owner of", errno);
    }
}

void EntryChanges::CarryMode(Entry& InOut) {
    mode_t wanted = InOut.Source.Mode & kModeBits;
    if (!HasOwnersOf(InOut.Status, InOut.Source)) {
        wanted &= ~kOwnerBound;
    }
    if (!Preserve.bMode || InOut.On.bRefusesModes || (InOut.Status.st_mode & kModeBits) == wanted) {
        return;
    }
    const int error = ChangeMode(InOut.Place, wanted);
    if (error == 0) {
        InOut.Status.st_mode = (InOut.Status.st_mode & ~kModeBits) | wanted;
        InOut.bLookAtMode = !InOut.On.SeenModes.test(wanted);
        InOut.On.SeenModes.set(wanted);
    } else if (IsRefusal(error, InOut.Status)) {
        bModesLost = true;
        InOut.On.bRefusesModes = true;
    } else {
        NoteFirst(InOut.Failure, "set the mode of", error);
    }
}

void EntryChanges::CarryTimes(Entry& InOut) {
    const RecordedStatus& source = InOut.Source;
    if (!Preserve.bTimes || InOut.On.bRefusesTimes ||
        (AreSameTimes(InOut.Status.st_mtim, source.Modified) &&
         AreSameTimes(InOut.Status.st_atim, source.Accessed))) {
        return;
    }
    const std::array<timespec, 2> times{source.Accessed, source.Modified};
    const EntryPlace& place = InOut.Place;
    const int result = place.Name == nullptr ? ::futimens(place.Folder, times.data())
                                             : ::utimensat(place.Folder, place.Name, times.data(),
                                                           AT_SYMLINK_NOFOLLOW);
    if (result == 0) {
        const std::size_t kind = KindOfTime(source.Modified);
        InOut.bLookAtTimes = !InOut.On.SeenTimes.test(kind);
        InOut.On.SeenTimes.set(kind);
    } else if (IsRefusal(errno, InOut.Status)) {
        bTimesLost = true;
        InOut.On.bRefusesTimes = true;
    } else {
        NoteFirst(InOut.Failure, "set the times of", errno);
    }
}

// Some file systems accept what they do not keep. A time that is off says nothing of others; and of
// the mode, the user's rights may keep a bit of the first octal digit back.
void EntryChanges::LookAgain(const Entry& Changed) {
    constexpr mode_t kAccess = 0777;
    struct stat now {};
    if (LookAt(Changed.Place, now) != 0) {
        return;
    }
    if (Changed.bLookAtMode && (now.st_mode & kAccess) != (Changed.Status.st_mode & kAccess)) {
        bModesLost = true;
        Changed.On.bRefusesModes = true;
    }
    if (Changed.bLookAtTimes && IsASecondOff(now.st_mtim, Changed.Source.Modified)) {
        bTimesLost = true;
    }
}

// Of an entry of the user's own no permission is missing.
bool EntryChanges::IsRefusal(int Error, const struct stat& Status) const {
    const bool bOwn = User == 0 || Status.st_uid == User;
    return bOwn && (Error == EPERM || Error == EOPNOTSUPP || Error == EINVAL || Error == ENOSYS);
}

std::optional<ChangeFailure> EntryChanges::SetMode(const EntryPlace& Place, mode_t Mode) const {
    const int error = ChangeMode(Place, Mode);
    return error == 0 ? std::nullopt
                      : std::optional(ChangeFailure{.What = "set the mode of", .Error = error});
}

// The library's own way opens the entry and goes through /proc. Returns an errno, or 0.
int EntryChanges::ChangeMode(const EntryPlace& Place, mode_t Mode) const {
    long result = 0;
    if (Place.Name == nullptr) {
        result = ::fchmod(Place.Folder, Mode);
    } else if (bHasModeCall) {
        result = ::syscall(kModeCall, Place.Folder, Place.Name, Mode, AT_SYMLINK_NOFOLLOW);
    } else {
        result = ::fchmodat(Place.Folder, Place.Name, Mode, AT_SYMLINK_NOFOLLOW);
    }
    return result == 0 ? 0 : errno;
}
