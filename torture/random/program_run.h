// Runs a case with the program and looks whether it has kept its promises.

#pragma once

#include "random_case.h"
#include "sandbox.h"

#include <string>

// Empty when all were kept. Throws Undetermined, before anything is run, for a case without sources
// or one about which the program promises nothing.
std::string PromisesBrokenBy(const RandomCase& Case, const Sandbox& Place);
