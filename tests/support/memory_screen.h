// A screen in memory, for tests of what is drawn.

#pragma once

#include "screen.h"
#include "screen_text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

// Fails the test where text that is not clean is put on it, or text that begins outside of it.
class MemoryScreen : public Screen {
public:
    explicit MemoryScreen(TerminalSize SizeOfWindow = {80, 24}, bool bUtf8Terminal = true)
        : Window(SizeOfWindow), bUtf8(bUtf8Terminal) {
        Erase();
    }

    void Resize(TerminalSize NewSize) { Window = NewSize; }

    TerminalSize Size() const override { return Window; }

    void Erase() override {
        Cells.assign(static_cast<std::size_t>(Window.Rows),
                     std::vector<Cell>(static_cast<std::size_t>(Window.Columns)));
        bCursor = false;
    }

    void Put(int Column, int Row, std::string_view CleanText, CellRole Role) override {
        EXPECT_EQ(CleanForScreen(CleanText), CleanText);
        EXPECT_TRUE(Row >= 0 && Row < Window.Rows && Column >= 0 && Column < Window.Columns)
            << "\"" << CleanText << "\" at " << Column << ", " << Row;
        if (Row < 0 || Row >= Window.Rows || Column < 0 || Column >= Window.Columns) {
            return;
        }
        std::vector<Cell>& cells = Cells[static_cast<std::size_t>(Row)];
        std::size_t at = static_cast<std::size_t>(Column);
        std::size_t last = at;
        for (std::size_t i = 0; i < CleanText.size();) {
            const std::size_t bytes = Utf8SequenceLength(CleanText.substr(i));
            const std::string_view character = CleanText.substr(i, bytes == 0 ? 1 : bytes);
            const auto width = static_cast<std::size_t>(DisplayWidth(character));
            i += character.size();
            if (width == 0) {
                cells[last].Text += character;
                continue;
            }
            if (at + width > cells.size()) {
                return;
            }
            last = at;
            for (std::size_t more = 0; more < width; ++more) {
                BlankOtherHalf(cells, at + more);
                cells[at + more] = {"", Role};
            }
            cells[at].Text = character;
            at += width;
        }
    }

    void ShowCursor(int Column, int Row) override {
        bCursor = true;
        CursorColumn = Column;
        CursorRow = Row;
    }
    void Flush() override { ++Frames; }
    bool IsUtf8() const override { return bUtf8; }
    bool HasColors() const override { return true; }

    // One row without the blanks at its end.
    std::string Row(int Number) const {
        std::string text;
        for (const Cell& cell : Cells.at(static_cast<std::size_t>(Number))) {
            text += cell.Text;
        }
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }
    // All rows, each with a newline.
    std::string Text() const {
        std::string text;
        for (int row = 0; row < Window.Rows; ++row) {
            text += Row(row) + "\n";
        }
        return text;
    }
    CellRole RoleAt(int Column, int RowNumber) const {
        return Cells.at(static_cast<std::size_t>(RowNumber))
            .at(static_cast<std::size_t>(Column))
            .Role;
    }
    // The text of all cells with that role, row by row, pieces divided by "|".
    std::string TextWithRole(CellRole Role) const {
        std::string text;
        for (const std::vector<Cell>& cells : Cells) {
            bool bWas = false;
            for (const Cell& cell : cells) {
                const bool bIs = cell.Role == Role;
                text += bIs && !bWas && !text.empty() ? "|" : "";
                text += bIs ? cell.Text : "";
                bWas = bIs;
            }
        }
        return text;
    }

    bool bCursor = false;
    int CursorColumn = 0;
    int CursorRow = 0;
    int Frames = 0;

private:
    struct Cell {
        std::string Text = " ";
        CellRole Role = CellRole::Plain;
    };

    // A wide character of which one cell is taken away goes away, as on a real screen.
    static void BlankOtherHalf(std::vector<Cell>& OutCells, std::size_t At) {
        if (OutCells[At].Text.empty() && At > 0) {
            OutCells[At - 1].Text = " ";
        }
        if (At + 1 < OutCells.size() && OutCells[At + 1].Text.empty()) {
            OutCells[At + 1].Text = " ";
        }
    }

    TerminalSize Window;
    const bool bUtf8;
    std::vector<std::vector<Cell>> Cells;
};
