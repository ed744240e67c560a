// What a desk leaves to those who finish the copies when the job is over.

#pragma once

#include "answered_names.h"
#include "made_private.h"

#include <vector>

struct DeskNotes {
    // Whether a file that is more open than its source is made private before it is replaced.
    bool bMakesPrivate = false;
    AnsweredNames Names = {};
    // In the order in which they were about to be replaced.
    std::vector<MadePrivate> Privates = {};
};
