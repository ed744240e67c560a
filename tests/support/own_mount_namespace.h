// A mount table of its own for a test whose members are mounts.

#pragma once

#include "mounts.h"

// The first member of a fixture, before those that mount something.
struct OwnMountNamespace {
    OwnMountNamespace() { EnterPrivateMountNamespace(); }
};
