// Names beside a taken one.

#pragma once

#include <filesystem>
#include <optional>

// The first of "cover-2.jpg", "cover-3.jpg", ... beside Taken at which nothing stands, not even a
// link to nothing. A name that would be too long for the file system is shortened before the
// number. Empty when the directory cannot be looked into or too many of these names are taken. The
// name may be taken by others right after.
std::optional<std::filesystem::path> FreeNameBeside(const std::filesystem::path& Taken);
