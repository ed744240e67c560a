#include "track_list.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <linux/cdrom.h>
#include <optional>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr std::uint64_t kWavHeaderBytes = 44;
constexpr std::uint64_t kBytesPerFrame = CD_FRAMESIZE_RAW;

// Owns the descriptor of an open drive.
class OpenDrive {
public:
    // Non-blocking, or the open would wait for a disc and fail without one.
    explicit OpenDrive(const std::string& Device)
        : Descriptor(open(Device.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~OpenDrive() {
        if (Descriptor >= 0) {
            close(Descriptor);
        }
    }
    OpenDrive(const OpenDrive&) = delete;
    OpenDrive& operator=(const OpenDrive&) = delete;

    bool IsOpen() const { return Descriptor >= 0; }

    bool ReadHeader(cdrom_tochdr& OutHeader) const {
        OutHeader = {};
        return ioctl(Descriptor, CDROMREADTOCHDR, &OutHeader) == 0;
    }

    bool ReadEntry(int Track, cdrom_tocentry& OutEntry) const {
        OutEntry = {};
        OutEntry.cdte_track = static_cast<__u8>(Track);
        OutEntry.cdte_format = CDROM_MSF;
        return ioctl(Descriptor, CDROMREADTOCENTRY, &OutEntry) == 0;
    }

private:
    int Descriptor;
};

std::int32_t EntryFrame(const cdrom_tocentry& Entry) {
    const cdrom_msf0& position = Entry.cdte_addr.msf;
    return (position.minute * CD_SECS + position.second) * CD_FRAMES + position.frame;
}

bool IsDataTrack(const cdrom_tocentry& Entry) {
    return (static_cast<unsigned>(Entry.cdte_ctrl) & unsigned{CDROM_DATA_TRACK}) != 0;
}

std::string DescribeHeaderError(const std::string& Device, int Error) {
    if (Error == ENOMEDIUM) {
        return "no disc in '" + Device + "'";
    }
    if (Error == ENOTTY || Error == EINVAL) {
        return "'" + Device + "' is not a CD drive";
    }
    return "cannot read the table of contents of the disc in '" + Device +
           "': " + std::strerror(Error);
}

bool ReadTracks(const OpenDrive& Drive, const cdrom_tochdr& Header,
                std::vector<TrackListEntry>& Out) {
    cdrom_tocentry entry;
    for (int number = Header.cdth_trk0; number <= Header.cdth_trk1; ++number) {
        if (!Drive.ReadEntry(number, entry)) {
            return false;
        }
        const std::int32_t start = EntryFrame(entry);
        if (!Out.empty()) {
            Out.back().EndFrame = start;
        }
        Out.push_back({number, IsDataTrack(entry), start, start});
    }
    if (!Drive.ReadEntry(CDROM_LEADOUT, entry)) {
        return false;
    }
    if (!Out.empty()) {
        Out.back().EndFrame = EntryFrame(entry);
    }
    return true;
}

bool IsAudio(const TrackListEntry& Track) {
    return !Track.bData;
}

// The names after "drive name:" in the CD-ROM driver's own list.
std::vector<std::string> DriveNamesOfDriver() {
    constexpr const char* kDriverList = "/proc/sys/dev/cdrom/info";
    const std::string key = "drive name:";
    std::vector<std::string> names;
    std::ifstream list(kDriverList);
    for (std::string line; std::getline(list, line);) {
        if (line.starts_with(key)) {
            std::istringstream words(line.substr(key.size()));
            for (std::string name; words >> name;) {
                names.push_back(name);
            }
        }
    }
    return names;
}

// Shorter names first, so that sr9 comes before sr10.
bool ComesBefore(const std::string& First, const std::string& Second) {
    return First.size() != Second.size() ? First.size() < Second.size() : First < Second;
}

} // namespace

std::string TrackFileName(int Number) {
    char name[32];
    std::snprintf(name, sizeof(name), "Track %02d.wav", Number);
    return name;
}

std::string TrackPath(const std::string& Device, int Number) {
    return "cdda:" + Device + "/" + TrackFileName(Number);
}

std::uint64_t TrackAudioBytes(const TrackListEntry& Track) {
    if (Track.bData || !Track.HasValidRange()) {
        return 0;
    }
    return static_cast<std::uint64_t>(Track.EndFrame - Track.StartFrame) * kBytesPerFrame;
}

std::uint64_t TrackWavSizeBytes(const TrackListEntry& Track) {
    const std::uint64_t audioBytes = TrackAudioBytes(Track);
    return audioBytes == 0 ? 0 : kWavHeaderBytes + audioBytes;
}

std::vector<std::string> FindOpticalDrives() {
    std::vector<std::string> drives;
    for (const std::string& name : DriveNamesOfDriver()) {
        drives.push_back("/dev/" + name);
    }
    std::sort(drives.begin(), drives.end(), ComesBefore);
    return drives;
}

bool ReadTrackList(const std::string& Device, TrackList& Out, std::string& ErrorMessage) {
    const OpenDrive drive(Device);
    if (!drive.IsOpen()) {
        ErrorMessage = "cannot open CD drive '" + Device + "': " + std::strerror(errno);
        return false;
    }
    cdrom_tochdr header;
    if (!drive.ReadHeader(header)) {
        ErrorMessage = DescribeHeaderError(Device, errno);
        return false;
    }
    TrackList list;
    list.Device = Device;
    if (!ReadTracks(drive, header, list.Tracks)) {
        ErrorMessage = DescribeHeaderError(Device, errno);
        return false;
    }
    if (std::none_of(list.Tracks.begin(), list.Tracks.end(), IsAudio)) {
        ErrorMessage = "no audio tracks on the disc in '" + Device + "'";
        return false;
    }
    Out = std::move(list);
    return true;
}
