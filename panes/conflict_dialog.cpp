#include "conflict_dialog.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>
#include <vector>

#include "conflict_choices.h"
#include "conflict_lines.h"
#include "screen_text.h"

namespace {

constexpr std::string_view kRenameLabel = "Rename to: ";
constexpr std::size_t kYesButton = 0;
constexpr std::size_t kNoButton = 1;

std::string LettersOf(const TakenName& Name) {
    std::string letters;
    for (const ConflictChoice& choice : ChoicesFor(Name)) {
        letters += choice.Letter;
    }
    return letters;
}

// The label tells a letter from the same one in capitals: "skip", but "Skip all".
std::string LabelOf(const ConflictChoice& Choice) {
    if (Choice.Letter == 'b') {
        return "compare by content";
    }
    std::string label = Choice.Label;
    if (std::toupper(static_cast<unsigned char>(label[0])) == Choice.Letter) {
        label[0] = Choice.Letter;
    }
    return label;
}

std::vector<DialogButton> ButtonsFor(const TakenName& Name) {
    std::vector<DialogButton> buttons;
    for (const ConflictChoice& choice : ChoicesFor(Name)) {
        buttons.push_back({LabelOf(choice), std::string(1, choice.Letter)});
    }
    buttons.push_back({"cancel", "Esc"});
    return buttons;
}

void DrawNewName(Screen& On, const Area& Where, const TextField& Name) {
    const int labelColumns = DisplayWidth(kRenameLabel);
    On.Put(Where.Column, Where.Row, kRenameLabel, CellRole::Dialog);
    DrawField(On, Where.Column + labelColumns, Where.Row, Where.Columns - labelColumns, Name);
}

KeyPress LetterKey(char Letter) {
    return {.Code = KeyCode::Text, .Text = std::string(1, Letter)};
}

} // namespace

ConflictDialog::ConflictDialog(const ConflictDesk::Question& Asked, RenameAdvice Advice,
                               KeyGuard& GuardOfAll, TimePoint Now)
    : Id(Asked.Id), Question(Asked.Name, std::move(Advice)), Guard(GuardOfAll),
      Letters(LettersOf(Asked.Name)),
      Answers(ButtonsFor(Asked.Name), Letters.find(kDefaultChoiceLetter)),
      Confirmation({{"Yes, remove it", "y"}, {"No", "n"}}, kNoButton) {
    Guard.QuestionAppears(Now);
}

void ConflictDialog::ShowJob(std::string Stage, std::string Done) {
    JobStage = std::move(Stage);
    JobDone = std::move(Done);
}

std::optional<std::pair<std::uint64_t, ConflictAnswer>> ConflictDialog::TakeAnswer() {
    const std::optional<ConflictAnswer> answer = std::exchange(Given, std::nullopt);
    return answer ? std::optional(std::pair(Id, *answer)) : std::nullopt;
}

void ConflictDialog::TakeKey(const KeyPress& Key, TimePoint Now) {
    if (bClosed || !Guard.LetsThrough(Key, Now)) {
        return;
    }
    const std::optional<KeyPress> key = KeyForQuestion(Key);
    Given = key ? Question.Handle(*key) : std::nullopt;
    if (!Question.IsConfirming()) {
        Confirmation.SetFocus(kNoButton);
    }
    if (Given) {
        bClosed = true;
        Guard.AnswerIsGiven(Now);
    }
}

// What a key or a pressed button means to the question; nothing for a key that only moves the
// focus.
std::optional<KeyPress> ConflictDialog::KeyForQuestion(const KeyPress& Key) {
    if (Question.NewName() || Key.Code == KeyCode::Escape) {
        return Key;
    }
    const KeyPress escape{.Code = KeyCode::Escape};
    if (Question.IsConfirming()) {
        const std::optional<std::size_t> pressed = Confirmation.Handle(Key);
        return !pressed ? std::nullopt
                        : std::optional(*pressed == kYesButton ? LetterKey('y') : escape);
    }
    const std::optional<std::size_t> pressed = Answers.Handle(Key);
    if (!pressed) {
        return std::nullopt;
    }
    return *pressed < Letters.size() ? LetterKey(Letters[*pressed]) : escape;
}

void ConflictDialog::Draw(Screen& On, TimePoint) {
    const TerminalSize window = On.Size();
    const int columns =
        std::min(WantedColumns(Question.Asked()) + kColumnsAroundDialog, window.Columns);
    const int room = columns - kColumnsAroundDialog;
    const int buttonRows = std::max(Answers.RowsIn(room), Confirmation.RowsIn(room));
    const DialogLines lines = LinesOfConflict(Question, {JobStage, JobDone, buttonRows},
                                              {room, window.Rows - kRowsAroundDialog});
    const Area inside =
        DrawDialogBox(On, columns, static_cast<int>(lines.size()) + kRowsAroundDialog,
                      ConflictDialogTitle(Question.Asked()));
    bool bButtonsAreDrawn = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const int row = inside.Row + static_cast<int>(i);
        if (lines[i].What == DialogLine::Kind::Text) {
            On.Put(inside.Column, row, lines[i].CleanText, lines[i].Role);
        } else if (lines[i].What == DialogLine::Kind::NewName) {
            DrawNewName(On, {inside.Column, row, inside.Columns, 1}, *Question.NewName());
        } else if (!std::exchange(bButtonsAreDrawn, true)) {
            ButtonRow& buttons = Question.IsConfirming() ? Confirmation : Answers;
            buttons.Draw(On, inside.Column, row, inside.Columns, !Question.NewName());
        }
    }
}
