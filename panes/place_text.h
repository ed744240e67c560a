// How a place is called.

#pragma once

#include <filesystem>
#include <string>

// Clean: the path of a directory, and for a disc "Audio CD in /dev/sr0".
std::string PlaceText(const std::filesystem::path& Place);
