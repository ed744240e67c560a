// A line to type in, over the panes: a name, a pattern, a directory.

#pragma once

#include <functional>
#include <optional>
#include <string>

#include "dialog.h"
#include "text_field.h"

struct TextQuestion {
    std::string Title;
    std::string Label;
    std::string InitialText = {};
    // Why this text cannot be used, as one short sentence; empty when it can. It may be missing.
    std::function<std::string(const std::string& Text)> Refusal = {};
};

class TextDialog : public Dialog {
public:
    explicit TextDialog(TextQuestion QuestionToAsk);

    void Draw(Screen& On, TimePoint Now) override;
    // Enter takes the text, Esc leaves without one.
    void TakeKey(const KeyPress& Key, TimePoint Now) override;
    bool IsClosed() const override { return bClosed; }

    // The text that was entered, in the bytes that were typed.
    const std::optional<std::string>& Entered() const { return Taken; }

private:
    const TextQuestion Question;
    TextField Field;
    std::string WhyRefused;
    std::optional<std::string> Taken;
    bool bClosed = false;
};
