// One entry of a directory or a disc, as somebody who looks through it sees it.

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

struct ListedEntry {
    enum class Kind {
        Directory,
        File,
        // A device, a pipe or a socket; a link that leads nowhere, or where nobody may look.
        Special,
        // Of an audio CD.
        Track,
    };

    // Its bytes, valid UTF-8 or not.
    std::string Name;
    // Links followed.
    Kind What = Kind::File;
    bool bLink = false;
    // Somebody may run it.
    bool bExecutable = false;
    // 0 for a directory; of a track, that of its WAV file. Links followed.
    std::uint64_t SizeBytes = 0;
    // Seconds since 1970, links followed; nothing for a track.
    std::optional<std::int64_t> Modified = {};

    bool IsDirectory() const { return What == Kind::Directory; }
    bool IsRealDirectory() const { return IsDirectory() && !bLink; }
    bool IsHidden() const { return Name.starts_with('.'); }
};

// What a place holds: a directory, or a disc as "cdda:/dev/sr0".
struct Listing {
    std::filesystem::path Place;
    std::vector<ListedEntry> Entries = {};
    // What everybody may still write there; nothing where that is not known.
    std::optional<std::uint64_t> FreeBytes = {};
    // Why there is none, as one sentence without a capital, a period or a line end; empty when
    // there is. Not cleaned for a screen.
    std::string Failure = {};
};
