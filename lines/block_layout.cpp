#include "block_layout.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "screen_text.h"

namespace {

std::vector<ScreenLine> PlainLines(std::vector<std::string> Texts) {
    std::vector<ScreenLine> lines;
    for (std::string& text : Texts) {
        lines.push_back({std::move(text)});
    }
    return lines;
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

BlockPart InStyle(BlockPart Part, TextStyle Style) {
    for (ScreenLine& line : Part.Lines) {
        line.Styles = {{0, line.Text.size(), Style}};
    }
    return Part;
}

std::size_t RowsOf(const std::vector<BlockPart>& Parts) {
    std::size_t rows = 0;
    for (const BlockPart& part : Parts) {
        rows += part.Lines.size();
    }
    return rows;
}

std::vector<ScreenLine> FitToRows(std::vector<BlockPart> Parts, int Rows) {
    const auto lessImportant = [](const BlockPart& First, const BlockPart& Second) {
        return First.Importance < Second.Importance;
    };
    const auto limit = static_cast<std::size_t>(std::max(1, Rows));
    while (Parts.size() > 1 && RowsOf(Parts) > limit) {
        Parts.erase(std::min_element(Parts.begin(), Parts.end(), lessImportant));
    }
    std::vector<ScreenLine> lines;
    for (BlockPart& part : Parts) {
        std::move(part.Lines.begin(), part.Lines.end(), std::back_inserter(lines));
    }
    lines.resize(std::min(lines.size(), limit));
    return lines;
}
