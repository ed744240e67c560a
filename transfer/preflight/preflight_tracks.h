// Looks at the audio-CD tracks of a plan before its job starts.

#pragma once

#include "preflight_result.h"
#include "track_list.h"

#include <cstdint>
#include <string>
#include <utility>

class TrackLook {
public:
    // Adds to the findings and totals of Result, which must outlive it. Drives that are not among
    // the discs are asked.
    explicit TrackLook(PreflightResult& ResultToFill, KnownDiscs AlreadyRead = {})
        : Result(ResultToFill), Discs(std::move(AlreadyRead)) {}

    // Returns the size of the WAV file that the track becomes; 0 when it becomes none.
    //
    // Threads: any but an interface thread, see ReadTrackList.
    std::uint64_t LookAt(const std::string& TrackPath);

private:
    const KnownDiscs::mapped_type& DiscIn(const std::string& Device);

    PreflightResult& Result;
    // Each drive is asked only once.
    KnownDiscs Discs;
};
