#include "surface.h"

#include <algorithm>
#include <cstddef>

#include "screen_text.h"
#include "text_field.h"

namespace {

// The lines at the end of the window that say what goes on and what keys there are.
constexpr int kRowsBelowDialogs = 2;

// What frames are made of.
struct Lines {
    std::string_view Across;
    std::string_view Down;
    std::string_view TopLeft;
    std::string_view TopRight;
    std::string_view BottomLeft;
    std::string_view BottomRight;
    std::string_view JointLeft;
    std::string_view JointRight;
};

const Lines& LinesOf(const Screen& On) {
    static constexpr Lines kBoxes{"─", "│", "┌", "┐", "└", "┘", "├", "┤"};
    static constexpr Lines kAscii{"-", "|", "+", "+", "+", "+", "+", "+"};
    return On.IsUtf8() ? kBoxes : kAscii;
}

std::string Repeated(std::string_view Text, int Times) {
    std::string all;
    for (int i = 0; i < Times; ++i) {
        all += Text;
    }
    return all;
}

std::string Across(const Lines& Made, std::string_view Left, std::string_view Right, int Columns) {
    return std::string(Left) + Repeated(Made.Across, Columns - 2) + std::string(Right);
}

// The text, or as much of its start as leaves room for a "~" in the last column. A wide character
// may leave a column more free.
std::string CutToColumns(std::string_view CleanText, int Columns) {
    if (DisplayWidth(CleanText) <= Columns) {
        return std::string(CleanText);
    }
    std::string head = WrapAtColumns(CleanText, Columns - 1).front();
    if (DisplayWidth(head) >= Columns) {
        head.clear();
    }
    return head + "~";
}

std::string Blanks(int Count) {
    return std::string(static_cast<std::size_t>(std::max(0, Count)), ' ');
}

} // namespace

Area CenteredArea(const Screen& On, int Columns, int Rows) {
    const TerminalSize window = On.Size();
    const int columns = std::min(Columns, window.Columns);
    const int rows = std::min(Rows, window.Rows);
    const int rowsAbove = std::max(rows, window.Rows - kRowsBelowDialogs);
    return {(window.Columns - columns) / 2, (rowsAbove - rows) / 2, columns, rows};
}

std::vector<Area> PlacesInRows(const std::vector<int>& Widths, int BlanksBetween, int Columns) {
    std::vector<Area> places;
    int column = 0;
    int row = 0;
    for (const int width : Widths) {
        if (column > 0 && column + width > Columns) {
            column = 0;
            ++row;
        }
        places.push_back({column, row, width, 1});
        column += width + BlanksBetween;
    }
    return places;
}

void Fill(Screen& On, const Area& Where, CellRole Role) {
    for (int row = Where.Row; row < Where.Row + Where.Rows; ++row) {
        On.Put(Where.Column, row, Blanks(Where.Columns), Role);
    }
}

void DrawFrame(Screen& On, const Area& Where, std::string_view CleanTitle, CellRole FrameRole,
               CellRole TitleRole) {
    if (Where.Columns < 2 || Where.Rows < 2) {
        return;
    }
    const Lines& made = LinesOf(On);
    const int lastColumn = Where.Column + Where.Columns - 1;
    const int lastRow = Where.Row + Where.Rows - 1;
    On.Put(Where.Column, Where.Row, Across(made, made.TopLeft, made.TopRight, Where.Columns),
           FrameRole);
    for (int row = Where.Row + 1; row < lastRow; ++row) {
        On.Put(Where.Column, row, made.Down, FrameRole);
        On.Put(lastColumn, row, made.Down, FrameRole);
    }
    On.Put(Where.Column, lastRow, Across(made, made.BottomLeft, made.BottomRight, Where.Columns),
           FrameRole);
    DrawFrameText(On, Where, Where.Row, CleanTitle, TitleRole);
}

void DrawFrameText(Screen& On, const Area& Frame, int Row, std::string_view CleanText,
                   CellRole Role) {
    // A corner, a piece of the line and a blank on each side.
    const int room = Frame.Columns - 6;
    if (CleanText.empty() || room < 1) {
        return;
    }
    std::string text(" ");
    text += ElideMiddle(CleanText, room);
    text += ' ';
    On.Put(Frame.Column + (Frame.Columns - DisplayWidth(text)) / 2, Row, text, Role);
}

void DrawDivider(Screen& On, const Area& Frame, int Row, CellRole Role) {
    const Lines& made = LinesOf(On);
    On.Put(Frame.Column, Row, Across(made, made.JointLeft, made.JointRight, Frame.Columns), Role);
}

Area DrawDialogBox(Screen& On, int Columns, int Rows, std::string_view CleanTitle) {
    const Area box = CenteredArea(On, Columns, Rows);
    Fill(On, box, CellRole::Dialog);
    DrawFrame(On, box, CleanTitle, CellRole::Dialog, CellRole::DialogTitle);
    return {box.Column + kColumnsAroundDialog / 2, box.Row + kRowsAroundDialog / 2,
            box.Columns - kColumnsAroundDialog, box.Rows - kRowsAroundDialog};
}

void DrawField(Screen& On, int Column, int Row, int Columns, const TextField& Field) {
    const TextField::View view = Field.Visible(Columns);
    On.Put(Column, Row, FitToColumns(view.Shown, Columns), CellRole::Input);
    On.ShowCursor(Column + DisplayWidth(view.BeforeCursor), Row);
}

std::string FitToColumns(std::string_view CleanText, int Columns) {
    if (Columns < 1) {
        return {};
    }
    const std::string cut = CutToColumns(CleanText, Columns);
    return cut + Blanks(Columns - DisplayWidth(cut));
}

std::string FitToTheRight(std::string_view CleanText, int Columns) {
    if (Columns < 1) {
        return {};
    }
    const std::string cut = CutToColumns(CleanText, Columns);
    return Blanks(Columns - DisplayWidth(cut)) + cut;
}

void DrawBar(Screen& On, int Column, int Row, int Columns, int Percent) {
    const int percent = std::clamp(Percent, 0, 100);
    const std::string number = FitToTheRight(std::to_string(percent) + "%", 5);
    const int room = std::max(0, Columns - DisplayWidth(number));
    const int done = room * percent / 100;
    if (done > 0) {
        On.Put(Column, Row, Repeated(On.IsUtf8() ? "█" : "#", done), CellRole::BarDone);
    }
    if (done < room) {
        On.Put(Column + done, Row, Repeated(On.IsUtf8() ? "░" : ".", room - done),
               CellRole::BarLeft);
    }
    On.Put(Column + room, Row, number, CellRole::Dialog);
}
