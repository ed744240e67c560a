// Choices beside each other, of which one or any are on.

#pragma once

#include "key_press.h"
#include "surface.h"

#include <cstddef>
#include <string>
#include <vector>

struct GroupChoice {
    std::string Label;
    // Chooses it while its group has the keys: a small letter that is in the label, which is ASCII.
    std::string Letter;
    // What it does, in one line.
    std::string Hint;
};

class ChoiceGroup {
public:
    enum class Kind {
        // "(*) Ask  ( ) Skip".
        One,
        // "[x] Modes  [ ] Owner".
        Any,
    };

    ChoiceGroup(Kind KindOfGroup, std::string GroupTitle, std::vector<GroupChoice> GroupChoices);

    bool IsOn(std::size_t Choice) const { return On.at(Choice); }
    // The one that is on. Requires: the kind is One.
    std::size_t Chosen() const { return Focused; }
    // Of the kind One, turns it on and the others off; else to the other state.
    void Press(std::size_t Choice);
    // Requires: the kind is Any.
    void Set(std::size_t Choice, bool bOn) { On.at(Choice) = bOn; }

    // The title stands in the first TitleColumns, the choices to the right of it in as many lines
    // as they need.
    int RowsIn(int Columns, int TitleColumns) const;
    // Draws them and remembers where they are, for the mouse.
    void Draw(Screen& Surface, const Area& Where, int TitleColumns, bool bHasKeys);

    // Arrows to the left and right, a blank, letters and clicks. Whether it was for this group.
    // Requires: of the mouse, only its left button.
    bool Handle(const KeyPress& Key);

    // Of the choice that keys act on.
    const std::string& Hint() const { return Choices.at(Focused).Hint; }

private:
    std::vector<Area> Places(int Columns) const;
    void MoveTo(std::size_t Choice);
    bool TakeClick(const MousePress& Mouse);

    Kind What;
    std::string Title;
    std::vector<GroupChoice> Choices;
    std::vector<bool> On;
    std::size_t Focused = 0;
    std::vector<Area> Drawn;
};
