#include "button_row.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "screen_text.h"

namespace {

constexpr int kBlanksBetween = 1;

// Where the hotkey is in the label: the same letter, or that letter in the other case.
std::size_t HotkeyIn(const DialogButton& Button) {
    const std::size_t same = Button.Label.find(Button.Hotkey);
    if (Button.Hotkey.size() != 1 || same != std::string::npos) {
        return same;
    }
    const auto lower = [](char Letter) { return std::tolower(static_cast<unsigned char>(Letter)); };
    const auto found = std::ranges::find(Button.Label, lower(Button.Hotkey[0]), lower);
    return found == Button.Label.end() ? std::string::npos
                                       : static_cast<std::size_t>(found - Button.Label.begin());
}

bool IsInFront(const DialogButton& Button) {
    return !Button.Hotkey.empty() && HotkeyIn(Button) == std::string::npos;
}

std::string ShownText(const DialogButton& Button) {
    return "[ " + (IsInFront(Button) ? Button.Hotkey + " " : "") + Button.Label + " ]";
}

void DrawButton(Screen& On, const DialogButton& Button, const Area& Where, bool bFocus) {
    const std::string text = FitToColumns(ShownText(Button), Where.Columns);
    On.Put(Where.Column, Where.Row, text, bFocus ? CellRole::ButtonFocus : CellRole::Button);
    if (bFocus || Button.Hotkey.empty()) {
        return;
    }
    const std::string_view before =
        IsInFront(Button) ? "" : std::string_view(Button.Label).substr(0, HotkeyIn(Button));
    const int column = DisplayWidth("[ ") + DisplayWidth(before);
    const std::string_view letter =
        IsInFront(Button)
            ? std::string_view(Button.Hotkey)
            : std::string_view(Button.Label).substr(before.size(), Button.Hotkey.size());
    if (column + DisplayWidth(letter) < Where.Columns) {
        On.Put(Where.Column + column, Where.Row, letter, CellRole::Hotkey);
    }
}

} // namespace

ButtonRow::ButtonRow(std::vector<DialogButton> ButtonsToShow, std::size_t FirstFocus)
    : Buttons(std::move(ButtonsToShow)), Focused(FirstFocus) {}

std::vector<Area> ButtonRow::Places(int Columns) const {
    std::vector<int> widths;
    for (const DialogButton& button : Buttons) {
        widths.push_back(std::min(DisplayWidth(ShownText(button)), Columns));
    }
    return PlacesInRows(widths, kBlanksBetween, Columns);
}

int ButtonRow::RowsIn(int Columns) const {
    return Buttons.empty() ? 0 : Places(Columns).back().Row + 1;
}

int ButtonRow::ColumnsIn(int Columns) const {
    int widest = 0;
    for (const Area& place : Places(Columns)) {
        widest = std::max(widest, place.Column + place.Columns);
    }
    return widest;
}

void ButtonRow::Draw(Screen& On, int Column, int Row, int Columns, bool bHasKeys) {
    Drawn = Places(Columns);
    for (std::size_t i = 0; i < Buttons.size(); ++i) {
        Drawn[i].Column += Column;
        Drawn[i].Row += Row;
        DrawButton(On, Buttons[i], Drawn[i], bHasKeys && i == Focused);
    }
}

std::optional<std::size_t> ButtonRow::Handle(const KeyPress& Key) {
    if (Buttons.empty()) {
        return std::nullopt;
    }
    if (Key.Code == KeyCode::Enter || (Key.Code == KeyCode::Text && Key.Text == " ")) {
        return Focused;
    }
    if (Key.Code == KeyCode::Tab || Key.Code == KeyCode::Right) {
        Focused = (Focused + 1) % Buttons.size();
    } else if (Key.Code == KeyCode::BackTab || Key.Code == KeyCode::Left) {
        Focused = (Focused + Buttons.size() - 1) % Buttons.size();
    } else if (Key.Code == KeyCode::Up) {
        MoveToOtherLine(-1);
    } else if (Key.Code == KeyCode::Down) {
        MoveToOtherLine(1);
    }
    for (std::size_t i = 0; i < Buttons.size(); ++i) {
        const bool bHotkey =
            Key.Code == KeyCode::Text && !Key.Text.empty() && Key.Text == Buttons[i].Hotkey;
        const bool bClicked = Key.Code == KeyCode::Mouse &&
                              Key.Mouse.Pressed == MousePress::Button::Left && i < Drawn.size() &&
                              Drawn[i].Contains(Key.Mouse.Column, Key.Mouse.Row);
        if (bHotkey || bClicked) {
            Focused = i;
            return i;
        }
    }
    return std::nullopt;
}

// To the button there whose middle is nearest; nowhere when there is no such line.
void ButtonRow::MoveToOtherLine(int Lines) {
    if (Drawn.size() != Buttons.size()) {
        return;
    }
    const Area from = Drawn[Focused];
    const auto distance = [&from](const Area& To) {
        return std::abs(2 * To.Column + To.Columns - 2 * from.Column - from.Columns);
    };
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < Drawn.size(); ++i) {
        if (Drawn[i].Row == from.Row + Lines &&
            (!nearest || distance(Drawn[i]) < distance(Drawn[*nearest]))) {
            nearest = i;
        }
    }
    Focused = nearest.value_or(Focused);
}
