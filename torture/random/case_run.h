// Runs a case with the engine and with the model and compares what they come to.

#pragma once

#include "random_case.h"
#include "sandbox.h"

#include <string>

// Empty when both agree, otherwise how they differ. Throws Undetermined, before anything is run,
// for a case that the rules leave open.
std::string DifferencesIn(const RandomCase& Case, const Sandbox& Place);
