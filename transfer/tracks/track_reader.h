// Reading a disc's table of contents while somebody waits in front of the screen.

#pragma once

#include "track_list.h"
#include "worker_process.h"

#include <optional>
#include <string>
#include <variant>

// Reads like ReadTrackList from its making on, but holds nobody: neither the caller nor, when it is
// let go of while the drive keeps it waiting, the end of the program.
//
// Threads: one thread makes, uses and destroys it; others may run.
class TrackReader {
public:
    explicit TrackReader(std::string DeviceToRead);

    // Becomes readable when TakeResult has something to do; for poll. It is -1, which poll ignores,
    // when the drive could not be asked.
    int OverFd() const { return Process ? Process->OverFd() : -1; }
    // The tracks, or why there are none, as soon as they are known; call it once more for as long
    // as there is nothing.
    std::optional<std::variant<TrackList, TrackListFailure>> TakeResult();

private:
    std::string Device;
    // Why there is no process.
    std::string StartFailure;
    std::optional<WorkerProcess> Process;
};
