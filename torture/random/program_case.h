// Makes a case for the program from a number, the same on every machine.

#pragma once

#include "random_case.h"

#include <cstdint>

// All sources go into one directory, under their own names. What a file holds tells it from all
// others, but for some pairs of a source and what has its name at the destination.
RandomCase GenerateProgramCase(std::uint64_t Seed, std::uint64_t Index, std::uint64_t Attempt);
