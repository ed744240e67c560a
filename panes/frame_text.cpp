#include "frame_text.h"

#include <string>

#include "screen_text.h"

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
