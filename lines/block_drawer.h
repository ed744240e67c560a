// Redrawing a block of lines in place. It makes the bytes that bring the screen from the previous
// lines to the next ones, and writes nothing.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "block_layout.h"
#include "terminal_device.h"

// Where the cursor is to stand after a block has been drawn: behind Prefix, the start of that line.
struct BlockCursor {
    std::size_t Line = 0;
    std::string Prefix;

    bool operator==(const BlockCursor&) const = default;
};

// Knows what it has put on the screen. Its bytes use nothing beyond carriage return, line feed,
// "cursor up" and "right", "erase to the end of the line", "erase to the end of the screen", "wrap"
// on and off, and styles.
//
// A terminal whose window is made narrower may rewrap what it shows, cut it or leave it, and tells
// the program later, tmux after up to a quarter of a second. Frames for the old width still arrive
// meanwhile. So the cursor rests at the start of the block, where nothing has to be counted before
// the next frame, and a frame never takes more rows than it has lines.
class BlockDrawer {
public:
    // The bytes that replace the block on the screen by Lines; none when nothing changes. Lines
    // must be laid out for Size. The cursor then stands at the start of the first line, or where
    // Cursor says: then a window that has changed its size is taken to have rewrapped the lines
    // above the cursor.
    std::string Draw(const std::vector<ScreenLine>& Lines, TerminalSize Size,
                     const std::optional<BlockCursor>& Cursor = std::nullopt);

    // The bytes that take the block away and leave the cursor where it began, at the start of a
    // line, ready for the final line. The next Draw starts a new block there.
    std::string Erase(TerminalSize Size);

    // Leaves the block where it is as if it had been printed: for when the screen below it is not
    // ours any more. The bytes move the cursor below it.
    std::string Abandon();

private:
    void Forget();
    std::string GoToTop(TerminalSize Size) const;
    std::string DrawAll(const std::vector<ScreenLine>& Lines, TerminalSize Size,
                        std::size_t CursorLine) const;
    std::string DrawChanges(const std::vector<ScreenLine>& Lines, std::size_t CursorLine) const;

    std::vector<ScreenLine> Shown;
    TerminalSize ShownSize;
    BlockCursor ShownCursor;
};
