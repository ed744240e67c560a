// All keys, and what they do.

#pragma once

#include "dialog.h"

#include <cstddef>
#include <span>

struct HelpLine {
    const char* Keys;
    // Empty for a heading, which stands in Keys.
    const char* Does;
};

std::span<const HelpLine> HelpLines();

class HelpDialog : public Dialog {
public:
    void Draw(Screen& On, TimePoint Now) override;
    void TakeKey(const KeyPress& Key, TimePoint Now) override;
    bool IsClosed() const override { return bClosed; }

private:
    // As drawn last.
    std::size_t LineCount = 0;
    int VisibleLines = 1;
    std::size_t FirstLine = 0;
    bool bClosed = false;
};
