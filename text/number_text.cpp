#include "number_text.h"

#include <array>
#include <cmath>
#include <cstdio>

std::string NumberText(std::uint64_t Number) {
    std::string digits = std::to_string(Number);
    for (std::size_t end = digits.size(); end > 3; end -= 3) {
        digits.insert(end - 3, 1, ',');
    }
    return digits;
}

std::string EntriesText(std::uint64_t Entries) {
    return NumberText(Entries) + (Entries == 1 ? " entry" : " entries");
}

void AppendCount(std::string& InOutList, std::uint64_t Count, std::string_view What) {
    if (Count > 0) {
        InOutList += (InOutList.empty() ? "; " : ", ") + NumberText(Count) + " ";
        InOutList += What;
    }
}

std::string DurationText(double Seconds) {
    const std::int64_t all = std::llround(Seconds);
    const std::int64_t hours = all / 3600;
    const auto minutes = static_cast<int>(all / 60 % 60);
    const auto seconds = static_cast<int>(all % 60);
    std::array<char, 16> text;
    std::snprintf(text.data(), text.size(), "%02d:%02d", minutes, seconds);
    return hours > 0 ? std::to_string(hours) + ":" + text.data() : text.data();
}
