// Audio-CD paths: "cdda:DEVICE/TRACK", where DEVICE is the absolute path of the drive and TRACK is
// "Track 03.wav" or a plain number. "cdda:DEVICE" alone names a drive and no track.

#include "tarvanepane.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

namespace {

constexpr std::string_view kScheme = "cdda:";
constexpr std::string_view kTrackPrefix = "Track ";
constexpr std::string_view kTrackSuffix = ".wav";

struct CddaPath {
    std::string_view Device;
    int Track = 0;
};

bool IsDigit(char Character) {
    return Character >= '0' && Character <= '9';
}

// The number in "Track NN.wav", or Name itself.
std::string_view TrackDigits(std::string_view Name) {
    constexpr std::size_t kDigits = 2;
    if (Name.size() == kTrackPrefix.size() + kDigits + kTrackSuffix.size() &&
        Name.starts_with(kTrackPrefix) && Name.ends_with(kTrackSuffix)) {
        return Name.substr(kTrackPrefix.size(), kDigits);
    }
    return Name;
}

// 0 when Name is neither a positive number nor "Track NN.wav", or the number does not fit.
int ReadTrackName(std::string_view Name) {
    const std::string_view digits = TrackDigits(Name);
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), IsDigit)) {
        return 0;
    }
    int track = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), track);
    return result.ec == std::errc() ? track : 0;
}

std::string_view WithoutTrailingSlashes(std::string_view Path) {
    return Path.substr(0, Path.find_last_not_of('/') + 1);
}

// A last component that is no track belongs to the device: a mistyped track then names a drive
// that does not exist, and never the whole disc.
CddaPath ReadCddaPath(std::string_view Path) {
    CddaPath result;
    if (!Path.starts_with(kScheme)) {
        return result;
    }
    Path.remove_prefix(kScheme.size());
    if (!Path.starts_with('/')) {
        return result;
    }
    const std::size_t slash = Path.rfind('/');
    const std::string_view device = WithoutTrailingSlashes(Path.substr(0, slash));
    const int track = ReadTrackName(Path.substr(slash + 1));
    if (device.empty() || track == 0) {
        result.Device = WithoutTrailingSlashes(Path);
        return result;
    }
    result.Device = device;
    result.Track = track;
    return result;
}

} // namespace

bool TarvaneIsCddaPath(const std::string& Path) {
    return Path.starts_with(kScheme);
}

std::string TarvaneCddaDeviceFromPath(const std::string& Path) {
    return std::string(ReadCddaPath(Path).Device);
}

int TarvaneCddaTrackFromPath(const std::string& Path) {
    return ReadCddaPath(Path).Track;
}
