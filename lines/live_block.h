// The block of lines that shows a running transfer on a terminal and is redrawn in place.
//
// LiveBlockLines makes the lines of a snapshot; BlockDrawer makes the bytes that bring the screen
// from the previous lines to the next ones. Neither writes anything.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "progress_watch.h"
#include "screen_text.h"
#include "tarvanetransfer.h"
#include "terminal_device.h"

// Lines that belong together, and how much they matter where the window is too small for all.
struct BlockPart {
    int Importance = 0;
    std::vector<ScreenLine> Lines;
};

// The columns to lay text out for. The last one stays free: a full line would leave the cursor in
// a place that terminals disagree about.
int LayoutWidth(TerminalSize Size);

// Text as one part: cleaned and wrapped. Nothing for an empty text.
BlockPart WordsPart(int Importance, const std::string& Text, int Width);
BlockPart PathPart(int Importance, const std::string& Text, int Width);

// The lines of all parts in their order, without the least important parts that do not fit into
// Rows. The most important part stays, cut where it alone is too long.
std::vector<ScreenLine> FitToRows(std::vector<BlockPart> Parts, int Rows);

// The lines for a running job: the engine's texts as they are, cleaned and wrapped, with a bar for
// the whole and one for the file, and what Claims adds. No percentage reaches 100 before the job
// has succeeded. The hint, which names the key to cancel, is left out once the job has finished. At
// most Size.Rows lines.
std::vector<ScreenLine> LiveBlockLines(const TarvaneTransferUiSnapshot& Snapshot,
                                       const ProgressClaims& Claims, TerminalSize Size);

// "[######....] 13%", at most Width columns; only the percentage where there is no room for a bar.
std::string BarText(int Percent, int Width);

// Where the cursor is to stand after a block has been drawn: behind Prefix, the start of that line.
struct BlockCursor {
    std::size_t Line = 0;
    std::string Prefix;

    bool operator==(const BlockCursor&) const = default;
};

// Knows what it has put on the screen. Its bytes use nothing beyond carriage return, line feed,
// "cursor up", "erase to the end of the line" and "erase to the end of the screen".
class BlockDrawer {
public:
    // The bytes that replace the block on the screen by Lines; none when nothing changes. Lines
    // must be laid out for Size. The cursor then stands at the start of the last line, or where
    // Cursor says. A window that has changed its size is taken to have rewrapped the old lines.
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
    std::string DrawAll(const std::vector<ScreenLine>& Lines, TerminalSize Size) const;
    std::string DrawChanges(const std::vector<ScreenLine>& Lines) const;

    std::vector<ScreenLine> Shown;
    TerminalSize ShownSize;
    BlockCursor ShownCursor;
};
