// Where a dialog is on an otherwise empty screen, and more keys for it.

#pragma once

#include "memory_screen.h"
#include "screen_text.h"
#include "shown_dialog.h"

#include <algorithm>
#include <string>
#include <utility>

inline KeyPress Letter(std::string Text) {
    return {.Code = KeyCode::Text, .Text = std::move(Text)};
}

inline KeyPress WheelUp() {
    return {.Code = KeyCode::Mouse, .Mouse = {MousePress::Button::WheelUp, 5, 5}};
}

// How many columns are free to its left, and how many rows above it.
inline int ColumnsBefore(const MemoryScreen& Screen) {
    int columns = Screen.Size().Columns;
    for (int row = 0; row < Screen.Size().Rows; ++row) {
        const std::size_t begin = Screen.Row(row).find_first_not_of(' ');
        columns = begin == std::string::npos ? columns : std::min(columns, static_cast<int>(begin));
    }
    return columns;
}

inline int RowsAbove(const MemoryScreen& Screen) {
    int row = 0;
    while (row < Screen.Size().Rows && Screen.Row(row).empty()) {
        ++row;
    }
    return row;
}

// A click on the first cell of that text, which is on one row.
inline KeyPress ClickOn(const MemoryScreen& Screen, const std::string& Text) {
    for (int row = 0; row < Screen.Size().Rows; ++row) {
        const std::size_t at = Screen.Row(row).find(Text);
        if (at != std::string::npos) {
            return Click(DisplayWidth(Screen.Row(row).substr(0, at)), row);
        }
    }
    ADD_FAILURE() << "\"" << Text << "\" is not on the screen";
    return {};
}
