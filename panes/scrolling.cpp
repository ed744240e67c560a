#include "scrolling.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::ptrdiff_t kAllRows = std::numeric_limits<int>::max();
constexpr std::ptrdiff_t kWheelRows = 3;

bool IsControl(const KeyPress& Key, const char* Letter) {
    return Key.Code == KeyCode::Control && Key.Text == Letter;
}

} // namespace

std::optional<std::ptrdiff_t> RowsDown(const KeyPress& Key, int VisibleRows) {
    // A row of the last page stays in sight.
    const std::ptrdiff_t page = std::max(1, VisibleRows - 1);
    const bool bMouse = Key.Code == KeyCode::Mouse;
    if (Key.Code == KeyCode::Up || IsControl(Key, "p")) {
        return -1;
    }
    if (Key.Code == KeyCode::Down || IsControl(Key, "n")) {
        return 1;
    }
    if (Key.Code == KeyCode::PageUp) {
        return -page;
    }
    if (Key.Code == KeyCode::PageDown) {
        return page;
    }
    if (Key.Code == KeyCode::Home) {
        return -kAllRows;
    }
    if (Key.Code == KeyCode::End) {
        return kAllRows;
    }
    if (bMouse && Key.Mouse.Pressed == MousePress::Button::WheelUp) {
        return -kWheelRows;
    }
    if (bMouse && Key.Mouse.Pressed == MousePress::Button::WheelDown) {
        return kWheelRows;
    }
    return std::nullopt;
}

std::size_t MovedRow(std::size_t Row, std::ptrdiff_t Down, std::size_t RowCount) {
    const auto last = static_cast<std::ptrdiff_t>(RowCount) - 1;
    const std::ptrdiff_t row = std::min(static_cast<std::ptrdiff_t>(Row) + Down, last);
    return static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, row));
}

std::size_t ScrolledTo(std::size_t Cursor, std::size_t FirstRow, std::size_t VisibleRows,
                       std::size_t RowCount) {
    const std::size_t lowest = Cursor + 1 > VisibleRows ? Cursor + 1 - VisibleRows : 0;
    const std::size_t last = RowCount > VisibleRows ? RowCount - VisibleRows : 0;
    return std::min({std::max(FirstRow, lowest), Cursor, last});
}
