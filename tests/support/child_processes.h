// The processes that a test has started.

#pragma once

#include <fstream>
#include <vector>

#include <sys/types.h>

// Those that the calling thread has started and that nobody has waited for, so zombies too.
inline std::vector<pid_t> ChildProcesses() {
    std::ifstream list("/proc/thread-self/children");
    std::vector<pid_t> children;
    for (pid_t child = 0; list >> child;) {
        children.push_back(child);
    }
    return children;
}
