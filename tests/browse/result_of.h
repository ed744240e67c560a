// Waits for what a process is about to tell, as a loop does.

#pragma once

#include <optional>
#include <poll.h>
#include <stdexcept>

// Woken by the descriptor until there is a result, for 20 seconds at most.
template <typename Source>
auto ResultOf(Source& From) {
    constexpr int kLimitMilliseconds = 20000;
    while (true) {
        if (auto result = From.TakeResult()) {
            return std::move(*result);
        }
        pollfd event{From.OverFd(), POLLIN, 0};
        if (poll(&event, 1, kLimitMilliseconds) != 1) {
            throw std::runtime_error("nothing came in 20 seconds");
        }
    }
}
