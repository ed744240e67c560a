#include "text_field.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "screen_text.h"

TextField::TextField(std::string InitialText)
    : Bytes(std::move(InitialText)), Cursor(Bytes.size()) {}

void TextField::Handle(const KeyPress& Key) {
    switch (Key.Code) {
    case KeyCode::Text:
        Bytes.insert(Cursor, Key.Text);
        Cursor += Key.Text.size();
        break;
    case KeyCode::Backspace:
        Erase(PreviousStep(Cursor), Cursor);
        break;
    case KeyCode::Delete:
        Erase(Cursor, NextStep(Cursor));
        break;
    case KeyCode::Left:
        Cursor = PreviousStep(Cursor);
        break;
    case KeyCode::Right:
        Cursor = NextStep(Cursor);
        break;
    case KeyCode::Home:
        Cursor = 0;
        break;
    case KeyCode::End:
        Cursor = Bytes.size();
        break;
    case KeyCode::ClearLine:
        Erase(0, Bytes.size());
        break;
    case KeyCode::Enter:
    case KeyCode::Escape:
    case KeyCode::Up:
    case KeyCode::Down:
    case KeyCode::PageUp:
    case KeyCode::PageDown:
    case KeyCode::Insert:
    case KeyCode::Tab:
    case KeyCode::BackTab:
    case KeyCode::Function:
    case KeyCode::Control:
    case KeyCode::Alt:
    case KeyCode::Mouse:
    case KeyCode::Other:
        break;
    }
}

void TextField::Erase(std::size_t From, std::size_t To) {
    Bytes.erase(From, To - From);
    Cursor = From;
}

// Behind the character at Position and the marks and joiners that follow it, which have no width.
std::size_t TextField::NextStep(std::size_t Position) const {
    const std::string_view text = Bytes;
    const auto lengthAt = [&text](std::size_t At) {
        return std::max<std::size_t>(Utf8SequenceLength(text.substr(At)), 1);
    };
    const auto widthAt = [&text, &lengthAt](std::size_t At) {
        return DisplayWidth(CleanForScreen(text.substr(At, lengthAt(At))));
    };
    if (Position >= text.size()) {
        return text.size();
    }
    std::size_t next = Position + lengthAt(Position);
    while (next < text.size() && widthAt(next) == 0) {
        next += lengthAt(next);
    }
    return next;
}

std::size_t TextField::PreviousStep(std::size_t Position) const {
    std::size_t previous = 0;
    for (std::size_t next = 0; next < Position; next = NextStep(next)) {
        previous = next;
    }
    return previous;
}

TextField::View TextField::Visible(int Width) const {
    const int width = std::max(1, Width);
    const std::string_view text = Bytes;
    const auto columnsBetween = [&text](std::size_t From, std::size_t To) {
        return DisplayWidth(CleanForScreen(text.substr(From, To - From)));
    };
    // The window moves by half its width, so that the text stands still while the cursor moves.
    std::size_t from = 0;
    const int half = std::max(1, width / 2);
    while (from < Cursor && columnsBetween(from, Cursor) >= width) {
        const std::size_t before = from;
        while (columnsBetween(before, from) < half) {
            from = NextStep(from);
        }
    }
    std::size_t to = from;
    while (to < text.size() && columnsBetween(from, NextStep(to)) <= width) {
        to = NextStep(to);
    }
    return {CleanForScreen(text.substr(from, to - from)),
            CleanForScreen(text.substr(from, Cursor - from))};
}
