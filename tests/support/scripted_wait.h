// Plays the interface on the worker's own thread while the worker waits for an answer.
//
// Requires: the executable wraps ConditionWait and links scripted_wait.cpp. Threads without an
// object of this class wait for real.

#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <vector>

// Replaces the waits of this thread for its lifetime; one object a thread at a time. Each wait
// releases its lock, runs the next step, takes the lock again and returns, as it does when another
// thread took that step and woke this one. An empty step is a wake-up without a reason.
//
// Errors: a wait beyond the last step would never end, so it throws std::logic_error.
class ScriptedWait {
public:
    using Step = std::function<void()>;

    ScriptedWait(std::initializer_list<Step> Steps);
    ScriptedWait(const ScriptedWait&) = delete;
    ScriptedWait& operator=(const ScriptedWait&) = delete;
    ~ScriptedWait();

    // Runs the next step; for the replaced wait only.
    void TakeStep();

    std::size_t Waits() const { return NextStep; }

private:
    std::vector<Step> Script;
    std::size_t NextStep = 0;
};
