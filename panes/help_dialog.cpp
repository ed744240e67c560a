#include "help_dialog.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "screen_text.h"
#include "scrolling.h"
#include "surface.h"

namespace {

constexpr HelpLine kLines[] = {
    {"Panes", ""},
    {"Up Down, Ctrl-P Ctrl-N", "move the cursor"},
    {"PgUp PgDn, Home End", "move by a page, to the first and the last entry"},
    {"Tab", "go to the other pane"},
    {"Enter", "go into the directory or disc"},
    {"Backspace", "go to the directory above"},
    {"g", "go to a place: home, a disk, an audio CD"},
    {"/", "find by typing; Up and Down go on, Esc ends"},
    {"s", "sort by name, extension, size, date in turn"},
    {"S", "turn the order round"},
    {".", "show or hide names that begin with a dot"},
    {"=", "show this directory in the other pane too"},
    {"Ctrl-U", "swap the panes"},
    {"Ctrl-R", "read again"},
    {"Ctrl-L", "draw everything again"},
    {"Esc", "stop reading or deleting"},
    {"Marks", ""},
    {"Insert, Space, Ctrl-T", "mark or unmark, and go down"},
    {"+", "mark what a pattern matches, such as *.flac"},
    {"-", "unmark what a pattern matches"},
    {"*", "invert the marks"},
    {"Signs before names", ""},
    {"*", "marked"},
    {"/", "a directory"},
    {"~ @", "a link to a directory, to a file"},
    {"!", "a link that leads to neither"},
    {"=", "a device, a pipe or a socket"},
    {"Work", ""},
    {"F1, Alt-1, ?", "show the keys"},
    {"F2, Alt-2, R", "rename in place"},
    {"F3, Alt-3", "view the file in $PAGER"},
    {"F4, Alt-4", "edit the file in $EDITOR"},
    {"F5, Alt-5, c", "copy the marked entries, or the current one, to the other pane"},
    {"F6, Alt-6, m", "move them there"},
    {"F7, Alt-7", "make a directory"},
    {"F8, Alt-8, Delete", "delete them, after a question"},
    {"F9, Alt-9, j", "the list of jobs"},
    {"a", "answer the question of a transfer that waits"},
    {"F10, Alt-0, q", "quit; asks while jobs run"},
    {"Ctrl-Z", "suspend the program with its jobs"},
    {"Progress of a transfer", ""},
    {"Esc, Ctrl-C", "cancel the transfer"},
    {"b", "send it to the background; F9 shows it again"},
    {"a", "answer the question that waits"},
    {"r", "run again what was not done"},
    {"A name that is taken", ""},
    {"Tab Shift-Tab, arrows", "go to the next or the previous button"},
    {"Enter", "press the button"},
    {"o O", "overwrite, overwrite all"},
    {"u", "overwrite all older"},
    {"s S", "skip, skip all"},
    {"r", "rename"},
    {"k K", "keep both, keep both for all"},
    {"b B", "compare by content, compare all"},
    {"m M", "merge, merge all directories"},
    {"Esc", "cancel the transfer"},
    {"List of jobs", ""},
    {"Enter", "show the progress of the job"},
    {"a", "answer its question"},
    {"c", "cancel it"},
    {"r", "run again what was not done"},
    {"Esc", "close the list"},
    {"Mouse", ""},
    {"Click", "go to an entry; press a key below or a button"},
    {"Double click", "go into the directory or disc"},
    {"Wheel", "move the cursor"},
};

constexpr int kColumns = 76;
constexpr int kKeyColumns = 24;

struct ShownLine {
    std::string Keys;
    std::string Does;
    bool bHeading = false;
};

std::vector<ShownLine> LinesIn(int Columns) {
    std::vector<ShownLine> lines;
    for (const HelpLine& line : kLines) {
        const bool bHeading = std::string_view(line.Does).empty();
        if (bHeading && !lines.empty()) {
            lines.emplace_back();
        }
        std::string keys = line.Keys;
        for (std::string& does : WrapAtWords(line.Does, Columns - kKeyColumns)) {
            lines.push_back({std::exchange(keys, {}), std::move(does), bHeading});
        }
    }
    return lines;
}

void DrawLine(Screen& On, int Column, int Row, const ShownLine& Line) {
    const CellRole keyRole = Line.bHeading ? CellRole::DialogTitle : CellRole::Hotkey;
    On.Put(Column, Row, Line.Keys, keyRole);
    On.Put(Column + kKeyColumns, Row, Line.Does, CellRole::Dialog);
}

bool Closes(const KeyPress& Key) {
    const bool bCloseText = Key.Code == KeyCode::Text && (Key.Text == "q" || Key.Text == "?");
    const bool bCloseFunction =
        Key.Code == KeyCode::Function && (Key.Number == 1 || Key.Number == 10);
    return bCloseText || bCloseFunction || Key.Code == KeyCode::Escape ||
           Key.Code == KeyCode::Enter;
}

} // namespace

std::span<const HelpLine> HelpLines() {
    return kLines;
}

void HelpDialog::Draw(Screen& On, TimePoint) {
    const int columns = std::min(kColumns, On.Size().Columns);
    const std::vector<ShownLine> lines = LinesIn(columns - 4);
    LineCount = lines.size();
    const int rows = std::min(static_cast<int>(LineCount) + 2, On.Size().Rows - 2);
    const Area frame = CenteredArea(On, columns, rows);
    VisibleLines = std::max(1, frame.Rows - 2);
    FirstLine = ScrolledTo(FirstLine, FirstLine, static_cast<std::size_t>(VisibleLines), LineCount);
    const std::size_t end = std::min(FirstLine + static_cast<std::size_t>(VisibleLines), LineCount);

    Fill(On, frame, CellRole::Dialog);
    DrawFrame(On, frame, "Help", CellRole::Dialog, CellRole::DialogTitle);
    DrawFrameText(On, frame, frame.Row + frame.Rows - 1,
                  "Lines " + std::to_string(FirstLine + 1) + " to " + std::to_string(end) + " of " +
                      std::to_string(LineCount) + "   Esc: close",
                  CellRole::Dialog);
    for (std::size_t i = FirstLine; i < end; ++i) {
        DrawLine(On, frame.Column + 2, frame.Row + 1 + static_cast<int>(i - FirstLine), lines[i]);
    }
}

void HelpDialog::TakeKey(const KeyPress& Key, TimePoint) {
    const bool bSpace = Key == KeyPress{.Code = KeyCode::Text, .Text = " "};
    const KeyPress moving = bSpace ? KeyPress{.Code = KeyCode::PageDown} : Key;
    if (const auto down = RowsDown(moving, VisibleLines)) {
        FirstLine = MovedRow(FirstLine, *down, LineCount);
    }
    bClosed = bClosed || Closes(Key);
}
