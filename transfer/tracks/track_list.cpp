#include "track_list.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <linux/cdrom.h>
#include <sstream>

namespace {

constexpr std::uint64_t kWavHeaderBytes = 44;
constexpr std::uint64_t kBytesPerFrame = CD_FRAMESIZE_RAW;

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
