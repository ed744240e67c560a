// Waits for what another thread is about to do.

#pragma once

#include <chrono>
#include <string>
#include <thread>

#include <gtest/gtest.h>

// Polls Holds until it is true, for about 20 seconds at most; What says what was waited for. Counts
// polls instead of reading a clock, because tests replace clocks.
template <typename Predicate>
testing::AssertionResult BecomesTrue(const std::string& What, Predicate Holds) {
    for (int polls = 0; polls < 20000; ++polls) {
        if (Holds()) {
            return testing::AssertionSuccess();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return testing::AssertionFailure() << "waited in vain until " << What;
}
