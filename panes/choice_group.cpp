#include "choice_group.h"

#include "screen_text.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace {

constexpr int kMarkColumns = 4;
constexpr int kBlanksBetween = 2;

// Where the letter is in the label, be it a capital there.
std::size_t LetterIn(const GroupChoice& Choice) {
    const auto lower = [](char Letter) { return std::tolower(static_cast<unsigned char>(Letter)); };
    const auto found = std::ranges::find(Choice.Label, Choice.Letter.at(0), lower);
    return static_cast<std::size_t>(found - Choice.Label.begin());
}

} // namespace

ChoiceGroup::ChoiceGroup(Kind KindOfGroup, std::string GroupTitle,
                         std::vector<GroupChoice> GroupChoices)
    : What(KindOfGroup), Title(std::move(GroupTitle)), Choices(std::move(GroupChoices)),
      On(Choices.size()) {
    if (What == Kind::One) {
        Press(0);
    }
}

void ChoiceGroup::Press(std::size_t Choice) {
    const bool bWasOn = On.at(Choice);
    if (What == Kind::One) {
        On.assign(On.size(), false);
    }
    On[Choice] = What == Kind::One || !bWasOn;
    Focused = Choice;
}

std::vector<Area> ChoiceGroup::Places(int Columns) const {
    std::vector<int> widths;
    for (const GroupChoice& choice : Choices) {
        widths.push_back(kMarkColumns + DisplayWidth(choice.Label));
    }
    return PlacesInRows(widths, kBlanksBetween, Columns);
}

int ChoiceGroup::RowsIn(int Columns, int TitleColumns) const {
    return Places(Columns - TitleColumns).back().Row + 1;
}

void ChoiceGroup::Draw(Screen& Surface, const Area& Where, int TitleColumns, bool bHasKeys) {
    Surface.Put(Where.Column, Where.Row, Title, CellRole::Dialog);
    Drawn = Places(Where.Columns - TitleColumns);
    for (std::size_t i = 0; i < Choices.size(); ++i) {
        const GroupChoice& choice = Choices[i];
        Area& place = Drawn[i];
        place.Column += Where.Column + TitleColumns;
        place.Row += Where.Row;
        const std::string mark =
            What == Kind::One ? (On[i] ? "(*) " : "( ) ") : (On[i] ? "[x] " : "[ ] ");
        const bool bFocus = bHasKeys && i == Focused;
        Surface.Put(place.Column, place.Row, mark + choice.Label,
                    bFocus ? CellRole::ButtonFocus : CellRole::Dialog);
        const std::size_t letter = LetterIn(choice);
        if (bHasKeys && !bFocus) {
            Surface.Put(place.Column + kMarkColumns + static_cast<int>(letter), place.Row,
                        choice.Label.substr(letter, 1), CellRole::Hotkey);
        }
    }
}

void ChoiceGroup::MoveTo(std::size_t Choice) {
    if (What == Kind::One) {
        Press(Choice);
    }
    Focused = Choice;
}

bool ChoiceGroup::TakeClick(const MousePress& Mouse) {
    for (std::size_t i = 0; i < Drawn.size(); ++i) {
        if (Drawn[i].Contains(Mouse.Column, Mouse.Row)) {
            Press(i);
            return true;
        }
    }
    return false;
}

bool ChoiceGroup::Handle(const KeyPress& Key) {
    if (Key.Code == KeyCode::Mouse) {
        return TakeClick(Key.Mouse);
    }
    if (Key.Code == KeyCode::Left) {
        MoveTo(Focused == 0 ? 0 : Focused - 1);
        return true;
    }
    if (Key.Code == KeyCode::Right) {
        MoveTo(Focused + 1 == Choices.size() ? Focused : Focused + 1);
        return true;
    }
    if (Key.Code != KeyCode::Text) {
        return false;
    }
    for (std::size_t i = 0; i < Choices.size(); ++i) {
        const bool bLetter = Key.Text == Choices[i].Letter || (Key.Text == " " && i == Focused);
        if (bLetter) {
            Press(i);
            return true;
        }
    }
    return false;
}
