#include "quick_search.h"

namespace {

void MoveToNext(BrowseList& List, const std::string& Beginning) {
    List.FindFrom(List.Cursor() + 1, Beginning);
}

// The last one on the way round. The cursor may be on an entry that does not begin so, as another
// one may have gone meanwhile.
void MoveToPrevious(BrowseList& List, const std::string& Beginning) {
    const std::size_t start = List.Cursor();
    if (!List.FindFrom(start + 1, Beginning)) {
        return;
    }
    const std::size_t first = List.Cursor();
    std::size_t previous = first;
    while (List.Cursor() != start) {
        previous = List.Cursor();
        List.FindFrom(previous + 1, Beginning);
        if (List.Cursor() == first) {
            break;
        }
    }
    List.MoveCursorTo(previous);
}

} // namespace

bool QuickSearch::TakeKey(const KeyPress& Key, BrowseList& List) {
    if (!Typed) {
        const bool bOpens = Key == KeyPress{.Code = KeyCode::Text, .Text = "/"};
        if (bOpens) {
            Typed.emplace("");
        }
        return bOpens;
    }
    if (Key.Code == KeyCode::Text || Key.Code == KeyCode::Backspace ||
        Key.Code == KeyCode::ClearLine) {
        Type(Key, List);
        return true;
    }
    const bool bAnyTyped = !Typed->Text().empty();
    if (bAnyTyped && Key.Code == KeyCode::Down) {
        MoveToNext(List, Typed->Text());
        return true;
    }
    if (bAnyTyped && Key.Code == KeyCode::Up) {
        MoveToPrevious(List, Typed->Text());
        return true;
    }
    Typed.reset();
    return Key.Code == KeyCode::Enter || Key.Code == KeyCode::Escape;
}

std::optional<std::string> QuickSearch::Text() const {
    return Typed ? std::optional(Typed->Text()) : std::nullopt;
}

// A letter that no entry goes on with is not taken.
void QuickSearch::Type(const KeyPress& Key, BrowseList& List) {
    TextField changed = *Typed;
    changed.Handle(Key);
    if (changed.Text().empty() || List.FindFrom(List.Cursor(), changed.Text())) {
        Typed = changed;
    }
}
