#include "job_list_dialog.h"

#include "screen_text.h"
#include "scrolling.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace {

constexpr int kMostColumns = 140;
constexpr int kFewestRows = 16;
constexpr int kMostRows = 24;
// What stays in sight of the panes behind it.
constexpr int kRowsAround = 8;
// The line above the detail, and the titles of the columns.
constexpr int kFixedRows = 2;
constexpr int kFewestListRows = 3;

// "Waiting for conflict choice", "Copy" and "100%".
constexpr int kStateColumns = 27;
constexpr int kJobColumns = 4;
constexpr int kDoneColumns = 4;
constexpr int kFewestSourceColumns = 14;
constexpr int kFewestDetailColumns = 10;

constexpr char kNothingHere[] = "Nothing has been copied or moved yet.";
constexpr char kWaits[] = "It waits for an answer: press a.";

std::string RowText(const TarvaneTransferJobSnapshot& Texts, int Columns) {
    const int others = kStateColumns + kJobColumns + kDoneColumns + 3;
    const int wantedSource = std::max(kFewestSourceColumns, Columns / 5);
    const int detail = Columns - others - wantedSource - 1;
    const bool bDetail = detail >= kFewestDetailColumns;
    const int source = bDetail ? wantedSource : Columns - others;
    std::string text = FitToColumns(ElideMiddle(CleanForScreen(Texts.Source), source), source) +
                       " " + FitToColumns(CleanForScreen(Texts.Job), kJobColumns) + " " +
                       FitToColumns(CleanForScreen(Texts.State), kStateColumns) + " " +
                       FitToTheRight(CleanForScreen(Texts.Progress), kDoneColumns);
    if (bDetail) {
        text += ' ';
        text += FitToColumns(CleanForScreen(Texts.Detail), detail);
    }
    return text;
}

void AppendWrapped(std::vector<std::string>& InOutLines, const std::string& Text, int Columns) {
    std::ranges::move(WrapAtWords(CleanForScreen(Text), Columns), std::back_inserter(InOutLines));
}

std::vector<std::string> DetailLines(const JobListRow& Row, int Columns) {
    std::vector<std::string> lines;
    if (!Row.bFinished) {
        AppendWrapped(lines, Row.Texts.Detail, Columns);
        return lines;
    }
    for (const std::string& line : Row.EndLines) {
        AppendWrapped(lines, line, Columns);
    }
    if (!Row.Answers.empty()) {
        lines.emplace_back("Asked:");
    }
    for (const std::string& answer : Row.Answers) {
        AppendWrapped(lines, answer, Columns);
    }
    return lines;
}

} // namespace

void JobListDialog::SetRows(std::vector<JobListRow> NewRows) {
    const JobListRow* selected = SelectedRow();
    const std::uint64_t id = selected == nullptr ? 0 : selected->Id;
    Rows = std::move(NewRows);
    std::stable_partition(Rows.begin(), Rows.end(),
                          [](const JobListRow& Row) { return !Row.bFinished; });
    const auto same = std::ranges::find(Rows, id, &JobListRow::Id);
    const std::size_t last = Rows.empty() ? 0 : Rows.size() - 1;
    Selected = same == Rows.end() ? std::min(Selected, last)
                                  : static_cast<std::size_t>(same - Rows.begin());
    OfferButtons();
}

const JobListRow* JobListDialog::SelectedRow() const {
    return Selected < Rows.size() ? &Rows[Selected] : nullptr;
}

// A button that was chosen for one transfer must not hit the next one.
void JobListDialog::Select(std::size_t Row) {
    Selected = Row;
    OfferButtons();
    Buttons.FocusFirst();
}

void JobListDialog::OfferButtons() {
    std::vector<WishButtons<Wish>::Choice> choices;
    if (const JobListRow* row = SelectedRow()) {
        choices.push_back({Wish::Show, {"Show"}});
        if (row->bWaitsForAnswer) {
            choices.push_back({Wish::Answer, {"Answer", "a"}});
        }
        if (!row->bFinished && !row->bCancelRequested) {
            choices.push_back({Wish::Cancel, {"Cancel transfer", "c"}});
        }
        if (row->bCanRunAgain) {
            choices.push_back({Wish::RunAgain, {"Run again", "r"}});
        }
    }
    choices.push_back({Wish::Close, {"Close"}});
    Buttons.Offer(choices);
}

void JobListDialog::Ask(Wish What) {
    const JobListRow* row = SelectedRow();
    bClosed = What == Wish::Close;
    Asked = {What, bClosed || row == nullptr ? 0 : row->Id};
}

void JobListDialog::TakeKey(const KeyPress& Key, TimePoint) {
    if (Key.Code == KeyCode::Escape) {
        Ask(Wish::Close);
    } else if (const std::optional<std::ptrdiff_t> down = RowsDown(Key, ListArea.Rows)) {
        Select(MovedRow(Selected, *down, Rows.size()));
    } else if (const std::optional<Wish> pressed = Buttons.Handle(Key)) {
        Ask(*pressed);
    } else {
        TakeClick(Key);
    }
}

// The first click selects, one on what is selected shows it.
void JobListDialog::TakeClick(const KeyPress& Key) {
    const bool bClick = Key.Code == KeyCode::Mouse && Key.Mouse.Pressed == MousePress::Button::Left;
    if (!bClick || !ListArea.Contains(Key.Mouse.Column, Key.Mouse.Row)) {
        return;
    }
    const std::size_t row = FirstRow + static_cast<std::size_t>(Key.Mouse.Row - ListArea.Row);
    if (row < Rows.size() && row == Selected) {
        Ask(Wish::Show);
    } else if (row < Rows.size()) {
        Select(row);
    }
}

void JobListDialog::Draw(Screen& On, TimePoint) {
    const TerminalSize window = On.Size();
    const int rows = std::clamp(window.Rows - kRowsAround, kFewestRows, kMostRows);
    const Area inside = DrawDialogBox(On, std::min(window.Columns, kMostColumns), rows, "Jobs");
    const int columns = inside.Columns;
    On.Put(inside.Column, inside.Row,
           RowText({"Source", "Job", "State", "Done", "Detail"}, columns), CellRole::DialogTitle);
    const int buttonRows = Buttons.RowsIn(columns);
    const int room = inside.Rows - kFixedRows - buttonRows;
    const int mostListRows = std::max(kFewestListRows, room / 2);
    const int listRows = std::clamp(static_cast<int>(Rows.size()), kFewestListRows, mostListRows);
    ListArea = {inside.Column, inside.Row + 1, columns, listRows};
    DrawList(On, ListArea);
    const int divider = ListArea.Row + listRows;
    DrawDivider(
        On, {inside.Column - kColumnsAroundDialog / 2, divider, columns + kColumnsAroundDialog, 1},
        divider, CellRole::Dialog);
    DrawDetail(On, {inside.Column, divider + 1, columns, room - listRows});
    Buttons.Draw(On, inside.Column, inside.Row + inside.Rows - buttonRows, columns);
}

void JobListDialog::DrawList(Screen& On, const Area& Where) {
    if (Rows.empty()) {
        On.Put(Where.Column, Where.Row, kNothingHere, CellRole::Dialog);
    }
    const auto visible = static_cast<std::size_t>(Where.Rows);
    FirstRow = ScrolledTo(Selected, FirstRow, visible, Rows.size());
    const std::size_t end = std::min(FirstRow + visible, Rows.size());
    for (std::size_t i = FirstRow; i < end; ++i) {
        const CellRole role = i == Selected             ? CellRole::Cursor
                              : Rows[i].bWaitsForAnswer ? CellRole::Warning
                                                        : CellRole::Dialog;
        On.Put(Where.Column, Where.Row + static_cast<int>(i - FirstRow),
               RowText(Rows[i].Texts, Where.Columns), role);
    }
}

void JobListDialog::DrawDetail(Screen& On, const Area& Where) const {
    const JobListRow* selected = SelectedRow();
    if (selected == nullptr) {
        return;
    }
    int row = Where.Row;
    int room = Where.Rows;
    if (selected->bWaitsForAnswer) {
        On.Put(Where.Column, row, kWaits, CellRole::Warning);
        ++row;
        --room;
    }
    std::vector<std::string> lines = DetailLines(*selected, Where.Columns);
    if (static_cast<int>(lines.size()) > room) {
        const std::size_t kept = static_cast<std::size_t>(std::max(1, room)) - 1;
        const std::string more = std::to_string(lines.size() - kept) + " more lines: Show";
        lines.resize(kept);
        lines.push_back(more);
    }
    for (const std::string& line : lines) {
        On.Put(Where.Column, row, line, CellRole::Dialog);
        ++row;
    }
}
