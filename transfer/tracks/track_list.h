// What an audio CD holds: the table of contents of the disc in a drive.

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

struct TrackListEntry {
    int Number = 0;
    bool bData = false;
    // Positions from the disc's beginning, in frames of 1/75 s, two seconds of lead-in included. A
    // track reaches to the beginning of the next one, which may be its own.
    std::int32_t StartFrame = 0;
    std::int32_t EndFrame = 0;

    bool HasValidRange() const { return EndFrame > StartFrame; }
};

struct TrackList {
    // The drive's absolute path.
    std::string Device;
    // Every track of the disc, data tracks too, in the disc's order.
    std::vector<TrackListEntry> Tracks;
};

// Why there is no list: one sentence for people; empty when the user has ended the wait for the
// drive.
struct TrackListFailure {
    std::string Reason;
};

// What drives have told, by their paths.
using KnownDiscs = std::map<std::string, std::variant<TrackList, TrackListFailure>>;

// Reads what the disc in Device holds. Whoever gives one decides how to wait, as a drive that gets
// ready may take 20 s and more, and whether one that is asked for again is read again.
using TrackLister =
    std::function<std::variant<TrackList, TrackListFailure>(const std::string& Device)>;

// "Track 03.wav": what the file of an audio track is called, and the last part of its path.
std::string TrackFileName(int Number);

// "cdda:/dev/sr0/Track 03.wav".
std::string TrackPath(const std::string& Device, int Number);

// The audio of a track; 0 for a data track or an invalid range.
std::uint64_t TrackAudioBytes(const TrackListEntry& Track);
// The WAV file that the track becomes: its audio behind a header; 0 where there is no audio.
std::uint64_t TrackWavSizeBytes(const TrackListEntry& Track);

// The device nodes of the machine's optical drives, the first drive first.
std::vector<std::string> FindOpticalDrives();
