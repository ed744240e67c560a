// How things are drawn on a screen: frames, lines to type in, text that fits, bars.

#pragma once

#include "screen.h"

#include <string>
#include <string_view>
#include <vector>

class TextField;

struct Area {
    int Column = 0;
    int Row = 0;
    int Columns = 0;
    int Rows = 0;

    bool Contains(int AtColumn, int AtRow) const {
        return AtColumn >= Column && AtColumn < Column + Columns && AtRow >= Row &&
               AtRow < Row + Rows;
    }
};

// The area in the middle of the window that a dialog of that size gets; smaller where the window
// is. The two lines at the end of the window stay in sight where it fits above them.
Area CenteredArea(const Screen& On, int Columns, int Rows);

// One place beside the other with blanks between, in as many rows as it takes. The first is at 0,
// 0.
std::vector<Area> PlacesInRows(const std::vector<int>& Widths, int BlanksBetween, int Columns);

// Blank cells.
void Fill(Screen& On, const Area& Where, CellRole Role);

// A frame with a title in the middle of its upper line, and nothing inside.
void DrawFrame(Screen& On, const Area& Where, std::string_view CleanTitle, CellRole FrameRole,
               CellRole TitleRole);
// Text in the middle of that row of the frame, as its title is. Row is the screen's. Where there is
// no room for all of it, it loses its middle; empty text is nothing.
void DrawFrameText(Screen& On, const Area& Frame, int Row, std::string_view CleanText,
                   CellRole Role);
// A line across a frame, joined to its sides. Row is the screen's.
void DrawDivider(Screen& On, const Area& Frame, int Row, CellRole Role);

// What the box of a dialog takes: its frame, and a blank column inside of it on both sides.
inline constexpr int kColumnsAroundDialog = 4;
inline constexpr int kRowsAroundDialog = 2;

// The box of a dialog of that size in the middle of the window. Returns the area for what is in it.
Area DrawDialogBox(Screen& On, int Columns, int Rows, std::string_view CleanTitle);

// A line to type in, with the cursor.
void DrawField(Screen& On, int Column, int Row, int Columns, const TextField& Field);

// Exactly Columns wide: filled with blanks, or with its end left out, which a "~" shows.
std::string FitToColumns(std::string_view CleanText, int Columns);
// The same to the right.
std::string FitToTheRight(std::string_view CleanText, int Columns);

// A bar that is so full, with the number behind it: "████░░░░  62%".
void DrawBar(Screen& On, int Column, int Row, int Columns, int Percent);
