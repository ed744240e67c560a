// Sizes as the engine writes them in its own texts, for the places where a front end shows one.

#pragma once

#include <cstdint>
#include <string>

// "47.1 KB", "1023 B". The unit is chosen before rounding, so 1048575 bytes are "1024.0 KB".
std::string SizeText(std::uint64_t SizeBytes);

// "47.1 KB (48230 bytes)".
std::string SizeTextWithBytes(std::uint64_t SizeBytes);
