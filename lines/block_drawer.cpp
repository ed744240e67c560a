#include "block_drawer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "line_bytes.h"
#include "screen_text.h"

namespace {

constexpr std::string_view kEraseToEndOfLine = "\x1B[K";
constexpr std::string_view kEraseBelow = "\x1B[J";
constexpr const char* kNextLine = "\x1B[K\r\n";
// A line that is too long is cut meanwhile.
constexpr std::string_view kWrapOff = "\x1B[?7l";
constexpr std::string_view kWrapOn = "\x1B[?7h";

std::string Up(int Rows) {
    return Rows > 0 ? "\x1B[" + std::to_string(Rows) + "A" : "";
}

// The rows that text takes in a window of so many columns that has rewrapped it.
int RowsOf(const std::string& Text, int Columns) {
    return static_cast<int>(WrapAtColumns(Text, Columns).size());
}

} // namespace

std::string BlockDrawer::Draw(const std::vector<ScreenLine>& Lines, TerminalSize Size,
                              const std::optional<BlockCursor>& Cursor) {
    if (Lines.empty()) {
        return Erase(Size);
    }
    BlockCursor cursor = Cursor.value_or(BlockCursor{});
    const bool bSameShape = Size == ShownSize && Lines.size() == Shown.size();
    if (bSameShape && Lines == Shown && cursor == ShownCursor) {
        return {};
    }
    std::vector<ScreenLine> lines = Lines;
    std::string bytes(kWrapOff);
    bytes += bSameShape ? DrawChanges(Lines, cursor.Line) : DrawAll(Lines, Size, cursor.Line);
    bytes += kWrapOn;
    bytes += "\r" + cursor.Prefix;
    // Without memory nothing is drawn, and so nothing is taken for shown.
    Shown = std::move(lines);
    ShownSize = Size;
    ShownCursor = std::move(cursor);
    return bytes;
}

std::string BlockDrawer::Erase(TerminalSize Size) {
    if (Shown.empty()) {
        return {};
    }
    // Behind a blank: erasing from the first cell of the screen makes tmux keep all that stood
    // there in its history.
    std::string bytes = GoToTop(Size) + " ";
    bytes += kEraseBelow;
    bytes += "\r";
    bytes += kEraseToEndOfLine;
    Forget();
    return bytes;
}

std::string BlockDrawer::Abandon() {
    if (Shown.empty()) {
        return {};
    }
    std::string bytes;
    for (std::size_t i = ShownCursor.Line; i < Shown.size(); ++i) {
        bytes += "\r\n";
    }
    Forget();
    return bytes;
}

void BlockDrawer::Forget() {
    Shown.clear();
    ShownCursor = {};
}

// From where the cursor stands to the start of the first line, in a window that may have been made
// narrower since.
std::string BlockDrawer::GoToTop(TerminalSize Size) const {
    const int columns = std::max(1, Size.Columns);
    int rows = RowsOf(ShownCursor.Prefix, columns) - 1;
    for (std::size_t i = 0; i < ShownCursor.Line; ++i) {
        rows += RowsOf(Shown[i].Text, columns);
    }
    return Up(rows) + "\r";
}

// Like DrawChanges it ends in line CursorLine.
std::string BlockDrawer::DrawAll(const std::vector<ScreenLine>& Lines, TerminalSize Size,
                                 std::size_t CursorLine) const {
    std::string bytes = GoToTop(Size);
    for (std::size_t i = 0; i < Lines.size(); ++i) {
        bytes += (i == 0 ? "" : kNextLine) + LineBytes(Lines[i]);
    }
    bytes += kEraseBelow;
    return bytes + Up(static_cast<int>(Lines.size() - 1 - CursorLine));
}

std::string BlockDrawer::DrawChanges(const std::vector<ScreenLine>& Lines,
                                     std::size_t CursorLine) const {
    std::string bytes;
    std::size_t at = ShownCursor.Line;
    const auto goTo = [&bytes, &at](std::size_t Line) {
        bytes += Up(static_cast<int>(at) - static_cast<int>(Line));
        for (; at < Line; ++at) {
            bytes += "\n";
        }
        at = Line;
    };
    for (std::size_t i = 0; i < Lines.size(); ++i) {
        if (Lines[i] != Shown[i]) {
            goTo(i);
            bytes += '\r' + ChangeBytes(Shown[i], Lines[i]);
        }
    }
    goTo(CursorLine);
    return bytes;
}
