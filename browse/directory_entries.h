// The entries of an open directory.

#pragma once

#include <dirent.h>
#include <functional>

// Calls Take with each but "." and "..", in the order in which the file system has them. Returns 0
// or why not all could be read, as an errno.
int ForEachEntry(int Directory, const std::function<void(const dirent& Entry)>& Take);
