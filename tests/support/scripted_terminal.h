// A terminal without a device, for tests of what runs on an interface loop: it shows what is
// written, presses prepared keys and raises prepared signals, and its clock moves only while
// somebody waits.

#pragma once

#include "plain_screen.h"
#include "terminal.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <deque>
#include <functional>
#include <poll.h>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

// What the program would have exited with.
struct ScriptedExit {
    int Status = 0;
};

// Errors: a wait that goes on for ever throws, with the screen.
class ScriptedTerminal : public Terminal {
public:
    // What happens in the next wait in which When holds; one step a wait.
    struct Step {
        std::function<bool()> When;
        Events Happens;
        std::function<void()> Then = {};
    };

    void Script(Step Next) { Steps.push_back(std::move(Next)); }
    void PressWhen(std::function<bool()> When, std::vector<KeyPress> Keys) {
        Script({std::move(When), {{}, std::move(Keys)}});
    }
    void RaiseWhen(std::function<bool()> When, int Signal) {
        Script({std::move(When), {{Signal}, {}}});
    }

    std::function<bool()> Shows(const std::string& Text) {
        return [this, Text] { return Screen().find(Text) != std::string::npos; };
    }
    std::function<bool()> After(std::chrono::milliseconds Time) {
        return [this, at = Clock + Time] { return Clock >= at; };
    }
    // The same after the step before.
    std::function<bool()> Later(std::chrono::milliseconds Time) {
        return [this, Time] { return Clock >= LatestStep + Time; };
    }
    static std::function<bool()> Always() {
        return [] { return true; };
    }

    // The clock stands still until Holds does, for what takes its time beside the loop.
    void StopClockUntil(std::function<bool()> Holds) { ClockGoesOn = std::move(Holds); }

    // All that is on the screen and above it, a line each.
    std::string Screen() const {
        std::string text;
        for (const std::string& line : Shown.Text()) {
            text += line + "\n";
        }
        return text;
    }
    const std::string& Written() const { return Bytes; }
    bool IsThrough() const { return Steps.empty(); }
    // Whether the descriptor of the latest wait would end it on a real terminal.
    bool IsWoken() const {
        pollfd ready{Waking, POLLIN, 0};
        const int atOnce = 0;
        return poll(&ready, 1, atOnce) > 0;
    }
    // What was asked of it, in words: "keys", "no keys", "stop 20", "closed", "finished",
    // "signal 15 after 2 s".
    const std::vector<std::string>& Calls() const { return Asked; }

    void SetSize(int Columns, int Rows) {
        Window = {Columns, Rows};
        Shown.Resize(Columns, Rows);
    }

    // As the program finds it; a test changes them before or meanwhile.
    bool bForeground = true;
    bool bClosed = false;
    bool bOutputTerminal = true;
    bool bRedraws = true;
    bool bAsks = true;
    bool bOutputStopped = false;
    std::set<int> IgnoredSignals;
    // A stop puts the program into the foreground again, as `fg` does.
    bool bForegroundAfterStop = true;
    // False where nobody could continue it.
    bool bStops = true;

    TimePoint Now() const override { return Clock; }

    Events Wait(std::chrono::microseconds Timeout, int Descriptor) override {
        if (++Waits > kMostWaits) {
            throw std::runtime_error("the loop goes on for ever; the screen:\n" + Screen());
        }
        Waking = Descriptor;
        if (!Steps.empty() && Steps.front().When()) {
            const Step step = std::move(Steps.front());
            Steps.pop_front();
            LatestStep = Clock;
            if (step.Then) {
                step.Then();
            }
            return bKeyMode ? step.Happens : Events{step.Happens.Signals, {}};
        }
        // What goes on beside the loop takes real time.
        pollfd ready{Descriptor, POLLIN, 0};
        if (Descriptor < 0 || poll(&ready, 1, 1) == 0) {
            Clock += ClockGoesOn() ? std::min(Timeout, kLongestStep) : std::chrono::microseconds(0);
        }
        return {};
    }

    bool IsForeground() const override { return bForeground; }
    bool IsClosed() const override { return bClosed; }
    bool Receives(int Signal) const override { return IgnoredSignals.count(Signal) == 0; }
    bool EnterKeyMode() override {
        if (!bForeground) {
            return false;
        }
        Asked.emplace_back("keys");
        return bKeyMode = true;
    }
    void LeaveKeyMode() override {
        if (std::exchange(bKeyMode, false)) {
            Asked.emplace_back("no keys");
        }
    }
    bool TakesKeys() const override { return bKeyMode && bForeground; }
    bool StopBy(int StopSignal) override {
        Asked.push_back("stop " + std::to_string(StopSignal));
        bForeground = bForegroundAfterStop;
        return bStops;
    }
    bool IsOutputTerminal() const override { return bOutputTerminal; }
    bool CanRedraw() const override { return bRedraws; }
    bool CanAsk() const override { return bAsks; }
    bool CanDraw() const override {
        return (bOutputTerminal || bAsks) && bForeground && !bOutputStopped;
    }
    // What is shown on its screen are characters of one byte.
    bool IsUtf8() const override { return false; }
    TerminalSize Size() const override { return Window; }
    void Write(std::string_view Text) override {
        Bytes += Text;
        std::string visible(Text);
        std::erase(visible, '\a');
        Shown.Write(visible);
    }
    void Close() override {
        LeaveKeyMode();
        Asked.emplace_back("closed");
    }
    void SendSignalAfter(std::chrono::seconds Delay, int Signal) override {
        Asked.push_back("signal " + std::to_string(Signal) + " after " +
                        std::to_string(Delay.count()) + " s");
    }
    void FinishWriting() override { Asked.emplace_back("finished"); }
    void Exit(int Status) override { throw ScriptedExit{Status}; }

private:
    static constexpr int kMostWaits = 20000;
    static constexpr std::chrono::microseconds kLongestStep{std::chrono::seconds(1)};

    std::deque<Step> Steps;
    TimePoint Clock = std::chrono::steady_clock::now();
    TimePoint LatestStep = Clock;
    std::function<bool()> ClockGoesOn = Always();
    PlainScreen Shown{80, 24};
    TerminalSize Window;
    std::string Bytes;
    std::vector<std::string> Asked;
    bool bKeyMode = false;
    int Waits = 0;
    int Waking = -1;
};

inline KeyPress PressedKey(char Byte) {
    return {KeyCode::Text, std::string(1, Byte)};
}

inline const KeyPress kEscapeKey{KeyCode::Escape, {}};
inline const KeyPress kEnterKey{KeyCode::Enter, {}};
