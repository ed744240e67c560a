// The two panes: what they show, which one has the keys, and the keys that stay within them.

#pragma once

#include "browser.h"
#include "pane_view.h"
#include "panes_layout.h"
#include "panes_request.h"
#include "quick_search.h"

#include <array>
#include <chrono>
#include <optional>

// Threads: one.
class FilePanes {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit FilePanes(const PanesRequest& Request);

    Browser& Active() { return Sides[ActiveSide].Way; }
    Browser& Other() { return Sides[1 - ActiveSide].Way; }

    // Goes on with what is being read.
    void Attend(TimePoint Now);
    // Whether something is being read, so that Attend is to be called soon.
    bool IsReading() const;
    // Both are read again, for what a transfer has done.
    void ReadAgain();

    // False for a key that neither the panes nor their lists know.
    bool TakeKey(const KeyPress& Key, TimePoint Now);
    void Draw(Screen& On, const PanesLayout& Layout, TimePoint Now);

private:
    struct Side {
        Browser Way;
        PaneView View = {};
        QuickSearch Search = {};
        // Since when it reads; nothing while it does not.
        std::optional<TimePoint> ReadingSince = {};
    };

    bool TakeCharacter(const KeyPress& Key);
    bool TakeMouse(const MousePress& Mouse, TimePoint Now);

    std::array<Side, 2> Sides;
    std::size_t ActiveSide = 0;
    // The first one is shown to the right.
    bool bSwapped = false;
    // The latest click, for the second one of a double click.
    std::optional<MousePress> LatestClick;
    TimePoint LatestClickAt;
};
