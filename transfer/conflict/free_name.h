// Names that can stand in for a taken one.

#pragma once

#include <filesystem>
#include <optional>
#include <string>

// The first of "cover-2.jpg", "cover-3.jpg", ... beside Taken at which nothing stands, not even a
// link to nothing. A name that would be too long for the file system is shortened before the
// number. Empty when the directory cannot be looked into or too many of these names are taken. The
// name may be taken by others right after.
std::optional<std::filesystem::path> FreeNameBeside(const std::filesystem::path& Taken);

// Why a file cannot be created at Path, a full path, as one short sentence; empty when it can, as
// far as can be seen beforehand. Ask before a new name is sent to the engine, where an unusable one
// ends the whole job.
std::string RenameRefusal(const std::filesystem::path& Path);
