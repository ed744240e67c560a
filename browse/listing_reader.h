// Reads what a place holds, while somebody waits in front of the screen.

#pragma once

#include "listed_entry.h"
#include "track_reader.h"
#include "worker_process.h"

#include <filesystem>
#include <optional>
#include <string>

// Reads from its making on and holds nobody: neither the caller nor, when it is let go of while a
// file system or a drive does not answer, the end of the program. Entries come in the order in
// which the file system has them, without "." and "..".
//
// Threads: one thread makes, uses and destroys it; others may run.
class ListingReader {
public:
    // Watch is the descriptor of a FolderWatch, which is told to watch the directory before it is
    // read; -1 for none.
    explicit ListingReader(std::filesystem::path PlaceToRead, int Watch = -1);

    const std::filesystem::path& Place() const { return PlaceRead; }
    // Becomes readable when TakeResult has something to do; for poll. It is -1, which poll ignores,
    // when the reading could not be started.
    int OverFd() const;
    // What is there, or why that cannot be said, as soon as it is known; once.
    std::optional<Listing> TakeResult();

private:
    const std::filesystem::path PlaceRead;
    std::string StartFailure;
    std::optional<WorkerProcess> Process;
    // For a disc.
    std::optional<TrackReader> Tracks;
};

// Whether the place is a disc and not a directory.
bool IsDisc(const std::filesystem::path& Place);

// The place that holds Place; the same one where there is none, as for "/". Of a disc it is the
// directory of its drive.
std::filesystem::path ParentPlace(const std::filesystem::path& Place);
