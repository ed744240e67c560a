// `tarvane tracks [--json] [DEVICE]`: lists the tracks of an audio CD.
//
// With --json standard output is one document:
//   {"device": "/dev/sr0", "drives": ["/dev/sr0"],
//    "tracks": [{"number": 1, "name": "Track 01.wav", "path": "cdda:/dev/sr0/Track 01.wav",
//                "kind": "audio", "start": "00:02.00", "start_frame": 150,
//                "length": "04:08.33", "length_frames": 18633, "wav_bytes": 43824860}],
//    "total": {"audio_tracks": 1, "length": "04:08.33", "length_frames": 18633,
//              "wav_bytes": 43824860}}
// "kind" is "audio" or "data". "drives" are all drives of the machine. A data track has null for
// "name", "path" and "wav_bytes", a track without length for "length", "length_frames" and
// "wav_bytes". The total is that of the audio tracks, what a copy of the whole disc makes.

#pragma once

#include <string>

#include "run_outcome.h"

struct TracksRequest {
    // A path as it was given, which may be that of a track. Empty for the first drive with an audio
    // CD.
    std::string Device;
    bool bJson = false;
};

// Prints the list on standard output, or on standard error why there is none.
//
// Requires: the only thread of the program.
RunOutcome RunTracksCommand(const TracksRequest& Request);
