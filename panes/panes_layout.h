// How the window is divided.

#pragma once

#include "surface.h"

#include <optional>

struct PanesLayout {
    Area Left;
    Area Right;
    int StatusRow = 0;
    int KeyRow = 0;
};

// Errors: nothing for a window that is too small to work in.
std::optional<PanesLayout> LayOutPanes(TerminalSize Window);

// Says so on an erased screen.
void DrawTooSmall(Screen& On);
