#include "live_block.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view kEraseToEndOfLine = "\x1B[K";
constexpr std::string_view kEraseBelow = "\x1B[J";
constexpr int kLongestBar = 50;

std::string Up(int Rows) {
    return Rows > 0 ? "\x1B[" + std::to_string(Rows) + "A" : "";
}

// The rows that text takes in a window of so many columns that has rewrapped it.
int RowsOf(const std::string& Text, int Columns) {
    return static_cast<int>(WrapAtColumns(Text, Columns).size());
}

std::string Rendered(const ScreenLine& Line) {
    return Line.bWarning ? EmphasizeWarning(Line.Text) : Line.Text;
}

std::vector<ScreenLine> PlainLines(std::vector<std::string> Texts) {
    std::vector<ScreenLine> lines;
    for (std::string& text : Texts) {
        lines.push_back({std::move(text)});
    }
    return lines;
}

int FilePercent(const TarvaneTransferUiSnapshot& Snapshot, const ProgressClaims& Claims) {
    // What has no bytes of its own gets the fraction of the whole from the engine.
    const auto percent = static_cast<int>(Snapshot.FileProgress01 * 100.0);
    return Snapshot.CurrentFileTotalBytes > 0
               ? std::clamp(percent, 0, Snapshot.bSucceeded ? 100 : 99)
               : std::clamp(percent, 0, Claims.Percent);
}

} // namespace

int LayoutWidth(TerminalSize Size) {
    return std::max(1, Size.Columns - 1);
}

BlockPart WordsPart(int Importance, const std::string& Text, int Width) {
    if (Text.empty()) {
        return {Importance, {}};
    }
    return {Importance, PlainLines(WrapAtWords(CleanForScreen(Text), Width))};
}

BlockPart PathPart(int Importance, const std::string& Text, int Width) {
    return {Importance, PlainLines(WrapAtColumns(CleanForScreen(Text), Width))};
}

std::vector<ScreenLine> FitToRows(std::vector<BlockPart> Parts, int Rows) {
    const auto rowsOfAll = [&Parts] {
        std::size_t rows = 0;
        for (const BlockPart& part : Parts) {
            rows += part.Lines.size();
        }
        return rows;
    };
    const auto lessImportant = [](const BlockPart& First, const BlockPart& Second) {
        return First.Importance < Second.Importance;
    };
    const auto limit = static_cast<std::size_t>(std::max(1, Rows));
    while (Parts.size() > 1 && rowsOfAll() > limit) {
        Parts.erase(std::min_element(Parts.begin(), Parts.end(), lessImportant));
    }
    std::vector<ScreenLine> lines;
    for (BlockPart& part : Parts) {
        std::move(part.Lines.begin(), part.Lines.end(), std::back_inserter(lines));
    }
    lines.resize(std::min(lines.size(), limit));
    return lines;
}

std::string BarText(int Percent, int Width) {
    const std::string percentage = std::to_string(Percent) + "%";
    constexpr int kRoomForBrackets = 3;
    constexpr int kRoomForPercentage = 4;
    const int cells = std::min(kLongestBar, Width - kRoomForBrackets - kRoomForPercentage);
    if (cells < 1) {
        return percentage;
    }
    const int filled = cells * Percent / 100;
    return "[" + std::string(static_cast<std::size_t>(filled), '#') +
           std::string(static_cast<std::size_t>(cells - filled), '.') + "] " + percentage;
}

std::vector<ScreenLine> LiveBlockLines(const TarvaneTransferUiSnapshot& Snapshot,
                                       const ProgressClaims& Claims, TerminalSize Size) {
    const int width = LayoutWidth(Size);
    const std::string hint = Snapshot.bFinished ? std::string() : Snapshot.HintText;
    // The file bar goes first, then the hint; the bar of the whole stays even in one row.
    std::vector<BlockPart> parts = {
        WordsPart(4, Snapshot.StageText, width),
        PathPart(3, Snapshot.PathText, width),
        WordsPart(5, Snapshot.OverallText, width),
        {9, {{BarText(Claims.Percent, width)}}},
        {1, {{BarText(FilePercent(Snapshot, Claims), width)}}},
        WordsPart(8, Snapshot.IoText, width),
        WordsPart(7, StalledText(Claims), width),
        WordsPart(6, MoreThanCountedText(Claims), width),
        WordsPart(2, hint, width),
    };
    return FitToRows(std::move(parts), Size.Rows);
}

std::string BlockDrawer::Draw(const std::vector<ScreenLine>& Lines, TerminalSize Size,
                              const std::optional<BlockCursor>& Cursor) {
    if (Lines.empty()) {
        return Erase(Size);
    }
    const BlockCursor cursor = Cursor.value_or(BlockCursor{Lines.size() - 1, {}});
    const bool bSameShape = Size == ShownSize && Lines.size() == Shown.size();
    if (bSameShape && Lines == Shown && cursor == ShownCursor) {
        return {};
    }
    std::string bytes = bSameShape ? DrawChanges(Lines) : DrawAll(Lines, Size);
    bytes += Up(static_cast<int>(Lines.size() - 1 - cursor.Line)) + "\r" + cursor.Prefix;
    Shown = Lines;
    ShownSize = Size;
    ShownCursor = cursor;
    return bytes;
}

std::string BlockDrawer::Erase(TerminalSize Size) {
    if (Shown.empty()) {
        return {};
    }
    std::string bytes = GoToTop(Size);
    bytes += kEraseBelow;
    Forget();
    return bytes;
}

std::string BlockDrawer::Abandon() {
    if (Shown.empty()) {
        return {};
    }
    const std::size_t below = Shown.size() - ShownCursor.Line;
    Forget();
    std::string bytes;
    for (std::size_t i = 0; i < below; ++i) {
        bytes += "\r\n";
    }
    return bytes;
}

void BlockDrawer::Forget() {
    Shown.clear();
    ShownCursor = {};
}

// From where the cursor stands to the start of the first line, in a window that may have been made
// narrower since.
std::string BlockDrawer::GoToTop(TerminalSize Size) const {
    const int columns = std::max(1, Size.Columns);
    int rows = RowsOf(ShownCursor.Prefix, columns) - 1;
    for (std::size_t i = 0; i < ShownCursor.Line; ++i) {
        rows += RowsOf(Shown[i].Text, columns);
    }
    return Up(rows) + "\r";
}

std::string BlockDrawer::DrawAll(const std::vector<ScreenLine>& Lines, TerminalSize Size) const {
    std::string bytes = GoToTop(Size);
    bytes += kEraseBelow;
    for (std::size_t i = 0; i < Lines.size(); ++i) {
        bytes += (i == 0 ? "" : "\r\n") + Rendered(Lines[i]);
    }
    return bytes;
}

// Ends on the last line, like DrawAll.
std::string BlockDrawer::DrawChanges(const std::vector<ScreenLine>& Lines) const {
    std::string bytes;
    std::size_t at = ShownCursor.Line;
    const auto goTo = [&bytes, &at](std::size_t Line) {
        bytes += Up(static_cast<int>(at) - static_cast<int>(Line));
        for (; at < Line; ++at) {
            bytes += "\n";
        }
        at = Line;
    };
    for (std::size_t i = 0; i < Lines.size(); ++i) {
        if (Lines[i] != Shown[i]) {
            goTo(i);
            bytes += "\r" + Rendered(Lines[i]);
            const bool bShorter = DisplayWidth(Lines[i].Text) < DisplayWidth(Shown[i].Text);
            bytes += bShorter ? kEraseToEndOfLine : "";
        }
    }
    goTo(Lines.size() - 1);
    return bytes;
}
