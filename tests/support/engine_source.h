// The engine's source, for tests of what is private in it. A test executable includes it once,
// whatever number of files it is made of.

#pragma once

// NOLINTNEXTLINE(bugprone-suspicious-include)
#include "tarvanetransfer.cpp"
