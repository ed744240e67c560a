// How one entry is called and colored.

#pragma once

#include "listed_entry.h"
#include "screen.h"

#include <filesystem>
#include <string>
#include <vector>

// What kind of entry it is, where there are no colors: '/' a directory, '~' a link to one, '@' a
// link to a file, '!' a link to neither, '=' a device, a pipe or a socket; else a blank.
char SignOf(const ListedEntry& Entry);

CellRole RoleOf(const ListedEntry& Entry);

// "38.4 MB", or "DIR"; empty for what has no size.
std::string EntrySizeText(const ListedEntry& Entry);

// In exactly so many columns: the name with its sign, and as many of size and date as leave it
// whole.
std::string EntryDetails(const ListedEntry& Entry, int Columns);

// "2 entries", or the quoted name of one; not cleaned for a screen.
std::string ChosenText(const std::vector<std::filesystem::path>& Paths);
