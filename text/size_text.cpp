#include "size_text.h"

#include <array>
#include <cstddef>
#include <cstdio>

std::string SizeText(std::uint64_t SizeBytes) {
    constexpr std::array<const char*, 5> kUnits = {"B", "KB", "MB", "GB", "TB"};
    auto value = static_cast<double>(SizeBytes);
    std::size_t unit = 0;
    while (value >= 1024.0 && unit + 1 < kUnits.size()) {
        value /= 1024.0;
        ++unit;
    }
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.*f %s", unit == 0 ? 0 : 1, value, kUnits[unit]);
    return text.data();
}

std::string SizeTextWithBytes(std::uint64_t SizeBytes) {
    const char* noun = SizeBytes == 1 ? " byte)" : " bytes)";
    return SizeText(SizeBytes) + " (" + std::to_string(SizeBytes) + noun;
}
