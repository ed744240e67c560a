// Reading a disc's table of contents while somebody waits in front of the screen.

#pragma once

#include "track_list.h"

#include <string>

enum class TrackFetchResult {
    Fetched,
    Failed,
    // Esc, Ctrl-C or a signal that ends programs.
    Canceled,
};

// Reads the table of contents like ReadTrackList, in a process of its own, so that the user can end
// the wait at once: a request that the drive holds stops even the end of the process that made it.
// On a terminal it says on standard error that it waits when that takes more than a moment.
//
// Requires: an interface thread, and that no other thread was started yet.
// Errors: ErrorMessage as ReadTrackList gives it. When canceled, OutEndSignal is the signal that
// the program should end by, SIGINT for Esc too.
TrackFetchResult FetchTrackList(const std::string& Device, TrackList& Out,
                                std::string& ErrorMessage, int& OutEndSignal);
