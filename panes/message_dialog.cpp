#include "message_dialog.h"

#include <algorithm>
#include <utility>

#include "screen_text.h"
#include "surface.h"

namespace {

// Longer lines are hard to read, whatever the window has room for.
constexpr int kMostColumns = 76;
constexpr int kFewestColumns = 30;
constexpr bool kHasKeys = true;
constexpr int kLinesPerWheelStep = 3;

int WidestOf(const std::vector<std::string>& CleanLines) {
    int columns = 0;
    for (const std::string& line : CleanLines) {
        columns = std::max(columns, DisplayWidth(line));
    }
    return columns;
}

} // namespace

Message Notice(std::string Title, std::vector<std::string> Paragraphs) {
    return {std::move(Title), std::move(Paragraphs), {{"Close", "c"}}};
}

Message YesNoQuestion(std::string Title, std::vector<std::string> Paragraphs) {
    return {.Title = std::move(Title),
            .Paragraphs = std::move(Paragraphs),
            .Buttons = {{"Yes", "y"}, {"No", "n"}},
            .SafeButton = 1};
}

MessageDialog::MessageDialog(Message MessageToShow)
    : Shown(std::move(MessageToShow)), Buttons(Shown.Buttons, Shown.SafeButton) {}

void MessageDialog::AppearUnasked(KeyGuard& GuardOfAll, TimePoint Now) {
    Guard = &GuardOfAll;
    Guard->QuestionAppears(Now);
}

std::vector<std::string> MessageDialog::LinesIn(int Columns) const {
    std::vector<std::string> lines;
    for (const std::string& paragraph : Shown.Paragraphs) {
        for (std::string& line : WrapAtWords(CleanForScreen(paragraph), Columns)) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

void MessageDialog::Draw(Screen& On, TimePoint) {
    const TerminalSize window = On.Size();
    const int room = std::min(kMostColumns, window.Columns - kColumnsAroundDialog);
    const std::vector<std::string> lines = LinesIn(room);
    const std::string title = CleanForScreen(Shown.Title);
    const int wanted = std::max({kFewestColumns, WidestOf(lines), Buttons.ColumnsIn(room),
                                 DisplayWidth(title) + kColumnsAroundDialog});
    const int columns = std::min(wanted, room);
    const int rowsBelow = 1 + Buttons.RowsIn(columns);
    SetPage(static_cast<int>(lines.size()), window.Rows - kRowsAroundDialog - rowsBelow);
    const Area inside = DrawDialogBox(On, columns + kColumnsAroundDialog,
                                      LinesPerPage + rowsBelow + kRowsAroundDialog, title);
    DrawLines(On, inside, lines);
    const int indent = (inside.Columns - Buttons.ColumnsIn(columns)) / 2;
    Buttons.Draw(On, inside.Column + indent, inside.Row + LinesPerPage + 1, columns - indent,
                 kHasKeys);
}

void MessageDialog::SetPage(int Lines, int Rows) {
    LinesPerPage = std::max(1, std::min(Lines, Rows));
    LastFirstLine = std::max(0, Lines - LinesPerPage);
    FirstLine = std::min(FirstLine, LastFirstLine);
}

void MessageDialog::DrawLines(Screen& On, const Area& Inside,
                              const std::vector<std::string>& Lines) const {
    const auto shown = std::min(Lines.size(), static_cast<std::size_t>(LinesPerPage));
    for (std::size_t i = 0; i < shown; ++i) {
        On.Put(Inside.Column, Inside.Row + static_cast<int>(i),
               Lines[static_cast<std::size_t>(FirstLine) + i], CellRole::Dialog);
    }
    if (LastFirstLine > 0) {
        const std::string part = "lines " + std::to_string(FirstLine + 1) + " to " +
                                 std::to_string(FirstLine + LinesPerPage) + " of " +
                                 std::to_string(Lines.size());
        On.Put(Inside.Column, Inside.Row + LinesPerPage, FitToTheRight(part, Inside.Columns),
               CellRole::Dialog);
    }
}

void MessageDialog::TakeKey(const KeyPress& Key, TimePoint Now) {
    if (Chosen || (Guard != nullptr && !Guard->LetsThrough(Key, Now)) || Scroll(Key)) {
        return;
    }
    Chosen = Key.Code == KeyCode::Escape ? Shown.SafeButton : Buttons.Handle(Key);
    if (Chosen && Guard != nullptr) {
        Guard->AnswerIsGiven(Now);
    }
}

// Whether the key was one that scrolls.
bool MessageDialog::Scroll(const KeyPress& Key) {
    if (LastFirstLine == 0) {
        return false;
    }
    const auto by = [this](int Lines) {
        FirstLine = std::clamp(FirstLine + Lines, 0, LastFirstLine);
        return true;
    };
    const bool bMouse = Key.Code == KeyCode::Mouse;
    if (bMouse && Key.Mouse.Pressed == MousePress::Button::WheelUp) {
        return by(-kLinesPerWheelStep);
    }
    if (bMouse && Key.Mouse.Pressed == MousePress::Button::WheelDown) {
        return by(kLinesPerWheelStep);
    }
    const std::pair<KeyCode, int> steps[] = {
        {KeyCode::Up, -1},
        {KeyCode::Down, 1},
        {KeyCode::PageUp, -LinesPerPage},
        {KeyCode::PageDown, LinesPerPage},
        {KeyCode::Home, -LastFirstLine},
        {KeyCode::End, LastFirstLine},
    };
    const auto step = std::ranges::find(steps, Key.Code, &std::pair<KeyCode, int>::first);
    return step != std::end(steps) && by(step->second);
}
