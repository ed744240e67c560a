// Keeping a library from acting on signals.

#pragma once

#include <array>
#include <csignal>
#include <cstddef>

#include "signals_blocked.h"

// While it lives, SIGINT, SIGTERM, SIGTSTP and SIGWINCH look as if somebody acted on them already,
// which ncurses respects when it starts, and from then on. None of them comes meanwhile.
class SignalsTaken {
public:
    SignalsTaken() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], nullptr, &Before[i]);
            if (Before[i].sa_handler == SIG_DFL) {
                struct sigaction action {};
                action.sa_handler = [](int) {};
                sigaction(kSignals[i], &action, nullptr);
            }
        }
    }
    ~SignalsTaken() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], &Before[i], nullptr);
        }
    }
    SignalsTaken(const SignalsTaken&) = delete;
    SignalsTaken& operator=(const SignalsTaken&) = delete;

private:
    static constexpr std::array<int, 4> kSignals = {SIGINT, SIGTERM, SIGTSTP, SIGWINCH};
    const SignalsBlocked Blocked;
    std::array<struct sigaction, kSignals.size()> Before{};
};
