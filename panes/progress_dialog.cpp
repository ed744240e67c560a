#include "progress_dialog.h"

#include "progress_parts.h"
#include "screen_text.h"
#include "scrolling.h"

#include <algorithm>
#include <optional>

namespace {

// Enough for the longest text of the engine in one line.
constexpr int kMostColumns = 98;
constexpr int kBlankRowAboveFoot = 1;
constexpr int kRowsOfHighWindow = 30;

} // namespace

ProgressDialog::ProgressDialog(ProgressScene Scene) : Shown(std::move(Scene)) {
    OfferButtons();
}

void ProgressDialog::SetScene(ProgressScene Scene) {
    Shown = std::move(Scene);
    OfferButtons();
}

bool ProgressDialog::IsCancelRequested() const {
    const auto* copying = std::get_if<CopyingScene>(&Shown.Moment);
    return copying != nullptr && copying->Snapshot.bCancelRequested;
}

void ProgressDialog::OfferButtons() {
    std::vector<WishButtons<Wish>::Choice> choices;
    if (Shown.bQuestionWaits || Shown.bOtherQuestionWaits) {
        choices.push_back({Wish::Answer, {"Answer", "a"}});
    }
    if (const auto* over = std::get_if<OverScene>(&Shown.Moment)) {
        choices.push_back({Wish::Close, {"Close"}});
        if (over->CanRunAgain()) {
            choices.push_back({Wish::RunAgain, {"Run again", "r"}});
        }
    } else {
        choices.push_back({Wish::Background, {"In background", "b"}});
        if (!IsCancelRequested()) {
            choices.push_back({Wish::Cancel, {"Cancel"}});
        }
    }
    Buttons.Offer(choices);
}

void ProgressDialog::Ask(Wish What) {
    Asked = What;
    bClosed = What == Wish::Background || What == Wish::Close || What == Wish::RunAgain;
}

void ProgressDialog::TakeKey(const KeyPress& Key, TimePoint) {
    if (Key.Code == KeyCode::Escape) {
        if (Shown.IsOver()) {
            Ask(Wish::Close);
        } else if (!IsCancelRequested()) {
            Ask(Wish::Cancel);
        }
        return;
    }
    FirstLine = MovedRow(FirstLine, RowsDown(Key, LinesThatFit).value_or(0), FirstLines);
    if (const std::optional<Wish> pressed = Buttons.Handle(Key)) {
        Ask(*pressed);
    }
}

// Higher when there is more to say, and never lower again: what moves from frame to frame cannot be
// read, and all of it has to be drawn again.
int ProgressDialog::SteadyRows(TerminalSize Window, int Rows) {
    MostRows = Window == MostRowsIn ? std::max(MostRows, Rows) : Rows;
    MostRowsIn = Window;
    return MostRows;
}

void ProgressDialog::Draw(Screen& On, TimePoint) {
    const TerminalSize window = On.Size();
    const int columns = std::min(window.Columns - kColumnsAroundDialog, kMostColumns);
    const int graphRows = window.Rows < kRowsOfHighWindow ? 2 : 3;
    std::vector<ProgressPart> parts = PartsOf(Shown, columns, graphRows);
    const int endLines = static_cast<int>(EndLinesOf(Shown, columns).size());
    const ProgressPart foot = FootOf(Shown, columns);
    const int rowsBelow = foot.Rows + Buttons.RowsIn(columns);
    const int rows = RowsOf(parts) + endLines + kBlankRowAboveFoot + rowsBelow + kRowsAroundDialog;
    const Area inside = DrawDialogBox(On, columns + kColumnsAroundDialog, SteadyRows(window, rows),
                                      CleanForScreen(Shown.Title));
    const int room = inside.Rows - rowsBelow;
    parts = FitToRows(std::move(parts), std::max(0, room - endLines));
    Area where{inside.Column, inside.Row, columns, 0};
    for (const ProgressPart& part : parts) {
        where.Rows = part.Rows;
        part.Draw(On, where);
        where.Row += part.Rows;
    }
    where.Rows = room - RowsOf(parts);
    DrawEndLines(On, where, inside.Row + inside.Rows);
    where.Row += where.Rows;
    foot.Draw(On, where);
    Buttons.Draw(On, where.Column, where.Row + foot.Rows, columns);
}

void ProgressDialog::DrawEndLines(Screen& On, const Area& Where, int PositionRow) {
    const std::vector<std::string> lines = EndLinesOf(Shown, Where.Columns);
    LinesThatFit = std::clamp(Where.Rows, 0, static_cast<int>(lines.size()));
    FirstLines = lines.size() - static_cast<std::size_t>(LinesThatFit) + 1;
    FirstLine = std::min(FirstLine, FirstLines - 1);
    const auto first = lines.begin() + static_cast<std::ptrdiff_t>(FirstLine);
    const auto* over = std::get_if<OverScene>(&Shown.Moment);
    const bool bFailed = over != nullptr && over->Result != RunResult::Succeeded &&
                         over->Result != RunResult::Canceled;
    DrawLines(On, Where, {first, first + LinesThatFit},
              bFailed ? CellRole::Warning : CellRole::Dialog);
    if (FirstLines > 1) {
        const std::size_t end = FirstLine + static_cast<std::size_t>(LinesThatFit);
        const std::string position = " Lines " + std::to_string(FirstLine + 1) + " to " +
                                     std::to_string(end) + " of " + std::to_string(lines.size()) +
                                     ": Up, Down ";
        On.Put(Where.Column, PositionRow, position, CellRole::DialogTitle);
    }
}
