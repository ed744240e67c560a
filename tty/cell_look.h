// How each role looks on a terminal.

#pragma once

#include "screen.h"

// The eight colors that every terminal with colors has, by their numbers; its own text and ground
// are none of them.
enum class CellColor {
    Own = -1,
    Black,
    Red,
    Green,
    Yellow,
    Blue,
    Magenta,
    Cyan,
    White,
};

struct CellLook {
    CellColor Text = CellColor::Own;
    CellColor Ground = CellColor::Own;
    bool bBold = false;
    bool bReverse = false;
    bool bUnderline = false;
};

// What lies over the panes has a ground of its own; in the panes, programs, links and special files
// have the colors that `ls` uses.
CellLook ColoredLook(CellRole Role);

// Where there are no colors, or nobody wants any.
CellLook PlainLook(CellRole Role);
