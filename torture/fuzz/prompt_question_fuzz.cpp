// Keys at the prompt's question about a taken name, in a window of any size.

#include <optional>
#include <string>

#include "asked_name.h"
#include "block_drawer.h"
#include "fuzz_target.h"
#include "line_bytes.h"
#include "question_layout.h"
#include "screen_text.h"

namespace {

constexpr int kFewestColumns = 6;

std::string WithoutStyles(std::string Bytes) {
    for (std::size_t at = 0; (at = Bytes.find("\x1B[", at)) != std::string::npos;) {
        const std::size_t end = Bytes.find_first_not_of("0123456789;", at + 2);
        Expect(end != std::string::npos && Bytes[end] == 'm', "a line has styles and nothing else");
        Bytes.erase(at, end + 1 - at);
    }
    return Bytes;
}

void ExpectShown(const ConflictQuestion& Question, TerminalSize Window, BlockDrawer& InOutDrawer) {
    const QuestionScreen screen = LayOutQuestion(Question, Window);
    Expect(screen.Lines.size() <= static_cast<std::size_t>(Window.Rows), "the window has the rows");
    Expect(screen.Cursor.Line + 1 == screen.Lines.size(), "the cursor is in the last line");
    Expect(DisplayWidth(screen.Cursor.Prefix) < Window.Columns, "the cursor is in the window");
    for (const ScreenLine& line : screen.Lines) {
        ExpectClean(line.Text);
        Expect(DisplayWidth(line.Text) < Window.Columns, "the window has the columns");
        Expect(WithoutStyles(LineBytes(line)) == line.Text, "a line is shown whole");
    }
    InOutDrawer.Draw(screen.Lines, Window, screen.Cursor);
}

} // namespace

void RunInput(std::string_view Input) {
    InputReader reader(Input);
    const TerminalSize windows[] = {
        {kFewestColumns + reader.Number(150), 1 + reader.Number(40)},
        {kFewestColumns + reader.Number(150), 1 + reader.Number(40)},
    };
    const TakenName name = TakenNameFrom(reader);
    ConflictQuestion question(name, AdviceFor(name));
    BlockDrawer drawer;
    std::size_t window = 0;
    for (const KeyPress& key : KeysIn(reader.Rest())) {
        ExpectShown(question, windows[window], drawer);
        if (key.Code == KeyCode::Control) {
            window = 1 - window;
        }
        if (const std::optional<ConflictAnswer> answer = question.Handle(key)) {
            ExpectGoodAnswer(*answer, name);
            ExpectClean(question.AnswerLine());
            return;
        }
    }
    ExpectShown(question, windows[window], drawer);
}
