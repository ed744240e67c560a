#include "mouse_report.h"

#include <array>
#include <charconv>
#include <system_error>

namespace {

struct Report {
    // The button in the lowest two bits and flags above them.
    int Button = 0;
    // From 1.
    int Column = 0;
    int Row = 0;
};

// Numbers with a semicolon between them, and a letter that says press or release.
std::optional<Report> ReadPress(std::string_view BehindEscape) {
    std::array<int, 3> numbers{};
    const char* at = BehindEscape.data() + kMouseReport.size();
    const char* const end = BehindEscape.data() + BehindEscape.size();
    for (int& number : numbers) {
        const auto [next, error] = std::from_chars(at, end, number);
        const char expected = &number == &numbers.back() ? 'M' : ';';
        if (error != std::errc() || next == end || *next != expected) {
            return std::nullopt;
        }
        at = next + 1;
    }
    return Report{numbers[0], numbers[1], numbers[2]};
}

std::optional<Report> ReadOldReport(std::string_view BehindEscape) {
    if (BehindEscape.size() < kOldMouseReportLength) {
        return std::nullopt;
    }
    const auto number = [BehindEscape](std::size_t Index) {
        return static_cast<unsigned char>(BehindEscape[kOldMouseReport.size() + Index]) - ' ';
    };
    return Report{number(0), number(1), number(2)};
}

// A button with Shift, Alt or Ctrl counts like the button alone.
std::optional<MousePress::Button> PressedButton(int Flags) {
    constexpr int kModifiers = 4 + 8 + 16;
    switch (Flags & ~kModifiers) {
    case 0:
        return MousePress::Button::Left;
    case 1:
        return MousePress::Button::Middle;
    case 2:
        return MousePress::Button::Right;
    case 64:
        return MousePress::Button::WheelUp;
    case 65:
        return MousePress::Button::WheelDown;
    default:
        return std::nullopt;
    }
}

} // namespace

bool IsMouseReport(std::string_view BehindEscape) {
    return BehindEscape.starts_with(kMouseReport) || BehindEscape.starts_with(kOldMouseReport);
}

std::optional<KeyPress> KeyOfMouseReport(std::string_view BehindEscape) {
    const std::optional<Report> report = BehindEscape.starts_with(kMouseReport)
                                             ? ReadPress(BehindEscape)
                                             : ReadOldReport(BehindEscape);
    if (!report || report->Column < 1 || report->Row < 1) {
        return std::nullopt;
    }
    const std::optional<MousePress::Button> button = PressedButton(report->Button);
    if (!button) {
        return std::nullopt;
    }
    return KeyPress{.Code = KeyCode::Mouse,
                    .Mouse = {*button, report->Column - 1, report->Row - 1}};
}
