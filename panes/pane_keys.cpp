#include "pane_keys.h"

#include "scrolling.h"

namespace {

OrderKey Following(OrderKey Key) {
    switch (Key) {
    case OrderKey::Name:
        return OrderKey::Extension;
    case OrderKey::Extension:
        return OrderKey::Size;
    case OrderKey::Size:
        return OrderKey::Date;
    case OrderKey::Date:
        break;
    }
    return OrderKey::Name;
}

bool IsText(const KeyPress& Key, const char* Text) {
    return Key.Code == KeyCode::Text && Key.Text == Text;
}

bool IsMarkKey(const KeyPress& Key) {
    return Key.Code == KeyCode::Insert || IsText(Key, " ") ||
           (Key.Code == KeyCode::Control && Key.Text == "t");
}

} // namespace

bool HandlePaneKey(const KeyPress& Key, BrowseList& List, int VisibleRows) {
    const EntryOrder order = List.Order();
    if (const auto down = RowsDown(Key, VisibleRows)) {
        List.MoveCursorBy(*down);
    } else if (IsMarkKey(Key)) {
        List.ToggleMark(List.Cursor());
        List.MoveCursorBy(1);
    } else if (IsText(Key, "*")) {
        List.InvertMarks();
    } else if (IsText(Key, ".")) {
        List.ShowHidden(!List.ShowsHidden());
    } else if (IsText(Key, "s")) {
        List.SetOrder({.Key = Following(order.Key)});
    } else if (IsText(Key, "S")) {
        List.SetOrder({.Key = order.Key, .bReversed = !order.bReversed});
    } else {
        return false;
    }
    return true;
}
