// Looks at the audio-CD tracks of a plan before its job starts.

#pragma once

#include "preflight_result.h"
#include "track_list.h"

#include <cstdint>
#include <map>
#include <string>
#include <variant>

class TrackLook {
public:
    // Adds to the findings and totals of Result, which must outlive it.
    explicit TrackLook(PreflightResult& ResultToFill) : Result(ResultToFill) {}

    // Returns the size of the WAV file that the track becomes; 0 when it becomes none.
    //
    // Threads: any but an interface thread, see ReadTrackList.
    std::uint64_t LookAt(const std::string& TrackPath);

private:
    using Disc = std::variant<TrackList, TrackListFailure>;

    const Disc& DiscIn(const std::string& Device);

    PreflightResult& Result;
    // By drive, each read only once.
    std::map<std::string, Disc> Discs;
};
