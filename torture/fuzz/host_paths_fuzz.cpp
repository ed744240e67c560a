// Paths as the file manager around the engine reads them: whether one is that of a track, and
// whether one of two is the other or lies in it. Hardly any of them exists.

#include <filesystem>
#include <string>

#include "fuzz_target.h"
#include "tarvaneops.h"
#include "tarvanepane.h"
#include "track_list.h"

namespace {

void CheckTrackOf(const std::string& Path) {
    const std::string device = TarvaneCddaDeviceFromPath(Path);
    const int track = TarvaneCddaTrackFromPath(Path);
    Expect(TarvaneIsCddaPath(Path) || (device.empty() && track == 0),
           "another path names no drive and no track");
    Expect(device.empty() || (device.starts_with('/') && !device.ends_with('/')),
           "a drive is an absolute path without slashes at its end");
    Expect(track >= 0 && (track == 0 || !device.empty()), "a track is one of a drive");
    Expect(Path.find(device) != std::string::npos, "a drive is what was typed");
    if (!device.empty() && track < 100) {
        const std::string again = track == 0 ? "cdda:" + device + "/" : TrackPath(device, track);
        Expect(TarvaneCddaDeviceFromPath(again) == device &&
                   TarvaneCddaTrackFromPath(again) == track,
               "the path of a track leads to that track");
    }
}

void CheckPair(const std::filesystem::path& First, const std::filesystem::path& Second) {
    Expect(TarvanePathsEquivalentOrSame(First, First), "a path is the same as itself");
    Expect(TarvanePathsEquivalentOrSame(First, Second) ==
               TarvanePathsEquivalentOrSame(Second, First),
           "paths are the same whichever comes first");
    const bool bSameText = First.lexically_normal() == Second.lexically_normal();
    Expect(!bSameText || TarvanePathsEquivalentOrSame(First, Second),
           "paths with the same normal text are the same");
    Expect(!TarvanePathIsInside(First, First), "a path is not inside itself");
    Expect(TarvanePathIsInside(First, First / "x"), "what is named in a directory is inside it");
    Expect(!TarvanePathIsInside(First, Second) || !TarvanePathIsInside(Second, First),
           "no two directories are inside each other");
}

} // namespace

void RunInput(std::string_view Input) {
    CheckTrackOf(std::string(Input));
    InputReader reader(Input);
    const std::string first = "/" + reader.Name();
    CheckPair(first, "/" + reader.Name());
}
