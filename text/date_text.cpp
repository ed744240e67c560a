#include "date_text.h"

#include <array>
#include <ctime>

namespace {

std::string Formatted(std::int64_t SecondsSince1970, bool bWithSeconds) {
    const auto moment = static_cast<std::time_t>(SecondsSince1970);
    std::tm calendar = {};
    if (localtime_r(&moment, &calendar) == nullptr) {
        return "";
    }
    std::array<char, 40> text{};
    std::strftime(text.data(), text.size(), bWithSeconds ? "%Y-%m-%d %H:%M:%S" : "%Y-%m-%d %H:%M",
                  &calendar);
    return text.data();
}

} // namespace

std::string DateText(std::int64_t SecondsSince1970) {
    constexpr bool kWithSeconds = false;
    return Formatted(SecondsSince1970, kWithSeconds);
}

std::string DateTextWithSeconds(std::int64_t SecondsSince1970) {
    constexpr bool kWithSeconds = true;
    return Formatted(SecondsSince1970, kWithSeconds);
}
