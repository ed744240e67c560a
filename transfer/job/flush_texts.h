// What a flush has come to, in words for the last line.

#pragma once

#include <string>

#include "flusher.h"

// Everything has come as far as Reach.
std::string WrittenText(FlushReach Reach);

// Nobody waits for it any more.
std::string StillWritingText(FlushReach Reach);
