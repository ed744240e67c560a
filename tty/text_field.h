// A one-line editor for a file name. No screen in it: keys come in, the visible piece comes out.

#pragma once

#include <cstddef>
#include <string>

#include "key_press.h"

class TextField {
public:
    // The cursor starts at the end. The text is bytes; whatever is not edited stays exactly as it
    // was, valid UTF-8 or not.
    explicit TextField(std::string InitialText);

    const std::string& Text() const { return Bytes; }

    // Text, Backspace, Delete, Left, Right, Home, End and ClearLine edit; other keys do nothing. A
    // letter and the marks on it are one step.
    void Handle(const KeyPress& Key);

    struct View {
        // Clean text of at most the width asked for, and the part of it before the cursor.
        std::string Shown;
        std::string BeforeCursor;
    };

    // The piece around the cursor that fits into Width columns, the cursor's own cell included.
    View Visible(int Width) const;

private:
    void Erase(std::size_t From, std::size_t To);
    std::size_t NextStep(std::size_t Position) const;
    std::size_t PreviousStep(std::size_t Position) const;

    std::string Bytes;
    std::size_t Cursor = 0;
};
