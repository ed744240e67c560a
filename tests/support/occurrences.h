// How often a text stands in another.

#pragma once

#include <cstddef>
#include <string>

inline std::size_t Occurrences(const std::string& Text, const std::string& Part) {
    std::size_t count = 0;
    for (std::size_t at = Text.find(Part); at != std::string::npos; at = Text.find(Part, at + 1)) {
        ++count;
    }
    return count;
}
