// Keeps what was typed before a question from answering it.

#pragma once

#include <algorithm>
#include <chrono>

#include "key_press.h"

// Keys are dead for a moment after a question has appeared: long in the middle of something else,
// where somebody may be typing; short for whoever has just answered another one and is still
// looking at the screen. A dead key shows that somebody types on, so the moment begins again with
// it.
class KeyGuard {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::milliseconds kDeadTime{700};
    static constexpr std::chrono::milliseconds kDeadTimeAfterAnswer{200};
    static constexpr std::chrono::seconds kStillAttentive{2};

    void QuestionAppears(TimePoint Now) {
        const bool bAttentive = Now - AnsweredAt < kStillAttentive;
        LiveFrom = std::max(LiveFrom, Now + (bAttentive ? kDeadTimeAfterAnswer : kDeadTime));
    }
    void AnswerIsGiven(TimePoint Now) { AnsweredAt = Now; }

    // A key came that nobody had asked for.
    void KeyIsDead(TimePoint Now) { LiveFrom = Now + kDeadTime; }

    // Takes each key that comes while a question is shown. Esc is never dead: it destroys nothing.
    bool LetsThrough(const KeyPress& Key, TimePoint Now) {
        const bool bLive = Key.Code == KeyCode::Escape || Now >= LiveFrom;
        if (!bLive) {
            KeyIsDead(Now);
        }
        return bLive;
    }

private:
    TimePoint LiveFrom;
    TimePoint AnsweredAt;
};
