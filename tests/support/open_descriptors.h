// Which descriptors the test's process has open.

#pragma once

#include <filesystem>
#include <set>
#include <string>

// Their numbers. The one that reads the list is among them, with the same number each time unless
// another has been left open.
inline std::set<std::string> OpenDescriptors() {
    std::set<std::string> numbers;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        numbers.insert(entry.path().filename());
    }
    return numbers;
}
