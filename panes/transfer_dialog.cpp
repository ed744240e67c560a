#include "transfer_dialog.h"

#include "screen_text.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kMostColumns = 102;
constexpr int kTitleColumns = 18;
// The line with what is going, the field, the hint and the buttons.
constexpr int kFixedRows = 4;
// Below the field, below the groups and above the buttons.
constexpr int kMostBlankRows = 3;

constexpr char kFieldHint[] = "Enter begins. Tab and the arrows lead to the choices.";
constexpr char kMissing[] = "Say where to.";

} // namespace

TransferDialog::TransferDialog(TransferDialogSetup WhatIsAsked)
    : Setup(std::move(WhatIsAsked)), FirstDestination(DestinationOf(Setup.Request).string()),
      Destination(FirstDestination), Choices(Setup.Request, Setup.bMayPreserveOwner) {
    Buttons.Offer({{Button::Begin, {Setup.Request.bMove ? "Move" : "Copy"}},
                   {Button::Background, {"In background", "b"}},
                   {Button::Cancel, {"Cancel"}}});
}

void TransferDialog::FocusOn(std::size_t Control) {
    Focus = Control;
    Buttons.FocusFirst();
}

// Tab goes through the buttons one by one, as they stand beside each other.
bool TransferDialog::MovesFocus(const KeyPress& Key) {
    const bool bInButtons = Focus == kButtons;
    const bool bNext = Key.Code == KeyCode::Down ||
                       (Key.Code == KeyCode::Tab && (!bInButtons || Buttons.IsLastFocused()));
    const bool bPrevious = Key.Code == KeyCode::Up || (Key.Code == KeyCode::BackTab &&
                                                       (!bInButtons || Buttons.IsFirstFocused()));
    if (bNext) {
        FocusOn(bInButtons ? kField : Focus + 1);
    } else if (bPrevious) {
        FocusOn(Focus == kField ? kButtons : Focus - 1);
    }
    return bNext || bPrevious;
}

void TransferDialog::TakeKey(const KeyPress& Key, TimePoint) {
    bDestinationMissing = false;
    if (Key.Code == KeyCode::Escape) {
        Press(Button::Cancel);
    } else if (Key.Code == KeyCode::Mouse) {
        TakeClick(Key);
    } else if (MovesFocus(Key)) {
        return;
    } else if (Key.Code == KeyCode::Enter && Focus != kButtons) {
        Press(Button::Begin);
    } else if (Focus == kField) {
        Destination.Handle(Key);
    } else if (!HasGroupFocus() || !Choices.Handle(Focus - kFirstGroup, Key)) {
        if (const std::optional<Button> pressed = Buttons.Handle(Key)) {
            Press(*pressed);
        }
    }
}

void TransferDialog::TakeClick(const KeyPress& Key) {
    if (Key.Mouse.Pressed != MousePress::Button::Left) {
        return;
    }
    if (FieldArea.Contains(Key.Mouse.Column, Key.Mouse.Row)) {
        FocusOn(kField);
    }
    for (std::size_t i = 0; i < TransferChoices::kGroups; ++i) {
        if (Choices.Handle(i, Key)) {
            FocusOn(kFirstGroup + i);
        }
    }
    if (const std::optional<Button> pressed = Buttons.Handle(Key)) {
        Press(*pressed);
    }
}

void TransferDialog::Press(Button What) {
    if (What != Button::Cancel && Destination.Text().empty()) {
        bDestinationMissing = true;
        FocusOn(kField);
        return;
    }
    bClosed = true;
    if (What != Button::Cancel) {
        Asked = {Filled(), What == Button::Background};
    }
}

TransferRequest TransferDialog::Filled() const {
    TransferRequest request = Setup.Request;
    Choices.FillIn(request);
    if (Destination.Text() == FirstDestination) {
        return request;
    }
    // What somebody has written may be a new name, which a target directory must not be.
    if (!request.TargetDirectory && !request.Operands.empty()) {
        request.Operands.pop_back();
    }
    request.TargetDirectory.reset();
    request.Operands.push_back(Setup.Base / Destination.Text());
    return request;
}

std::string TransferDialog::HintText() const {
    if (bDestinationMissing) {
        return kMissing;
    }
    if (HasGroupFocus()) {
        return Choices.Group(Focus - kFirstGroup).Hint();
    }
    return Focus == kField ? kFieldHint : "";
}

void TransferDialog::Draw(Screen& On, TimePoint) {
    const int columns = std::min(On.Size().Columns, kMostColumns) - kColumnsAroundDialog;
    int groupRows = 0;
    for (std::size_t i = 0; i < TransferChoices::kGroups; ++i) {
        groupRows += Choices.Group(i).RowsIn(columns, kTitleColumns);
    }
    const int rows = kRowsAroundDialog + kFixedRows + groupRows;
    const std::string verb = Setup.Request.bMove ? "Move" : "Copy";
    const Area inside =
        DrawDialogBox(On, columns + kColumnsAroundDialog, rows + kMostBlankRows, verb);
    const int blankRows = inside.Rows + kRowsAroundDialog - rows;
    Area where{inside.Column, inside.Row, columns, 1};
    const std::string what = verb + " " + CleanForScreen(Setup.What);
    On.Put(where.Column, where.Row, ElideMiddle(what, columns - 4) + " to:", CellRole::Dialog);
    ++where.Row;
    DrawDestination(On, where);
    where.Row += blankRows > 0 ? 2 : 1;
    where.Row = DrawGroups(On, where) + (blankRows > 1 ? 1 : 0);
    On.Put(where.Column, where.Row, FitToColumns(HintText(), columns),
           bDestinationMissing ? CellRole::Warning : CellRole::Dialog);
    Buttons.Draw(On, where.Column, inside.Row + inside.Rows - 1, columns, Focus == kButtons);
}

void TransferDialog::DrawDestination(Screen& On, const Area& Where) {
    FieldArea = Where;
    if (Focus == kField) {
        DrawField(On, Where.Column, Where.Row, Where.Columns, Destination);
    } else {
        On.Put(Where.Column, Where.Row,
               FitToColumns(Destination.Visible(Where.Columns).Shown, Where.Columns),
               CellRole::Input);
    }
}

// Returns the row below them.
int TransferDialog::DrawGroups(Screen& On, Area Where) {
    for (std::size_t i = 0; i < TransferChoices::kGroups; ++i) {
        ChoiceGroup& group = Choices.Group(i);
        group.Draw(On, Where, kTitleColumns, Focus == kFirstGroup + i);
        Where.Row += group.RowsIn(Where.Columns, kTitleColumns);
    }
    return Where.Row;
}
