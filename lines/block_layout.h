// Blocks of lines that are shown at a prompt, and how they fit a window.

#pragma once

#include <string>
#include <vector>

#include "terminal_device.h"

// One line of a block. Its text is clean and fits the width that it was made for.
struct ScreenLine {
    std::string Text;
    // Says what could be lost; shown with emphasis where the terminal has any.
    bool bWarning = false;

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

// The lines of all parts in their order, without the least important parts that do not fit into
// Rows. The most important part stays, cut where it alone is too long.
std::vector<ScreenLine> FitToRows(std::vector<BlockPart> Parts, int Rows);
