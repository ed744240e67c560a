// Where somebody who looks through the machine may want to go.

#pragma once

#include <filesystem>
#include <string>
#include <vector>

struct NamedPlace {
    std::string Label;
    std::filesystem::path Place;
};

// The home directory, "/", what is mounted where people put their disks, and the optical drives as
// "cdda:/dev/sr0". Nothing of it is looked at, so nothing that hangs holds anybody.
std::vector<NamedPlace> KnownPlaces();
