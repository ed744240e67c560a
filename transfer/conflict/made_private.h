// A file that others could read before the job was to write to it.

#pragma once

#include <ctime>
#include <string>

#include <sys/types.h>

// What it was like when its permissions for others were taken away.
struct MadePrivate {
    std::string Path;
    mode_t Mode = 0;
    timespec Modified{};
    // Which file it was: the path may have led through a link.
    dev_t Device = 0;
    ino_t Inode = 0;
    // Of what was to be written to it.
    mode_t SourceMode = 0;
};
