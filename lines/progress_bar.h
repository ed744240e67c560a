// A bar that fills from left to right.

#pragma once

#include <string>

#include "block_layout.h"

// What a bar is drawn with: "#" and ".", or blocks that fill a cell by eighths.
enum class BarCells { Ascii, Blocks };

struct ProgressBar {
    std::string Label;
    int Percent = 0;
    // Decides what is filled within the percentage.
    double Fraction = 0.0;
};

// "All  [######....] 13%", at most Width columns and a hundred cells. The label goes first where
// there is no room, then the bar.
ScreenLine BarLine(const ProgressBar& Bar, BarCells Cells, int Width);
