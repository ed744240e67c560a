// Makes a case from a number, the same on every machine.

#pragma once

#include "random_case.h"

#include <cstdint>

// The same three numbers always make the same case. Attempt tells apart the tries for a case whose
// first ones the rules leave open.
RandomCase GenerateCase(std::uint64_t Seed, std::uint64_t Index, std::uint64_t Attempt);
