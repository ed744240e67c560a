#include "text_dialog.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "screen_text.h"
#include "surface.h"

namespace {

constexpr int kUsualColumns = 76;
constexpr const char* kKeys = "Enter: use it   Esc: leave";

} // namespace

TextDialog::TextDialog(TextQuestion QuestionToAsk)
    : Question(std::move(QuestionToAsk)), Field(Question.InitialText) {}

void TextDialog::Draw(Screen& On, TimePoint) {
    const int columns = std::min(kUsualColumns, On.Size().Columns - kColumnsAroundDialog);
    const std::vector<std::string> label = WrapAtWords(CleanForScreen(Question.Label), columns);
    // There is a line for the refusal before there is one, so that the dialog stands still.
    const std::vector<std::string> refusal = WrapAtWords(CleanForScreen(WhyRefused), columns);
    const auto rows = static_cast<int>(label.size() + refusal.size()) + 2;
    const Area inside = DrawDialogBox(On, columns + kColumnsAroundDialog, rows + kRowsAroundDialog,
                                      CleanForScreen(Question.Title));
    int row = inside.Row;
    for (const std::string& line : label) {
        On.Put(inside.Column, row++, line, CellRole::Dialog);
    }
    DrawField(On, inside.Column, row++, inside.Columns, Field);
    for (const std::string& line : refusal) {
        On.Put(inside.Column, row++, line, CellRole::Warning);
    }
    On.Put(inside.Column, row, kKeys, CellRole::Dialog);
}

void TextDialog::TakeKey(const KeyPress& Key, TimePoint) {
    if (bClosed) {
        return;
    }
    WhyRefused.clear();
    if (Key.Code == KeyCode::Escape) {
        bClosed = true;
    } else if (Key.Code != KeyCode::Enter) {
        Field.Handle(Key);
    } else {
        WhyRefused = Question.Refusal ? Question.Refusal(Field.Text()) : "";
        bClosed = WhyRefused.empty();
        Taken = bClosed ? std::optional(Field.Text()) : std::nullopt;
    }
}
