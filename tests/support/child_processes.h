// The processes that a test has started, and what it hears of their ends.

#pragma once

#include "becomes_true.h"

#include <csignal>
#include <fstream>
#include <vector>

#include <sys/types.h>

#include <gtest/gtest.h>

// Those that the calling thread has started and that nobody has waited for, so zombies too.
inline std::vector<pid_t> ChildProcesses() {
    std::ifstream list("/proc/thread-self/children");
    std::vector<pid_t> children;
    for (pid_t child = 0; list >> child;) {
        children.push_back(child);
    }
    return children;
}

// Waits until there are none. A test that counts them begins with it: those of the test before may
// still be about to end.
inline testing::AssertionResult NoChildIsLeft() {
    return BecomesTrue("no process is left", [] { return ChildProcesses().empty(); });
}

// Ignores SIGCHLD for its lifetime, as the program does that some shells and services start.
class ChildSignalIgnored {
public:
    ChildSignalIgnored() : Before(signal(SIGCHLD, SIG_IGN)) {}
    ~ChildSignalIgnored() { signal(SIGCHLD, Before); }
    ChildSignalIgnored(const ChildSignalIgnored&) = delete;
    ChildSignalIgnored& operator=(const ChildSignalIgnored&) = delete;

private:
    const sighandler_t Before;
};
