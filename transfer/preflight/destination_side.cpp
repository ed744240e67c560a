#include "destination_side.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::uint64_t kStatusBlockBytes = 512;

void AddStatus(DestinationEntry& OutEntry, const struct statx& Status) {
    OutEntry.Taken->LeadsTo = KindByMode(Status.stx_mode);
    OutEntry.Identity = IdentityOf(Status);
    OutEntry.MountId = Status.stx_mnt_id;
    OutEntry.bAppendOnly = (Status.stx_attributes & STATX_ATTR_APPEND) != 0;
    OutEntry.Mode = Status.stx_mode;
    OutEntry.Owner = Status.stx_uid;
    OutEntry.Group = Status.stx_gid;
    OutEntry.Modified = {Status.stx_mtime.tv_sec, Status.stx_mtime.tv_nsec};
    if (S_ISREG(Status.stx_mode)) {
        OutEntry.Taken->bHasOtherNames = !OutEntry.Taken->bLink && Status.stx_nlink > 1;
        OutEntry.SizeBytes = Status.stx_size;
        OutEntry.OccupiedBytes = Status.stx_blocks * kStatusBlockBytes;
    }
}

bool QueryStatus(int Parent, const char* Name, int Flags, struct statx& OutStatus) {
    return ::statx(Parent, Name, Flags, STATX_BASIC_STATS | STATX_MNT_ID, &OutStatus) == 0;
}

// Empty when it has gone meanwhile.
std::string TargetOf(int Parent, const char* Link) {
    char target[PATH_MAX];
    const ssize_t length = ::readlinkat(Parent, Link, target, sizeof(target));
    return length < 0 ? std::string() : std::string(target, static_cast<std::size_t>(length));
}

} // namespace

bool LeadsNowhere(int Error) {
    return Error == ENOENT || Error == ENOTDIR || Error == ELOOP;
}

DestinationEntry LookAtDestination(int Parent, const char* Name) {
    struct statx status {};
    if (!QueryStatus(Parent, Name, AT_SYMLINK_NOFOLLOW, status)) {
        return {.Error = errno == ENOENT ? 0 : errno};
    }
    DestinationEntry entry;
    entry.Taken.emplace();
    if (S_ISLNK(status.stx_mode)) {
        entry.Taken->bLink = true;
        entry.Taken->LinkTarget = TargetOf(Parent, Name);
        constexpr int kFollowLinks = 0;
        if (!QueryStatus(Parent, Name, kFollowLinks, status)) {
            return LeadsNowhere(errno) ? entry : DestinationEntry{.Error = errno};
        }
    }
    AddStatus(entry, status);
    return entry;
}

std::optional<RecordedTarget> RecordedTargetOf(const DestinationEntry& There) {
    if (!There.Taken) {
        return std::nullopt;
    }
    return RecordedTarget{.Identity = There.Identity.value_or(FileIdentity()),
                          .Mode = There.Mode,
                          .Modified = There.Modified,
                          .bLink = There.Taken->bLink};
}

std::optional<std::int64_t> DestinationEntry::ModifiedTicks() const {
    return Identity ? TicksOf(Modified.tv_sec, Modified.tv_nsec) : std::nullopt;
}

OwnedDescriptor DestinationPlace::Open() const {
    return OwnedDescriptor(bExists ? ::open(Path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC) : -1);
}

std::optional<std::int64_t> TicksOf(std::int64_t Seconds, std::int64_t Nanoseconds) {
    using std::chrono::nanoseconds;
    // Of the clock of the file system library, which begins in the year 2174.
    constexpr std::int64_t kClockStart = 6437664000;
    constexpr std::int64_t kLongestSeconds =
        std::chrono::floor<std::chrono::seconds>(nanoseconds::max()).count() - 1;
    const std::int64_t seconds = Seconds - kClockStart;
    if (seconds < -kLongestSeconds || seconds > kLongestSeconds) {
        return std::nullopt;
    }
    return nanoseconds(std::chrono::seconds(seconds)).count() + Nanoseconds;
}
