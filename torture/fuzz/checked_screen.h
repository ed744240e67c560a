// A screen that keeps nothing and expects that all that is put on it may be put there.

#pragma once

#include <string_view>

#include "fuzz_target.h"
#include "screen.h"
#include "screen_text.h"

class CheckedScreen : public Screen {
public:
    CheckedScreen(TerminalSize SizeOfWindow, bool bUtf8Terminal)
        : Window(SizeOfWindow), bUtf8(bUtf8Terminal) {}

    void Resize(TerminalSize NewSize) { Window = NewSize; }

    TerminalSize Size() const override { return Window; }
    void Erase() override {}
    void Put(int Column, int Row, std::string_view CleanText, CellRole) override {
        ExpectClean(CleanText);
        Expect(IsInside(Column, Row), "a text begins in the window");
        Expect(Column + DisplayWidth(CleanText) <= Window.Columns, "a text ends in the window");
    }
    void ShowCursor(int Column, int Row) override {
        Expect(IsInside(Column, Row), "the cursor is in the window");
    }
    void Flush() override {}
    bool IsUtf8() const override { return bUtf8; }
    bool HasColors() const override { return true; }

private:
    bool IsInside(int Column, int Row) const {
        return Column >= 0 && Column < Window.Columns && Row >= 0 && Row < Window.Rows;
    }

    TerminalSize Window;
    const bool bUtf8;
};

// One in which the panes work; a smaller window says no more than that it is too small.
inline TerminalSize WindowFrom(InputReader& Reader) {
    return {60 + Reader.Number(140), 16 + Reader.Number(50)};
}
