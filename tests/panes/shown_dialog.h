// What a dialog looks like, and keys for it.

#pragma once

#include <string>

#include "dialog.h"
#include "memory_screen.h"

inline KeyPress Key(KeyCode Code) {
    return {.Code = Code};
}

inline KeyPress Click(int Column, int Row) {
    return {.Code = KeyCode::Mouse, .Mouse = {MousePress::Button::Left, Column, Row}};
}

// The rows that are not empty, each from its own first column on: the dialog alone.
inline std::string BoxOn(const MemoryScreen& Screen) {
    std::string box = "\n";
    for (int row = 0; row < Screen.Size().Rows; ++row) {
        const std::string text = Screen.Row(row);
        box += text.empty() ? "" : text.substr(text.find_first_not_of(' ')) + "\n";
    }
    return box;
}

// A screen with the dialog alone on it.
struct Drawn : MemoryScreen {
    explicit Drawn(Dialog& Shown, TerminalSize Size = {}, bool bInUtf8 = true)
        : MemoryScreen(Size, bInUtf8) {
        Shown.Draw(*this, {});
    }
};

inline std::string Box(Dialog& Shown, TerminalSize Size = {}) {
    return BoxOn(Drawn(Shown, Size));
}
