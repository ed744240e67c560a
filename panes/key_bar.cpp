#include "key_bar.h"

#include <array>
#include <string>

#include "screen_text.h"
#include "surface.h"

namespace {

struct KeyLabel {
    std::string_view Label;
    // For windows where that has no room.
    std::string_view Short;
};

// From F1 on.
constexpr std::array kLabels = {
    KeyLabel{"Help", "Help"}, KeyLabel{"Rename", "Ren"}, KeyLabel{"View", "View"},
    KeyLabel{"Edit", "Edit"}, KeyLabel{"Copy", "Copy"},  KeyLabel{"Move", "Move"},
    KeyLabel{"Mkdir", "Dir"}, KeyLabel{"Delete", "Del"}, KeyLabel{"Jobs", "Jobs"},
    KeyLabel{"Quit", "Quit"},
};
constexpr int kKeys = static_cast<int>(kLabels.size());

int FirstColumnOf(int Key, int WindowColumns) {
    return (Key - 1) * WindowColumns / kKeys;
}

} // namespace

void DrawStatusLine(Screen& On, int Row, std::string_view Text, bool bNeedsAttention) {
    const int columns = On.Size().Columns;
    std::string text(" ");
    text += ElideMiddle(CleanForScreen(Text), columns - 2);
    On.Put(0, Row, FitToColumns(text, columns),
           bNeedsAttention ? CellRole::Warning : CellRole::Status);
}

void DrawKeyBar(Screen& On, int Row) {
    const int columns = On.Size().Columns;
    for (int key = 1; key <= kKeys; ++key) {
        const int column = FirstColumnOf(key, columns);
        const std::string number = std::to_string(key);
        const int room = FirstColumnOf(key + 1, columns) - column - DisplayWidth(number);
        const KeyLabel& label = kLabels[static_cast<std::size_t>(key) - 1];
        const int gap = key < kKeys ? 1 : 0;
        const bool bFits = DisplayWidth(label.Label) + gap <= room;
        On.Put(column, Row, number, CellRole::KeyNumber);
        On.Put(column + DisplayWidth(number), Row,
               FitToColumns(bFits ? label.Label : label.Short, room), CellRole::KeyLabel);
    }
}

std::optional<int> FunctionKeyAt(int Column, int WindowColumns) {
    for (int key = 1; key <= kKeys; ++key) {
        if (Column >= FirstColumnOf(key, WindowColumns) &&
            Column < FirstColumnOf(key + 1, WindowColumns)) {
            return key;
        }
    }
    return std::nullopt;
}
