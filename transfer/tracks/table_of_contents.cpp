#include "table_of_contents.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

bool ReadEntry(int Drive, int Track, cdrom_tocentry& Out) {
    Out.cdte_track = static_cast<__u8>(Track);
    Out.cdte_format = CDROM_MSF;
    return ioctl(Drive, CDROMREADTOCENTRY, &Out) == 0;
}

bool ReadAll(int Drive, TableOfContents& Out) {
    if (ioctl(Drive, CDROMREADTOCHDR, &Out.Header) != 0) {
        return false;
    }
    for (int number = Out.Header.cdth_trk0; number <= Out.Header.cdth_trk1; ++number) {
        if (!ReadEntry(Drive, number, Out.Tracks[static_cast<std::size_t>(number)])) {
            return false;
        }
    }
    return ReadEntry(Drive, CDROM_LEADOUT, Out.LeadOut);
}

std::int32_t StartFrame(const cdrom_tocentry& Entry) {
    const cdrom_msf0& position = Entry.cdte_addr.msf;
    return (position.minute * CD_SECS + position.second) * CD_FRAMES + position.frame;
}

bool IsData(const cdrom_tocentry& Entry) {
    return (static_cast<unsigned>(Entry.cdte_ctrl) & unsigned{CDROM_DATA_TRACK}) != 0;
}

// The entry behind that of track Number, where the track ends.
const cdrom_tocentry& NextEntry(const TableOfContents& Table, int Number) {
    return Number == Table.Header.cdth_trk1 ? Table.LeadOut
                                            : Table.Tracks[static_cast<std::size_t>(Number) + 1];
}

// A drive that vanishes while it is asked answers with zeros and reports no error.
bool CanBe(const TableOfContents& Table) {
    constexpr int kLastNumber = 99;
    const int first = Table.Header.cdth_trk0;
    const int last = Table.Header.cdth_trk1;
    if (first < 1 || first > last || last > kLastNumber) {
        return false;
    }
    for (int number = first; number <= last; ++number) {
        const cdrom_tocentry& entry = Table.Tracks[static_cast<std::size_t>(number)];
        if (StartFrame(NextEntry(Table, number)) < StartFrame(entry)) {
            return false;
        }
    }
    return StartFrame(Table.LeadOut) > StartFrame(Table.Tracks[static_cast<std::size_t>(first)]);
}

std::string DescribeReadError(const std::string& Device, int Error) {
    if (Error == ENOMEDIUM) {
        return "no disc in '" + Device + "'";
    }
    if (Error == ENOTTY || Error == EINVAL) {
        return "'" + Device + "' is not a CD drive";
    }
    return "cannot read the table of contents of the disc in '" + Device +
           "': " + std::strerror(Error);
}

} // namespace

void ReadTableOfContents(const char* Device, TableOfContents& Out) {
    Out = {};
    // Non-blocking, or the open would wait for a disc and fail without one.
    const int drive = open(Device, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    Out.bOpened = drive >= 0;
    if (!Out.bOpened || !ReadAll(drive, Out)) {
        Out.Error = errno;
    }
    if (Out.bOpened) {
        close(drive);
    }
}

std::variant<TrackList, TrackListFailure> TracksOf(const TableOfContents& Table,
                                                   const std::string& Device) {
    if (!Table.bOpened) {
        return TrackListFailure{"cannot open CD drive '" + Device +
                                "': " + std::strerror(Table.Error)};
    }
    if (Table.Error != 0) {
        return TrackListFailure{DescribeReadError(Device, Table.Error)};
    }
    if (!CanBe(Table)) {
        return TrackListFailure{"The drive gave no readable table of contents."};
    }
    TrackList list{.Device = Device, .Tracks = {}};
    for (int number = Table.Header.cdth_trk0; number <= Table.Header.cdth_trk1; ++number) {
        const cdrom_tocentry& entry = Table.Tracks[static_cast<std::size_t>(number)];
        const std::int32_t end = StartFrame(NextEntry(Table, number));
        list.Tracks.push_back({number, IsData(entry), StartFrame(entry), end});
    }
    if (std::all_of(list.Tracks.begin(), list.Tracks.end(),
                    [](const TrackListEntry& Each) { return Each.bData; })) {
        return TrackListFailure{"no audio tracks on the disc in '" + Device + "'"};
    }
    return list;
}

std::variant<TrackList, TrackListFailure> ReadTrackList(const std::string& Device) {
    TableOfContents table;
    ReadTableOfContents(Device.c_str(), table);
    return TracksOf(table, Device);
}
