// Buttons beside each other, in as many lines as they need.

#pragma once

#include "key_press.h"
#include "surface.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

struct DialogButton {
    std::string Label;
    // A letter that presses the button, or the name of a key that the dialog takes itself, as
    // "Esc"; empty for none. It stands out in the label, or stands in front of a label that it is
    // no part of.
    std::string Hotkey = {};
};

class ButtonRow {
public:
    explicit ButtonRow(std::vector<DialogButton> ButtonsToShow, std::size_t FirstFocus = 0);

    // How many lines they take.
    int RowsIn(int Columns) const;
    // How wide the widest of these lines is.
    int ColumnsIn(int Columns) const;
    // Draws them and remembers where they are, for the mouse.
    void Draw(Screen& On, int Column, int Row, int Columns, bool bHasKeys);

    // Which button was pressed: by Enter or a blank on the one with the focus, by its hotkey, by
    // the mouse. Tab, BackTab and arrows move the focus: up and down only where there are several
    // lines.
    std::optional<std::size_t> Handle(const KeyPress& Key);

    std::size_t Focus() const { return Focused; }
    void SetFocus(std::size_t Button) { Focused = Button; }
    std::size_t Count() const { return Buttons.size(); }

private:
    // Where the buttons are when the first one is at 0, 0.
    std::vector<Area> Places(int Columns) const;
    void MoveToOtherLine(int Lines);

    std::vector<DialogButton> Buttons;
    std::size_t Focused = 0;
    std::vector<Area> Drawn;
};
