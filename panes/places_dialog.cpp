#include "places_dialog.h"

#include <algorithm>
#include <strings.h>
#include <utility>

#include "screen_text.h"
#include "scrolling.h"

namespace {

constexpr int kColumns = 70;
constexpr std::size_t kNumbered = 9;

int WidestLabel(const std::vector<NamedPlace>& Places) {
    int widest = 0;
    for (const NamedPlace& place : Places) {
        widest = std::max(widest, DisplayWidth(CleanForScreen(place.Label)));
    }
    return widest;
}

bool BeginsWith(const std::string& Label, const std::string& Beginning) {
    return strncasecmp(Label.c_str(), Beginning.c_str(), Beginning.size()) == 0;
}

} // namespace

PlacesDialog::PlacesDialog(std::vector<NamedPlace> PlacesToShow)
    : Places(std::move(PlacesToShow)) {}

void PlacesDialog::Draw(Screen& On, TimePoint) {
    const Area frame = CenteredArea(On, kColumns, static_cast<int>(Places.size()) + 2);
    Fill(On, frame, CellRole::Dialog);
    DrawFrame(On, frame, "Go to", CellRole::Dialog, CellRole::DialogTitle);
    DrawFrameText(On, frame, frame.Row + frame.Rows - 1, "Enter: go   Esc: close",
                  CellRole::Dialog);
    Rows = {frame.Column + 1, frame.Row + 1, frame.Columns - 2, frame.Rows - 2};
    FirstRow = ScrolledTo(Cursor, FirstRow, static_cast<std::size_t>(Rows.Rows), Places.size());
    const int labelColumns = std::min(WidestLabel(Places), Rows.Columns / 2);
    for (int row = 0; row < Rows.Rows; ++row) {
        const std::size_t place = FirstRow + static_cast<std::size_t>(row);
        if (place < Places.size()) {
            DrawRow(On, Rows.Row + row, place, labelColumns);
        }
    }
}

void PlacesDialog::DrawRow(Screen& On, int ScreenRow, std::size_t Place, int LabelColumns) const {
    const std::string number = Place < kNumbered ? std::to_string(Place + 1) : " ";
    const std::string label = CleanForScreen(Places[Place].Label);
    const std::string path = CleanForScreen(Places[Place].Place.string());
    const int room = Rows.Columns - LabelColumns - 6;
    const bool bCursor = Place == Cursor;
    const CellRole role = bCursor ? CellRole::ButtonFocus : CellRole::Dialog;
    On.Put(Rows.Column, ScreenRow,
           " " + number + "  " + FitToColumns(label, LabelColumns) + "  " +
               FitToColumns(ElideMiddle(path, room), room),
           role);
    On.Put(Rows.Column + 1, ScreenRow, number, bCursor ? role : CellRole::Hotkey);
}

void PlacesDialog::TakeKey(const KeyPress& Key, TimePoint) {
    if (const auto down = RowsDown(Key, Rows.Rows)) {
        Cursor = MovedRow(Cursor, *down, Places.size());
    } else if (Key.Code == KeyCode::Enter) {
        Choose(Cursor);
    } else if (Key.Code == KeyCode::Escape) {
        bClosed = true;
    } else if (Key.Code == KeyCode::Text) {
        TakeText(Key.Text);
    } else if (Key.Code == KeyCode::Mouse) {
        TakeClick(Key.Mouse);
    }
}

void PlacesDialog::TakeText(const std::string& Text) {
    if (Text >= "1" && Text <= "9") {
        Choose(static_cast<std::size_t>(Text[0] - '1'));
        return;
    }
    for (std::size_t step = 1; step <= Places.size(); ++step) {
        const std::size_t row = (Cursor + step) % Places.size();
        if (BeginsWith(Places[row].Label, Text)) {
            Cursor = row;
            return;
        }
    }
}

void PlacesDialog::TakeClick(const MousePress& Mouse) {
    if (Mouse.Pressed == MousePress::Button::Left && Rows.Contains(Mouse.Column, Mouse.Row)) {
        Choose(FirstRow + static_cast<std::size_t>(Mouse.Row - Rows.Row));
    }
}

void PlacesDialog::Choose(std::size_t Row) {
    if (Row < Places.size()) {
        ChosenPlace = Places[Row].Place;
        bClosed = true;
    }
}
