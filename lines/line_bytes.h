// The bytes that put a line on the screen, or turn it into the next one.

#pragma once

#include <string>

#include "block_layout.h"

// The line with its styles.
std::string LineBytes(const ScreenLine& Line);

// Turns Shown into Wanted with few bytes: a bar of a hundred cells that is redrawn ten times a
// second is too much for a slow line. Requires: the cursor stands at the start of Shown.
std::string ChangeBytes(const ScreenLine& Shown, const ScreenLine& Wanted);
