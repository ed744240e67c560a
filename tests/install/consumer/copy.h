// The smallest use of the engine.

#pragma once

#include <string>

// Copies Source to the path Destination, prints how that ended, and returns whether it succeeded.
bool Copy(const std::string& Source, const std::string& Destination);
