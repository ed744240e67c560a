// What stands on the lines of a frame.

#pragma once

#include "surface.h"

#include <string_view>

// In the middle of that row of the frame, as its title is. Row is the screen's. Where there is no
// room for all of it, it loses its middle; empty text is nothing.
void DrawFrameText(Screen& On, const Area& Frame, int Row, std::string_view CleanText,
                   CellRole Role);
