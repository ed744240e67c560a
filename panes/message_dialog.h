// A text with buttons, over the panes: something to know, or a question.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "button_row.h"
#include "dialog.h"
#include "key_guard.h"

struct Message {
    std::string Title;
    // Wrapped at words, each on a line of its own; not cleaned for a screen.
    std::vector<std::string> Paragraphs;
    std::vector<DialogButton> Buttons;
    // Has the focus at first, and Esc presses it.
    std::size_t SafeButton = 0;
};

// With the button Close.
Message Notice(std::string Title, std::vector<std::string> Paragraphs);
// With the buttons Yes and No, the second of which is the safe one.
Message YesNoQuestion(std::string Title, std::vector<std::string> Paragraphs);
inline constexpr std::size_t kYesButton = 0;

class MessageDialog : public Dialog {
public:
    explicit MessageDialog(Message MessageToShow);

    // For one that comes while somebody may be typing: keys are dead at first. The guard outlives
    // the dialog.
    void AppearUnasked(KeyGuard& GuardOfAll, TimePoint Now);

    void Draw(Screen& On, TimePoint Now) override;
    void TakeKey(const KeyPress& Key, TimePoint Now) override;
    bool IsClosed() const override { return Chosen.has_value(); }
    bool IsGuarded() const override { return Guard != nullptr; }

    // There is nothing to answer any more: as if the safe button were pressed.
    void Close() { Chosen = Shown.SafeButton; }

    // The button that was pressed.
    std::optional<std::size_t> Pressed() const { return Chosen; }

private:
    std::vector<std::string> LinesIn(int Columns) const;
    void SetPage(int Lines, int Rows);
    void DrawLines(Screen& On, const Area& Inside, const std::vector<std::string>& Lines) const;
    bool Scroll(const KeyPress& Key);

    const Message Shown;
    ButtonRow Buttons;
    KeyGuard* Guard = nullptr;
    // Of the lines, at the latest Draw.
    int FirstLine = 0;
    int LastFirstLine = 0;
    int LinesPerPage = 1;
    std::optional<std::size_t> Chosen;
};
