// A full screen of cells to draw on.

#pragma once

#include "terminal.h"

#include <string_view>

// What a cell shows. Screens map it to colors or, without them, to bold, reverse and
// underline.
enum class CellRole {
    // Of a pane.
    Plain,
    Directory,
    Executable,
    Link,
    Special,
    Marked,
    // Under the cursor: of the pane that has the keys, and of the other one.
    Cursor,
    MarkedCursor,
    QuietCursor,
    Frame,
    Title,
    // Of a dialog and what lies on it.
    Dialog,
    DialogTitle,
    Button,
    ButtonFocus,
    // A letter that gives an answer.
    Hotkey,
    Input,
    Warning,
    BarDone,
    BarLeft,
    // The line with what is going on, and the one with the keys.
    Status,
    KeyNumber,
    KeyLabel,
};

// Draw a whole frame, then Flush: what is the same as before is not sent again.
//
// Threads: one, the interface's.
class Screen {
public:
    Screen() = default;
    virtual ~Screen() = default;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    // Of the window at the latest Erase.
    virtual TerminalSize Size() const = 0;
    // Begins a frame: every cell is blank and Plain, and there is no cursor.
    virtual void Erase() = 0;
    // Columns and rows are numbered from 0. Requires: CleanText is clean, see CleanForScreen; what
    // does not fit into its row is cut off, and what lies outside of the window is left out.
    virtual void Put(int Column, int Row, std::string_view CleanText, CellRole Role) = 0;
    // Where somebody types.
    virtual void ShowCursor(int Column, int Row) = 0;
    // Sends the frame.
    virtual void Flush() = 0;

    // Whether lines and blocks beyond ASCII show as what they are.
    virtual bool IsUtf8() const = 0;
    // Whether there are colors.
    virtual bool HasColors() const = 0;
};
