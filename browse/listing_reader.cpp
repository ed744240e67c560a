#include "listing_reader.h"

#include "directory_entries.h"
#include "folder_watch.h"
#include "listing_reply.h"
#include "owned_descriptor.h"
#include "quoted.h"

#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::string_view kDiscScheme = "cdda:";

// The drive's absolute path.
std::string DeviceOf(const std::filesystem::path& Disc) {
    std::string device = Disc.native().substr(kDiscScheme.size());
    while (device.ends_with('/') && device.size() > 1) {
        device.pop_back();
    }
    return device;
}

// What tells nothing of its size, as /proc, has no room either.
std::optional<std::uint64_t> FreeBytesAt(int Directory) {
    struct statvfs volume {};
    if (fstatvfs(Directory, &volume) != 0 || volume.f_blocks == 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(volume.f_bavail) * volume.f_frsize;
}

// 0 or an errno. Nothing is mounted because somebody looks at a list.
int ReadStatus(int Directory, const char* Name, int Flags, struct statx& Out) {
    constexpr unsigned int kWanted = STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_MTIME;
    return statx(Directory, Name, Flags | AT_NO_AUTOMOUNT, kWanted, &Out) == 0 ? 0 : errno;
}

void Describe(const struct statx& Status, ListedEntry& Out) {
    constexpr unsigned int kAnybodyRuns = S_IXUSR | S_IXGRP | S_IXOTH;
    Out.Modified = Status.stx_mtime.tv_sec;
    if (S_ISDIR(Status.stx_mode)) {
        Out.What = ListedEntry::Kind::Directory;
    } else if (S_ISREG(Status.stx_mode)) {
        Out.What = ListedEntry::Kind::File;
        Out.SizeBytes = Status.stx_size;
        Out.bExecutable = (Status.stx_mode & kAnybodyRuns) != 0;
    }
}

// Nothing for what has vanished meanwhile.
std::optional<ListedEntry> Look(int Directory, const dirent& Found) {
    ListedEntry entry;
    entry.Name = Found.d_name;
    entry.What = ListedEntry::Kind::Special;
    entry.bLink = Found.d_type == DT_LNK;
    struct statx status {};
    int error = ReadStatus(Directory, Found.d_name, AT_SYMLINK_NOFOLLOW, status);
    if (error == ENOENT) {
        return std::nullopt;
    }
    if (error == 0) {
        entry.bLink = S_ISLNK(status.stx_mode);
    }
    if (error == 0 && entry.bLink) {
        const int follow = 0;
        error = ReadStatus(Directory, Found.d_name, follow, status);
    }
    if (error == 0) {
        Describe(status, entry);
    }
    return entry;
}

DirectoryContents Read(const std::filesystem::path& Place) {
    const OwnedDescriptor directory(open(Place.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.Get() < 0) {
        return {.Error = errno};
    }
    DirectoryContents contents{.FreeBytes = FreeBytesAt(directory.Get())};
    contents.Error = ForEachEntry(directory.Get(), [&](const dirent& Found) {
        if (std::optional<ListedEntry> entry = Look(directory.Get(), Found)) {
            contents.Entries.push_back(std::move(*entry));
        }
    });
    return contents;
}

// In the process: no message is made here, as that takes a lock of the C library.
std::string ReadAndReply(const std::filesystem::path& Place, bool bWatch) {
    try {
        if (bWatch) {
            WatchOnly(STDIN_FILENO, Place);
        }
        return ReplyFrom(Read(Place));
    } catch (const std::exception&) {
        return ReplyFrom({.Error = ENOMEM});
    }
}

std::string FailureText(const std::filesystem::path& Place, int Error) {
    switch (Error) {
    case 0:
        return {};
    case ENOTDIR:
        return Quoted(Place.native()) + " is not a directory";
    default:
        return "cannot read " + Quoted(Place.native()) + ": " +
               std::generic_category().message(Error);
    }
}

Listing ListingFrom(const std::filesystem::path& Place, std::string_view Reply) {
    std::optional<DirectoryContents> contents = ContentsFrom(Reply);
    if (!contents) {
        return {.Place = Place,
                .Failure = "the reading of " + Quoted(Place.native()) + " was interrupted"};
    }
    return {.Place = Place,
            .Entries = std::move(contents->Entries),
            .FreeBytes = contents->FreeBytes,
            .Failure = FailureText(Place, contents->Error)};
}

Listing ListingFrom(const std::filesystem::path& Place,
                    const std::variant<TrackList, TrackListFailure>& Disc) {
    Listing listing{.Place = Place};
    if (const auto* failure = std::get_if<TrackListFailure>(&Disc)) {
        listing.Failure = failure->Reason;
        return listing;
    }
    for (const TrackListEntry& track : std::get<TrackList>(Disc).Tracks) {
        if (!track.bData) {
            ListedEntry& entry = listing.Entries.emplace_back();
            entry.Name = TrackFileName(track.Number);
            entry.What = ListedEntry::Kind::Track;
            entry.SizeBytes = TrackWavSizeBytes(track);
        }
    }
    return listing;
}

} // namespace

ListingReader::ListingReader(std::filesystem::path PlaceToRead, int Watch)
    : PlaceRead(std::move(PlaceToRead)) {
    if (IsDisc(PlaceRead)) {
        Tracks.emplace(DeviceOf(PlaceRead));
        return;
    }
    try {
        Process.emplace(
            [&place = PlaceRead, bWatch = Watch >= 0, reply = std::string()]() mutable {
                reply = ReadAndReply(place, bWatch);
                return std::string_view(reply);
            },
            Watch);
    } catch (const std::system_error& error) {
        StartFailure = "cannot start reading " + Quoted(PlaceRead.native()) + ": " + error.what();
    }
}

int ListingReader::OverFd() const {
    if (Tracks) {
        return Tracks->OverFd();
    }
    return Process ? Process->OverFd() : -1;
}

std::optional<Listing> ListingReader::TakeResult() {
    if (Tracks) {
        const auto disc = Tracks->TakeResult();
        return disc ? std::optional(ListingFrom(PlaceRead, *disc)) : std::nullopt;
    }
    if (!Process) {
        return Listing{.Place = PlaceRead, .Failure = StartFailure};
    }
    const std::optional<std::string> reply = Process->TakeReply();
    return reply ? std::optional(ListingFrom(PlaceRead, *reply)) : std::nullopt;
}

bool IsDisc(const std::filesystem::path& Place) {
    return Place.native().starts_with(kDiscScheme);
}

std::filesystem::path ParentPlace(const std::filesystem::path& Place) {
    if (IsDisc(Place)) {
        const std::filesystem::path above = std::filesystem::path(DeviceOf(Place)).parent_path();
        return above.empty() ? Place : above;
    }
    return Place.has_filename() ? Place.parent_path() : Place.parent_path().parent_path();
}
