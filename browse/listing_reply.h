// What a process has read of a directory, as bytes that pass to ours.

#pragma once

#include "listed_entry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct DirectoryContents {
    std::vector<ListedEntry> Entries = {};
    std::optional<std::uint64_t> FreeBytes = {};
    // Why it could not be read, as an errno; 0 when it could.
    int Error = 0;
};

std::string ReplyFrom(const DirectoryContents& Contents);

// Nothing when the reply is not whole, as that of a process that was ended.
std::optional<DirectoryContents> ContentsFrom(std::string_view Reply);
