// A disc's table of contents as the drive tells it.

#pragma once

#include "track_list.h"

#include <array>
#include <cstddef>
#include <linux/cdrom.h>
#include <string>
#include <variant>

// What a drive has answered, without a pointer to anything, so that it can pass through a pipe.
struct TableOfContents {
    bool bOpened = false;
    // The errno of the open or of the request that has failed; 0 when none has.
    int Error = 0;
    cdrom_tochdr Header;
    // By number; those that the header names are filled.
    std::array<cdrom_tocentry, 256> Tracks;
    cdrom_tocentry LeadOut;
};

// Fills Out with the requests that a copy uses. Each may keep the caller for 20 s while a drive
// gets ready, and nothing interrupts it.
//
// Threads: any but an interface thread. It allocates nothing, so it may run between fork and exec.
void ReadTableOfContents(const char* Device, TableOfContents& Out);

// The tracks, or why there are none to copy.
std::variant<TrackList, TrackListFailure> TracksOf(const TableOfContents& Table,
                                                   const std::string& Device);

// Both at once.
//
// Threads: any but an interface thread, as the drive may keep it. TrackReader is for those.
std::variant<TrackList, TrackListFailure> ReadTrackList(const std::string& Device);
