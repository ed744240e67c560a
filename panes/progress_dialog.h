// How far one transfer is, and how it has ended.

#pragma once

#include "dialog.h"
#include "progress_scene.h"
#include "wish_buttons.h"

#include <cstddef>
#include <utility>

// What cannot be shown whole in a small window goes part by part, the least important first; end
// lines go never, but can be scrolled.
class ProgressDialog : public Dialog {
public:
    enum class Wish {
        None,
        // Whatever it is at.
        Cancel,
        Background,
        Close,
        // The same plan, leaving alone what is there and the same.
        RunAgain,
        // To see the question that waits.
        Answer,
    };

    explicit ProgressDialog(ProgressScene Scene);

    void SetScene(ProgressScene Scene);

    void Draw(Screen& On, TimePoint Now) override;
    void TakeKey(const KeyPress& Key, TimePoint Now) override;
    // After Background, Close and RunAgain.
    bool IsClosed() const override { return bClosed; }

    // What was asked for since the last call.
    Wish TakeWish() { return std::exchange(Asked, Wish::None); }

private:
    void OfferButtons();
    bool IsCancelRequested() const;
    void Ask(Wish What);
    int SteadyRows(TerminalSize Window, int Rows);
    // Says in PositionRow which of them are in sight, where not all are.
    void DrawEndLines(Screen& On, const Area& Where, int PositionRow);

    ProgressScene Shown;
    WishButtons<Wish> Buttons;
    Wish Asked = Wish::None;
    bool bClosed = false;
    // The most that it has taken in a window of that size.
    int MostRows = 0;
    TerminalSize MostRowsIn;
    // Of the end lines: the first that is shown, how many can be that, and how many fit.
    std::size_t FirstLine = 0;
    std::size_t FirstLines = 1;
    int LinesThatFit = 0;
};
