// The dialogs that lie over the panes, one on top of the other.

#pragma once

#include "dialog.h"

#include <deque>
#include <functional>
#include <memory>

// The one on top has the keys.
//
// Threads: one.
class DialogStack {
public:
    using TimePoint = Dialog::TimePoint;

    // Follow looks at what the dialog has come to, after each key and each round of the loop, for
    // the last time when it is closed; it may open others.
    template <typename Shown>
    Shown& Open(std::unique_ptr<Shown> NewDialog, std::function<void(Shown&)> Follow) {
        Shown& shown = *NewDialog;
        Layers.push_back({std::move(NewDialog), [&shown, follow = std::move(Follow)] {
                              if (follow) {
                                  follow(shown);
                              }
                          }});
        return shown;
    }

    bool IsEmpty() const { return Layers.empty(); }
    // Whether the one on top is.
    bool IsGuarded() const { return !IsEmpty() && Layers.back().Shown->IsGuarded(); }

    void TakeKey(const KeyPress& Key, TimePoint Now);
    // Follows all of them, and takes away those that are closed.
    void Attend();
    void Draw(Screen& On, TimePoint Now);

private:
    struct Layer {
        std::unique_ptr<Dialog> Shown;
        std::function<void()> Follow;
    };

    // A layer stays where it is while others are opened on top of it.
    std::deque<Layer> Layers;
};
