// The question about a taken name, as a model: lines out, keys in, and an answer in the end.
//
// It offers only what is valid for the conflict's kind. Enter alone skips, which never destroys.
// An answer that would remove a whole directory has to be confirmed with a second key.

#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "block_drawer.h"
#include "block_layout.h"
#include "conflict_choices.h"
#include "conflict_desk.h"
#include "key_press.h"
#include "tarvanetransfer.h"
#include "text_field.h"

// What the question needs to know about the disk.
struct RenameAdvice {
    // A full path beside the destination that is free; empty when none was found.
    std::function<std::string()> ProposeFreePath;
    // Why this full path cannot be used, as one short sentence; empty when it can.
    std::function<std::string(const std::string& Path)> Refusal;
};

// How long keys are dead after a question has appeared: long in the middle of a job, where somebody
// may be typing something else; short right after the answer to another question.
inline constexpr std::chrono::milliseconds kQuestionDeadTime{700};
inline constexpr std::chrono::milliseconds kNextQuestionDeadTime{200};

class ConflictQuestion {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // Keys other than Esc are ignored until KeysLiveFrom.
    ConflictQuestion(TarvaneTransferConflict PostedConflict, RenameAdvice NameAdvice,
                     TimePoint KeysLiveFrom);

    struct Screen {
        std::vector<ScreenLine> Lines;
        BlockCursor Cursor;
    };

    // At most Size.Rows lines, laid out for the window. Where the list of answers does not fit, the
    // keys alone are shown and `?` shows the list.
    Screen Show(TerminalSize Size) const;

    // Takes one key. Nothing while the question is still open.
    std::optional<ConflictAnswer> Handle(const KeyPress& Key, TimePoint Now);

    // "File exists: /x/cover.jpg: overwrite all", the line that stays when it has been answered.
    // Clean; wrap it for the window. It has to be called after Handle has given the answer.
    std::string AnswerLine() const;

private:
    std::optional<ConflictAnswer> HandleLetter(char Letter);
    std::optional<ConflictAnswer> HandleConfirmation(const KeyPress& Key);
    std::optional<ConflictAnswer> HandleRename(const KeyPress& Key);
    std::optional<ConflictAnswer> OpenRename();
    std::optional<ConflictAnswer> KeepBoth(const ConflictChoice& Choice);
    std::optional<ConflictAnswer> Give(const ConflictChoice& Choice, std::string RenamePath);

    Screen ShowChoices(TerminalSize Size) const;
    Screen ShowRename(TerminalSize Size) const;
    Screen ShowWith(const std::string& Keys, const std::string& LastLine, TerminalSize Size) const;
    std::vector<BlockPart> PartsAbove(int Width) const;
    Screen WithLastLine(std::vector<BlockPart> Parts, const std::string& LastLine,
                        TerminalSize Size) const;

    const TarvaneTransferConflict Conflict;
    const RenameAdvice Advice;
    const TimePoint LiveFrom;
    // The line that is being edited after `r`.
    std::optional<TextField> Rename;
    // The answer that waits for its second key.
    std::optional<ConflictChoice> ToConfirm;
    // `?` was pressed.
    bool bListWanted = false;
    // Why the latest answer was not taken.
    std::string Reason;
    // The answer in words.
    std::string Given;
};
