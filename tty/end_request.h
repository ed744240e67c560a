// Whether the user or the system wants the program to end, and how soon.

#pragma once

#include <chrono>
#include <optional>

// Collects the wishes of one run. Esc and SIGINT cancel when they come first and leave at once when
// they come again; a signal that ends programs leaves some time for the clean-up.
class EndRequest {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // How long the clean-up may take after Terminate.
    static constexpr std::chrono::seconds kCleanUpTime{2};

    // For Esc and SIGINT.
    void Interrupt();
    // What Esc or SIGINT has canceled is over. What comes next takes another one to cancel it.
    void FulfillInterrupt();
    // For SIGTERM, SIGHUP and a closed output, which counts as SIGPIPE.
    void Terminate(int Signal, TimePoint Now);
    // For SIGQUIT: the program is to leave at once.
    void Quit(int Signal);

    // Whatever runs is to be canceled.
    bool IsAsked() const { return EndSignal.has_value(); }
    // There is no more time for that.
    bool MustLeave(TimePoint Now) const { return bLeave || (Deadline && Now >= *Deadline); }
    // What the program is to end by: SIGINT for Esc too. Requires: IsAsked.
    int Signal() const { return *EndSignal; }

private:
    std::optional<int> EndSignal;
    std::optional<TimePoint> Deadline;
    bool bLeave = false;
};
