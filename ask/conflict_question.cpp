#include "conflict_question.h"

#include <filesystem>
#include <utility>

#include "conflict_texts.h"
#include "free_name.h"
#include "screen_text.h"

namespace {

using Action = TarvaneTransferConflictAction;

constexpr char kRenameLetter = 'r';
constexpr char kConfirmLetter = 'y';
constexpr char kListLetter = '?';

} // namespace

RenameAdvice AdviceFor(const std::string& Destination) {
    return {.ProposeFreePath =
                [Destination] {
                    return FreeNameBeside(Destination).value_or(std::filesystem::path()).native();
                },
            .Refusal = [](const std::string& Path) { return RenameRefusal(Path); }};
}

ConflictQuestion::ConflictQuestion(TakenName NameToAskAbout, RenameAdvice NameAdvice)
    : Name(std::move(NameToAskAbout)), Advice(std::move(NameAdvice)) {}

std::optional<ConflictAnswer> ConflictQuestion::Handle(const KeyPress& Key) {
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
    const bool bLetter = Key.Code == KeyCode::Text && Key.Text.size() == 1;
    return bLetter ? HandleLetter(Key.Text[0]) : std::nullopt;
}

std::optional<ConflictAnswer> ConflictQuestion::HandleLetter(char Letter) {
    bListWanted = Letter == kListLetter && !bListWanted;
    const std::optional<ConflictChoice> choice = ChoiceByLetter(Name, Letter);
    if (!choice) {
        return std::nullopt;
    }
    if (ReplacesOtherKind(choice->Action, Name)) {
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
    return Key.IsCharacter(kConfirmLetter) ? Give(*choice, {}) : std::nullopt;
}

std::optional<ConflictAnswer> ConflictQuestion::OpenRename() {
    const std::string proposed = Advice.ProposeFreePath();
    const std::string path = proposed.empty() ? Name.Conflict.DestinationPath : proposed;
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
        std::filesystem::path(Name.Conflict.DestinationPath).parent_path() / Rename->Text();
    Reason = Advice.Refusal(path.native());
    if (!Reason.empty()) {
        return std::nullopt;
    }
    return Give(*ChoiceByLetter(Name, kRenameLetter), path.native());
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
    return CleanForScreen(ConflictTitle(Name) + Name.Conflict.DestinationPath + " | " + Given);
}
