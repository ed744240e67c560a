// The screen of a terminal that knows little: it shows what bytes put on it, and refuses those that
// a simple terminal may not understand.

#pragma once

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Characters of one column each, carriage return, line feed, cursor up and right, erase to the end
// of the line and of the screen, wrapping on and off, and styles, which are not kept.
//
// Errors: anything else throws std::runtime_error; so does erasing the whole screen, which tmux
// takes for a wish to keep in its history what stood there.
class PlainScreen {
public:
    PlainScreen(int ColumnsAtFirst, int RowsAtFirst) : Columns(ColumnsAtFirst), Rows(RowsAtFirst) {}

    // Rewraps long lines, as most terminals do.
    void Resize(int NewColumns, int NewRows) {
        Columns = NewColumns;
        Rows = NewRows;
    }
    // Cuts them, as some do.
    void ResizeAndCut(int NewColumns, int NewRows) {
        Resize(NewColumns, NewRows);
        for (std::string& line : Lines) {
            line.resize(std::min(line.size(), Width()));
        }
    }

    void Write(std::string_view Bytes) {
        while (!Bytes.empty()) {
            Bytes.remove_prefix(Bytes[0] == '\x1B' ? TakeSequence(Bytes) : TakeByte(Bytes[0]));
        }
    }

    // What was ever shown and not erased, scrolled off or not, without empty lines at the end.
    std::vector<std::string> Text() const {
        std::vector<std::string> text = Lines;
        while (!text.empty() && text.back().empty()) {
            text.pop_back();
        }
        return text;
    }

    // Of the line that was written as one, rewrapped or not.
    std::size_t CursorLine() const { return Line; }
    std::size_t CursorColumn() const { return Column; }

private:
    std::size_t Width() const { return static_cast<std::size_t>(Columns); }

    std::size_t RowsOf(std::size_t Index) const {
        const std::size_t size = Lines[Index].size();
        return size == 0 ? 1 : (size + Width() - 1) / Width();
    }

    std::size_t TakeByte(char Byte) {
        if (Byte == '\r') {
            Column -= Column % Width();
        } else if (Byte == '\n') {
            Down();
        } else if (Byte >= ' ' && Byte <= '~') {
            Lines[Line].resize(std::max(Lines[Line].size(), Column + 1), ' ');
            Lines[Line][Column] = Byte;
            const bool bAtMargin = Column % Width() == Width() - 1;
            Column += bAtMargin && !bWraps ? 0 : 1;
        } else {
            throw std::runtime_error("a byte that a simple terminal does not show");
        }
        return 1;
    }

    // The rows below the cursor's are no longer part of its line.
    void EndLineInThisRow() {
        const std::size_t end = (Column / Width() + 1) * Width();
        if (Lines[Line].size() > end) {
            const auto next = Lines.begin() + static_cast<std::ptrdiff_t>(Line) + 1;
            Lines.insert(next, Lines[Line].substr(end));
            Lines[Line].resize(end);
        }
    }

    // The driver of the terminal adds the carriage return.
    void Down() {
        EndLineInThisRow();
        ++Line;
        Column = 0;
        Lines.resize(std::max(Lines.size(), Line + 1));
    }

    std::size_t TakeSequence(std::string_view Bytes) {
        const std::size_t end = Bytes.find_first_of("ACJKmhl");
        if (end == std::string_view::npos || Bytes.substr(0, 2) != "\x1B[") {
            throw std::runtime_error("a sequence that a simple terminal does not know");
        }
        Obey(Bytes[end], std::string(Bytes.substr(2, end - 2)));
        return end + 1;
    }

    void Obey(char Command, const std::string& Parameter) {
        const bool bErases = Command == 'J' || Command == 'K';
        if (bErases && !Parameter.empty()) {
            throw std::runtime_error("a way of erasing that a simple terminal does not know");
        }
        if (Command == 'J' && Line == 0 && Column == 0) {
            throw std::runtime_error("erases the whole screen");
        }
        if (Command == 'A') {
            Up(std::stoul(Parameter));
        } else if (Command == 'C') {
            const std::size_t columnInRow = Column % Width();
            Column += std::min(std::stoul(Parameter), Width() - 1 - columnInRow);
        } else if (bErases) {
            EndLineInThisRow();
            Lines[Line].resize(std::min(Lines[Line].size(), Column));
            Lines.resize(Command == 'J' ? Line + 1 : Lines.size());
        } else if (Command != 'm') {
            if (Parameter != "?7") {
                throw std::runtime_error("a mode that a simple terminal does not know");
            }
            bWraps = Command == 'h';
        }
    }

    void Up(std::size_t Count) {
        std::size_t rowsAbove = Column / Width();
        for (std::size_t i = 0; i < Line; ++i) {
            rowsAbove += RowsOf(i);
        }
        std::size_t all = 0;
        for (std::size_t i = 0; i < Lines.size(); ++i) {
            all += RowsOf(i);
        }
        const auto shown = static_cast<std::size_t>(Rows);
        const std::size_t top = all > shown ? all - shown : 0;
        GoToRow(rowsAbove < top + Count ? top : rowsAbove - Count);
    }

    void GoToRow(std::size_t Row) {
        const std::size_t columnInRow = Column % Width();
        for (Line = 0; Row >= RowsOf(Line); ++Line) {
            Row -= RowsOf(Line);
        }
        Column = Row * Width() + columnInRow;
    }

    int Columns;
    int Rows;
    bool bWraps = true;
    // As they were written; a long one takes several rows.
    std::vector<std::string> Lines = {""};
    std::size_t Line = 0;
    std::size_t Column = 0;
};
