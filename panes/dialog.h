// Something that lies over the panes and has the keys until it is closed.

#pragma once

#include "key_press.h"
#include "screen.h"

#include <chrono>

class Dialog {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    Dialog() = default;
    virtual ~Dialog() = default;
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    virtual void Draw(Screen& On, TimePoint Now) = 0;
    virtual void TakeKey(const KeyPress& Key, TimePoint Now) = 0;
    // Whether it is to go away. What it has come to is asked of the dialog itself.
    virtual bool IsClosed() const = 0;
    // Whether keys are dead at first, because it may come while somebody is typing.
    virtual bool IsGuarded() const { return false; }
};
