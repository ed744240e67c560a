// What a model throws where the rules do not say what happens: a write to a pipe that nobody reads,
// two times of this very moment, a way out of the tree. Such a case is not run.

#pragma once

#include <stdexcept>

struct Undetermined : std::runtime_error {
    using std::runtime_error::runtime_error;
};
