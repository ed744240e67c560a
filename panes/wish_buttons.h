// Buttons that come and go with what can be asked for.

#pragma once

#include "button_row.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

template <typename Wish>
class WishButtons {
public:
    struct Choice {
        Wish What;
        DialogButton Button;
    };

    // The button with the focus keeps it as long as it is there; then the first one has it.
    void Offer(const std::vector<Choice>& Choices) {
        std::vector<Wish> wishes;
        std::vector<DialogButton> buttons;
        for (const Choice& choice : Choices) {
            wishes.push_back(choice.What);
            buttons.push_back(choice.Button);
        }
        if (wishes == Offered) {
            return;
        }
        const auto focused =
            Offered.empty() ? wishes.begin() : std::ranges::find(wishes, Offered[Buttons.Focus()]);
        const bool bStays = focused != wishes.end();
        Buttons = ButtonRow(std::move(buttons),
                            bStays ? static_cast<std::size_t>(focused - wishes.begin()) : 0);
        Offered = std::move(wishes);
    }

    void FocusFirst() { Buttons.SetFocus(0); }
    bool IsFirstFocused() const { return Buttons.Focus() == 0; }
    bool IsLastFocused() const { return Buttons.Focus() + 1 == Buttons.Count(); }

    int RowsIn(int Columns) const { return Buttons.RowsIn(Columns); }

    void Draw(Screen& On, int Column, int Row, int Columns, bool bHasKeys = true) {
        Buttons.Draw(On, Column, Row, Columns, bHasKeys);
    }

    std::optional<Wish> Handle(const KeyPress& Key) {
        const std::optional<std::size_t> pressed = Buttons.Handle(Key);
        return pressed ? std::optional<Wish>(Offered[*pressed]) : std::nullopt;
    }

private:
    std::vector<Wish> Offered;
    ButtonRow Buttons{{}};
};
