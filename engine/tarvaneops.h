// Path comparisons that the engine asks of the file manager around it, which defines them.
//
// Threads: any; the engine calls them on its worker threads. Errors: nothing may be thrown.

#pragma once

#include <filesystem>

// True when both paths name the same existing file (by device and inode, links followed), or when
// their absolute, lexically normal texts are equal, slashes at the end aside. A path that does not
// exist is no error.
bool TarvanePathsEquivalentOrSame(const std::filesystem::path& First,
                                  const std::filesystem::path& Second) noexcept;

// True when Path, which need not exist yet, lies below Directory. Compares whole components with
// links in the existing part of either path resolved. A path is not inside itself.
bool TarvanePathIsInside(const std::filesystem::path& Directory,
                         const std::filesystem::path& Path) noexcept;
