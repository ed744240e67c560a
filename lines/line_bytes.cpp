#include "line_bytes.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "screen_text.h"

namespace {

constexpr std::string_view kEraseToEndOfLine = "\x1B[K";
constexpr std::string_view kFirstBlock = "\u2588";
constexpr std::string_view kLastBlock = "\u258F";

// A character with the marks that belong to it.
struct Cell {
    std::string_view Bytes;
    TextStyle Style = TextStyle::Plain;

    bool operator==(const Cell&) const = default;
};

TextStyle StyleAt(const ScreenLine& Line, std::size_t Byte) {
    for (const StyledRange& range : Line.Styles) {
        if (Byte >= range.Begin && Byte < range.End) {
            return range.Style;
        }
    }
    return TextStyle::Plain;
}

std::vector<Cell> CellsOf(const ScreenLine& Line) {
    const std::string_view text = Line.Text;
    std::vector<Cell> cells;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = std::max<std::size_t>(Utf8SequenceLength(text.substr(at)), 1);
        if (cells.empty() || DisplayWidth(text.substr(at, length)) > 0) {
            begin = at;
            cells.push_back({{}, StyleAt(Line, begin)});
        }
        at += length;
        cells.back().Bytes = text.substr(begin, at - begin);
    }
    return cells;
}

// Terminals disagree about the columns of some characters, so that what stands behind one of them
// can be reached only by writing all that stands before it.
bool HasCertainWidth(const Cell& Wanted) {
    const std::string_view bytes = Wanted.Bytes;
    return bytes.size() == 1 ||
           (bytes.size() == kFirstBlock.size() && bytes >= kFirstBlock && bytes <= kLastBlock);
}

// Writes one cell behind the other.
class CellWriter {
public:
    void Write(const Cell& Wanted) {
        Switch(Wanted.Style);
        Bytes += Wanted.Bytes;
    }

    // Goes to the right over Cells, which stand there already.
    void Pass(const std::vector<Cell>& Cells, std::size_t Begin, std::size_t End) {
        constexpr std::size_t kShort = 4;
        const bool bShort = End - Begin <= kShort;
        for (std::size_t i = Begin; bShort && i < End; ++i) {
            Write(Cells[i]);
        }
        Bytes += bShort ? "" : "\x1B[" + std::to_string(End - Begin) + "C";
    }

    void EraseRest() {
        Switch(TextStyle::Plain);
        Bytes += kEraseToEndOfLine;
    }

    std::string Take() {
        Switch(TextStyle::Plain);
        return std::move(Bytes);
    }

private:
    void Switch(TextStyle Wanted) {
        if (Wanted != Style) {
            Bytes += StyleOff(Style) + StyleOn(Wanted);
            Style = Wanted;
        }
    }

    std::string Bytes;
    TextStyle Style = TextStyle::Plain;
};

} // namespace

std::string LineBytes(const ScreenLine& Line) {
    CellWriter writer;
    for (const Cell& cell : CellsOf(Line)) {
        writer.Write(cell);
    }
    return writer.Take();
}

std::string ChangeBytes(const ScreenLine& Shown, const ScreenLine& Wanted) {
    const std::vector<Cell> shown = CellsOf(Shown);
    const std::vector<Cell> wanted = CellsOf(Wanted);
    CellWriter writer;
    std::size_t at = 0;
    bool bSameColumn = true;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        bSameColumn = bSameColumn && i < shown.size() && HasCertainWidth(shown[i]) &&
                      HasCertainWidth(wanted[i]);
        if (!bSameColumn || shown[i] != wanted[i]) {
            writer.Pass(wanted, at, i);
            writer.Write(wanted[i]);
            at = i + 1;
        }
    }
    if (DisplayWidth(Wanted.Text) < DisplayWidth(Shown.Text)) {
        writer.Pass(wanted, at, wanted.size());
        writer.EraseRest();
    }
    return writer.Take();
}
