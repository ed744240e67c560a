// Makes a failing case as small as it gets while it still fails.

#pragma once

#include "random_case.h"

#include <functional>

// Requires: Fails holds for Case; it must not throw.
RandomCase ShrunkCase(const RandomCase& Case, const std::function<bool(const RandomCase&)>& Fails);
