// What a flush has come to, in words for the last line.

#pragma once

#include <string>

#include "flusher.h"

// Everything has come as far as Reach.
std::string WrittenText(FlushReach Reach);

// It was not waited for.
std::string StillWritingText(FlushReach Reach);

// The wait for it was ended. What still flushes then holds the file system and cannot be killed.
std::string LeftFlushText(FlushReach Reach);
