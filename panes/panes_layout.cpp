#include "panes_layout.h"

#include <string>

namespace {

constexpr TerminalSize kSmallest{60, 16};

} // namespace

std::optional<PanesLayout> LayOutPanes(TerminalSize Window) {
    if (Window.Columns < kSmallest.Columns || Window.Rows < kSmallest.Rows) {
        return std::nullopt;
    }
    const int half = Window.Columns / 2;
    const int rows = Window.Rows - 2;
    return PanesLayout{.Left = {0, 0, half, rows},
                       .Right = {half, 0, Window.Columns - half, rows},
                       .StatusRow = rows,
                       .KeyRow = rows + 1};
}

void DrawTooSmall(Screen& On) {
    On.Put(0, 0,
           "Terminal too small (" + std::to_string(kSmallest.Columns) + "x" +
               std::to_string(kSmallest.Rows) + " needed)",
           CellRole::Plain);
}
