// The two lines at the end of the window: what goes on, and what the function keys do.

#pragma once

#include "screen.h"

#include <optional>
#include <string_view>

// Text is cleaned here and, where it is too long, loses its middle.
void DrawStatusLine(Screen& On, int Row, std::string_view Text, bool bNeedsAttention);

// Spread over the whole width.
void DrawKeyBar(Screen& On, int Row);
// The number of the function key that the key bar of a window of that width shows there.
std::optional<int> FunctionKeyAt(int Column, int WindowColumns);
