// Looks at the disk before a new name is sent to the engine, where an unusable one ends the whole
// job.

#pragma once

#include <filesystem>
#include <string>

// Why a file cannot be created at Path, a full path, as one short sentence; empty when it can, as
// far as can be seen beforehand.
std::string RenameRefusal(const std::filesystem::path& Path);
