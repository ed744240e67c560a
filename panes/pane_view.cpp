#include "pane_view.h"

#include <algorithm>
#include <string>

#include "date_text.h"
#include "entry_text.h"
#include "place_text.h"
#include "screen_text.h"
#include "scrolling.h"
#include "size_text.h"

namespace {

constexpr int kSizeColumns = 9;
constexpr int kDateColumns = 16;
constexpr int kDayColumns = 10;
// From where on a pane has room for sizes and dates.
constexpr int kWide = 55;

// How wide each column is; 0 for one that is not shown.
struct Columns {
    // With the mark and the sign before it.
    int Name = 0;
    int Size = 0;
    int Date = 0;
};

// Where there is room for one only, it is the date when that is what somebody sorts by.
Columns Divide(int Inside, OrderKey Key) {
    const bool bBoth = Inside + 2 >= kWide;
    Columns columns;
    columns.Size = bBoth || Key != OrderKey::Date ? kSizeColumns : 0;
    columns.Date = bBoth ? kDateColumns : columns.Size > 0 ? 0 : kDayColumns;
    const int lines = bBoth ? 2 : 1;
    columns.Name = Inside - columns.Size - columns.Date - lines;
    return columns;
}

struct RowText {
    std::string Name;
    std::string Size;
    std::string Date;
};

void DrawRow(Screen& On, int Column, int Row, const Columns& Divided, const RowText& Text,
             CellRole Role, CellRole LineRole) {
    const char* line = On.IsUtf8() ? "│" : "|";
    On.Put(Column, Row, FitToColumns(Text.Name, Divided.Name), Role);
    Column += Divided.Name;
    if (Divided.Size > 0) {
        On.Put(Column, Row, line, LineRole);
        On.Put(Column + 1, Row, FitToTheRight(Text.Size, Divided.Size), Role);
        Column += 1 + Divided.Size;
    }
    if (Divided.Date > 0) {
        On.Put(Column, Row, line, LineRole);
        On.Put(Column + 1, Row, FitToColumns(Text.Date, Divided.Date), Role);
    }
}

// The title of a column, with an arrow behind it where the list is sorted by it.
std::string ColumnTitle(const Screen& On, const char* Title, OrderKey Key, EntryOrder Order) {
    if (Key != Order.Key) {
        return Title;
    }
    const bool bSmallestFirst = Key == OrderKey::Name || Key == OrderKey::Extension;
    const bool bUp = bSmallestFirst != Order.bReversed;
    const char* up = On.IsUtf8() ? " ↑" : " ^";
    const char* down = On.IsUtf8() ? " ↓" : " v";
    return Title + std::string(bUp ? up : down);
}

RowText TitlesFor(const Screen& On, EntryOrder Order) {
    const bool bExtension = Order.Key == OrderKey::Extension;
    const std::string name = bExtension ? ColumnTitle(On, "Extension", OrderKey::Extension, Order)
                                        : ColumnTitle(On, "Name", OrderKey::Name, Order);
    return {"  " + name, ColumnTitle(On, "Size", OrderKey::Size, Order),
            ColumnTitle(On, "Date", OrderKey::Date, Order)};
}

RowText TextOf(const ListedEntry& Entry, bool bMarked, const Columns& Divided) {
    const std::string date = Entry.Modified ? DateText(*Entry.Modified) : "";
    return {std::string(bMarked ? "*" : " ") + SignOf(Entry) + CleanForScreen(Entry.Name),
            EntrySizeText(Entry), date.substr(0, static_cast<std::size_t>(Divided.Date))};
}

CellRole RoleUnderCursor(bool bMarked, bool bActive) {
    if (!bActive) {
        return CellRole::QuietCursor;
    }
    return bMarked ? CellRole::MarkedCursor : CellRole::Cursor;
}

void DrawEntryRow(Screen& On, int Column, int ScreenRow, const Columns& Divided,
                  const BrowseList& List, std::size_t Row, bool bActive) {
    const ListedEntry* entry = List.EntryAt(Row);
    const bool bMarked = List.IsMarked(Row);
    RowText text{" /..", "UP-DIR", ""};
    CellRole role = CellRole::Directory;
    if (entry != nullptr) {
        text = TextOf(*entry, bMarked, Divided);
        role = bMarked ? CellRole::Marked : RoleOf(*entry);
    }
    CellRole lineRole = CellRole::Frame;
    if (Row == List.Cursor()) {
        role = lineRole = RoleUnderCursor(bMarked, bActive);
    }
    DrawRow(On, Column, ScreenRow, Divided, text, role, lineRole);
}

void DrawRows(Screen& On, const Area& Rows, const Columns& Divided, const BrowseList& List,
              std::size_t FirstRow, bool bActive) {
    for (int i = 0; i < Rows.Rows; ++i) {
        const std::size_t row = FirstRow + static_cast<std::size_t>(i);
        if (row < List.RowCount()) {
            DrawEntryRow(On, Rows.Column, Rows.Row + i, Divided, List, row, bActive);
        } else {
            DrawRow(On, Rows.Column, Rows.Row + i, Divided, {}, CellRole::Plain, CellRole::Frame);
        }
    }
}

void DrawFooter(Screen& On, const Area& Frame, int Row, const std::vector<FooterLine>& Lines,
                bool bTyping) {
    const int column = Frame.Column + 2;
    const int columns = Frame.Columns - 4;
    for (const FooterLine& line : Lines) {
        On.Put(column, Row++, FitToColumns(line.CleanText, columns), line.Role);
    }
    if (bTyping) {
        const int behind = DisplayWidth(Lines.back().CleanText);
        On.ShowCursor(column + std::min(behind, columns), Row - 1);
    }
}

} // namespace

void PaneView::Draw(Screen& On, const Area& Where, const BrowseList& List, const PaneState& State) {
    const std::vector<FooterLine> footer = PaneFooter(List, State, Where.Columns - 4);
    const int lastRow = Where.Row + Where.Rows - 1;
    const int divider = lastRow - static_cast<int>(footer.size()) - 1;
    const int firstRow = Where.Row + 2;
    Rows = {Where.Column + 1, firstRow, Where.Columns - 2, divider - firstRow};
    RowCount = List.RowCount();
    FirstRow = ScrolledTo(List.Cursor(), FirstRow, static_cast<std::size_t>(Rows.Rows), RowCount);

    DrawFrame(On, Where, PlaceText(List.Place()), CellRole::Frame,
              State.bActive ? CellRole::Title : CellRole::Frame);
    if (const auto free = List.FreeBytes()) {
        DrawFrameText(On, Where, lastRow, SizeText(*free) + " free", CellRole::Frame);
    }
    const Columns divided = Divide(Rows.Columns, List.Order().Key);
    DrawRow(On, Rows.Column, Where.Row + 1, divided, TitlesFor(On, List.Order()), CellRole::Title,
            CellRole::Frame);
    DrawRows(On, Rows, divided, List, FirstRow, State.bActive);
    DrawDivider(On, Where, divider, CellRole::Frame);
    DrawFrameText(On, Where, divider, MarkedText(List.Marked(), Where.Columns - 6),
                  CellRole::Marked);
    DrawFooter(On, Where, divider + 1, footer, State.bActive && State.Search.has_value());
}

std::optional<std::size_t> PaneView::RowAt(int Column, int ScreenRow) const {
    if (!Rows.Contains(Column, ScreenRow)) {
        return std::nullopt;
    }
    const std::size_t row = FirstRow + static_cast<std::size_t>(ScreenRow - Rows.Row);
    return row < RowCount ? std::optional(row) : std::nullopt;
}
