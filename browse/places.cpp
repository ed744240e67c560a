#include "places.h"

#include "track_list.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>

namespace {

// Blanks and the like come as "\040".
std::string Unescaped(std::string_view Field) {
    std::string text;
    for (std::size_t i = 0; i < Field.size(); ++i) {
        if (Field[i] == '\\' && i + 3 < Field.size()) {
            text += static_cast<char>(std::stoi(std::string(Field.substr(i + 1, 3)), nullptr, 8));
            i += 3;
        } else {
            text += Field[i];
        }
    }
    return text;
}

bool IsWherePeoplePutDisks(std::string_view MountPoint) {
    constexpr std::array<std::string_view, 3> kFolders{"/media/", "/mnt/", "/run/media/"};
    return MountPoint == "/mnt" || std::ranges::any_of(kFolders, [&](std::string_view Folder) {
               return MountPoint.starts_with(Folder);
           });
}

std::vector<NamedPlace> MountedDisks() {
    std::vector<NamedPlace> disks;
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream fields(line);
        std::string field;
        constexpr int kMountPoint = 5;
        for (int i = 0; i < kMountPoint; ++i) {
            fields >> field;
        }
        const std::string where = Unescaped(field);
        // One disk may be mounted over another.
        const bool bNew = std::ranges::find(disks, where, &NamedPlace::Label) == disks.end();
        if (bNew && IsWherePeoplePutDisks(where)) {
            disks.push_back({where, where});
        }
    }
    return disks;
}

} // namespace

std::vector<NamedPlace> KnownPlaces() {
    std::vector<NamedPlace> places;
    const char* const home = std::getenv("HOME");
    if (home != nullptr && *home == '/') {
        places.push_back({"Home", home});
    }
    places.push_back({"/", "/"});
    for (NamedPlace& disk : MountedDisks()) {
        places.push_back(std::move(disk));
    }
    for (const std::string& drive : FindOpticalDrives()) {
        places.push_back({"Audio CD in " + drive, "cdda:" + drive});
    }
    return places;
}
