#include "conflict_question.h"

#include <filesystem>
#include <utility>

#include "conflict_texts.h"
#include "question_layout.h"
#include "screen_text.h"

namespace {

using Action = TarvaneTransferConflictAction;

constexpr char kRenameLetter = 'r';
constexpr char kConfirmLetter = 'y';
constexpr char kListLetter = '?';
// Below it the rename line has no label.
constexpr int kNarrowWidth = 24;

std::size_t RowsOf(const std::vector<BlockPart>& Parts) {
    std::size_t rows = 0;
    for (const BlockPart& part : Parts) {
        rows += part.Lines.size();
    }
    return rows;
}

} // namespace

ConflictQuestion::ConflictQuestion(TarvaneTransferConflict PostedConflict, RenameAdvice NameAdvice,
                                   TimePoint KeysLiveFrom)
    : Conflict(std::move(PostedConflict)), Advice(std::move(NameAdvice)), LiveFrom(KeysLiveFrom) {}

std::optional<ConflictAnswer> ConflictQuestion::Handle(const KeyPress& Key, TimePoint Now) {
    if (Key.Code != KeyCode::Escape && Now < LiveFrom) {
        return std::nullopt;
    }
    Reason.clear();
    if (Rename) {
        return HandleRename(Key);
    }
    if (ToConfirm) {
        return HandleConfirmation(Key);
    }
    if (Key.Code == KeyCode::Escape) {
        return Give({.Label = "cancel", .Action = Action::Cancel}, {});
    }
    if (Key.Code == KeyCode::Enter) {
        return HandleLetter(kDefaultChoiceLetter);
    }
    return Key.Text.size() == 1 ? HandleLetter(Key.Text[0]) : std::nullopt;
}

std::optional<ConflictAnswer> ConflictQuestion::HandleLetter(char Letter) {
    bListWanted = Letter == kListLetter && !bListWanted;
    const std::optional<ConflictChoice> choice = ChoiceByLetter(Conflict, Letter);
    if (!choice) {
        return std::nullopt;
    }
    if (choice->Action == Action::CompareByContent && !HasBothSizes(Conflict)) {
        Reason = "There is nothing to compare: one of them has no size.";
        return std::nullopt;
    }
    if (RemovesDirectory(Conflict, *choice)) {
        ToConfirm = choice;
        return std::nullopt;
    }
    if (choice->Action != Action::Rename) {
        return Give(*choice, {});
    }
    return Letter == kRenameLetter ? OpenRename() : KeepBoth(*choice);
}

std::optional<ConflictAnswer> ConflictQuestion::HandleConfirmation(const KeyPress& Key) {
    const std::optional<ConflictChoice> choice = std::exchange(ToConfirm, std::nullopt);
    return Key.Text == std::string(1, kConfirmLetter) ? Give(*choice, {}) : std::nullopt;
}

std::optional<ConflictAnswer> ConflictQuestion::OpenRename() {
    const std::string proposed = Advice.ProposeFreePath();
    const std::string path = proposed.empty() ? Conflict.DestinationPath : proposed;
    Rename.emplace(std::filesystem::path(path).filename().native());
    return std::nullopt;
}

std::optional<ConflictAnswer> ConflictQuestion::KeepBoth(const ConflictChoice& Choice) {
    std::string path = Advice.ProposeFreePath();
    if (path.empty()) {
        Reason = "No free name was found.";
        return std::nullopt;
    }
    return Give(Choice, std::move(path));
}

std::optional<ConflictAnswer> ConflictQuestion::HandleRename(const KeyPress& Key) {
    if (Key.Code == KeyCode::Escape) {
        Rename.reset();
        return std::nullopt;
    }
    if (Key.Code != KeyCode::Enter) {
        Rename->Handle(Key);
        return std::nullopt;
    }
    if (Rename->Text().empty()) {
        Reason = "The name is empty.";
        return std::nullopt;
    }
    // A name without a directory is one beside the destination.
    const std::filesystem::path path =
        std::filesystem::path(Conflict.DestinationPath).parent_path() / Rename->Text();
    Reason = Advice.Refusal(path.native());
    if (!Reason.empty()) {
        return std::nullopt;
    }
    return Give(*ChoiceByLetter(Conflict, kRenameLetter), path.native());
}

std::optional<ConflictAnswer> ConflictQuestion::Give(const ConflictChoice& Choice,
                                                     std::string RenamePath) {
    Given = Choice.Label;
    if (!RenamePath.empty()) {
        Given += " | " + RenamePath;
    }
    return ConflictAnswer{Choice.Action, std::move(RenamePath), Choice.ForAllFiles,
                          Choice.ForAllDirectories};
}

std::string ConflictQuestion::AnswerLine() const {
    return CleanForScreen(ConflictTitle(Conflict) + Conflict.DestinationPath + " | " + Given);
}

ConflictQuestion::Screen ConflictQuestion::Show(TerminalSize Size) const {
    if (Rename) {
        return ShowRename(Size);
    }
    if (ToConfirm) {
        return ShowWith("y remove it and go on  any other key: back", "Remove the directory? ",
                        Size);
    }
    return ShowChoices(Size);
}

ConflictQuestion::Screen ConflictQuestion::ShowChoices(TerminalSize Size) const {
    std::vector<BlockPart> parts = PartsAbove(LayoutWidth(Size));
    BlockPart choices = ChoicesPart(Conflict.Kind, LayoutWidth(Size));
    const auto rows = static_cast<std::size_t>(Size.Rows);
    const std::size_t choicesRows = choices.Lines.size() + 1;
    if (RowsOf(parts) + choicesRows <= rows || (bListWanted && choicesRows <= rows)) {
        parts.push_back(std::move(choices));
        return WithLastLine(std::move(parts), "? ", Size);
    }
    return WithLastLine(std::move(parts), ShortChoices(Conflict.Kind), Size);
}

ConflictQuestion::Screen ConflictQuestion::ShowRename(TerminalSize Size) const {
    const int width = LayoutWidth(Size);
    const std::string label = width < kNarrowWidth ? "" : "Rename to: ";
    const TextField::View view = Rename->Visible(width - DisplayWidth(label));
    Screen screen =
        ShowWith("Enter use this name  Esc back to the answers", label + view.Shown, Size);
    screen.Cursor.Prefix = label + view.BeforeCursor;
    return screen;
}

ConflictQuestion::Screen ConflictQuestion::ShowWith(const std::string& Keys,
                                                    const std::string& LastLine,
                                                    TerminalSize Size) const {
    std::vector<BlockPart> parts = PartsAbove(LayoutWidth(Size));
    parts.push_back(WordsPart(kChoicesPart, Keys, LayoutWidth(Size)));
    return WithLastLine(std::move(parts), LastLine, Size);
}

std::vector<BlockPart> ConflictQuestion::PartsAbove(int Width) const {
    std::vector<BlockPart> parts = ConflictParts(Conflict, Width);
    parts.push_back(WordsPart(kReasonPart, Reason, Width));
    return parts;
}

ConflictQuestion::Screen ConflictQuestion::WithLastLine(std::vector<BlockPart> Parts,
                                                        const std::string& LastLine,
                                                        TerminalSize Size) const {
    const std::string shown = WrapAtColumns(LastLine, LayoutWidth(Size)).front();
    Parts.push_back({kLastLinePart, {{shown}}});
    Screen screen;
    screen.Lines = FitToRows(std::move(Parts), Size.Rows);
    screen.Cursor = {screen.Lines.size() - 1, shown};
    return screen;
}
