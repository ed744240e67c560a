// What the command line asks of the panes.

#pragma once

#include <filesystem>

// Directories, or discs as "cdda:/dev/sr0", as they were given; the working directory for each that
// was not.
struct PanesRequest {
    std::filesystem::path Left = ".";
    std::filesystem::path Right = ".";
};
