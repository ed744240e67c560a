// The question about a taken name over the panes, with its answers as buttons.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "button_row.h"
#include "conflict_desk.h"
#include "conflict_question.h"
#include "dialog.h"
#include "key_guard.h"

class ConflictDialog : public Dialog {
public:
    // Guard is the one of all questions, which knows whether somebody has just answered another
    // one. It outlives the dialog.
    ConflictDialog(const ConflictDesk::Question& Asked, RenameAdvice Advice, KeyGuard& GuardOfAll,
                   TimePoint Now);

    // What its job is at, and how far; not cleaned for a screen.
    void ShowJob(std::string Stage, std::string Done);

    void Draw(Screen& On, TimePoint Now) override;
    void TakeKey(const KeyPress& Key, TimePoint Now) override;
    bool IsGuarded() const override { return true; }
    bool IsClosed() const override { return bClosed; }

    // The question is not open any more.
    void Close() { bClosed = true; }

    // The question that is read here.
    std::uint64_t QuestionId() const { return Id; }
    // The answer and the question that it is for; once.
    std::optional<std::pair<std::uint64_t, ConflictAnswer>> TakeAnswer();

private:
    std::optional<KeyPress> KeyForQuestion(const KeyPress& Key);

    const std::uint64_t Id;
    ConflictQuestion Question;
    KeyGuard& Guard;
    // Those of the answers, in their order; the button behind them cancels.
    const std::string Letters;
    ButtonRow Answers;
    // Yes and no, where an answer has to be confirmed.
    ButtonRow Confirmation;
    std::string JobStage;
    std::string JobDone;
    std::optional<ConflictAnswer> Given;
    bool bClosed = false;
};
