// From paths as users give them to paths that a job can be given.

#pragma once

#include <filesystem>
#include <string_view>

#include "tarvanetransfer.h"

// The absolute path without ".", and without doubled and trailing slashes. ".." stays where it is,
// because it may follow a link. Such a path can never be taken for that of a CD track.
std::filesystem::path FullPath(const std::filesystem::path& Given);

// Given without its trailing slashes; empty for "/".
std::string_view WithoutTrailingSlashes(const std::filesystem::path& Given);

// Whether Given, trailing slashes aside, ends in Name.
bool EndsInComponent(const std::filesystem::path& Given, std::string_view Name);

// The directory that holds an entry, also when its path ends with a slash.
std::filesystem::path ParentOf(const std::filesystem::path& Path);

// Whether Path is Tree or lies below it, as both are written.
bool IsWithin(const std::filesystem::path& Path, const std::filesystem::path& Tree);

// What Path, which is within From, is called within To.
std::filesystem::path Rebased(const std::filesystem::path& Path, const std::filesystem::path& From,
                              const std::filesystem::path& To);

// Where the first item that holds Source puts it; empty when none does.
std::filesystem::path PlannedDestination(const std::filesystem::path& Source,
                                         const TarvaneTransferPlan& Plan);

// Path itself when it is a directory, otherwise the closest one above it, absolute.
std::filesystem::path NearestExistingDirectory(const std::filesystem::path& Path);
