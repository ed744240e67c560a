// Blocks of lines that are shown at a prompt, and how they fit a window.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "terminal_device.h"

// Bytes of a line that stand out.
struct StyledRange {
    std::size_t Begin = 0;
    std::size_t End = 0;
    TextStyle Style = TextStyle::Plain;

    bool operator==(const StyledRange&) const = default;
};

// One line of a block. Its text is clean and fits the width that it was made for.
struct ScreenLine {
    std::string Text;
    std::vector<StyledRange> Styles = {};

    bool operator==(const ScreenLine&) const = default;
};

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
// The part with all its lines in one style.
BlockPart InStyle(BlockPart Part, TextStyle Style);

// The rows that all parts take.
std::size_t RowsOf(const std::vector<BlockPart>& Parts);

// The lines of all parts in their order, without the least important parts that do not fit into
// Rows. The most important part stays, cut where it alone is too long.
std::vector<ScreenLine> FitToRows(std::vector<BlockPart> Parts, int Rows);
