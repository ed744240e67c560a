#include "answer_list.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "screen_text.h"

namespace {

constexpr int kGap = 2;
constexpr int kNarrowestLabel = 20;

// Each key of "s or Enter" stands out, the word between them does not.
std::vector<StyledRange> KeyStyles(const std::string& Keys) {
    const std::string_view between = " or ";
    const std::size_t first = Keys.find(between);
    if (first == std::string::npos) {
        return {{0, Keys.size(), TextStyle::Key}};
    }
    return {{0, first, TextStyle::Key}, {first + between.size(), Keys.size(), TextStyle::Key}};
}

// An answer that is too long for a line goes on a little to the right.
std::vector<ScreenLine> LinesOf(const ListedAnswer& Answer, int Width) {
    const std::string entry = Answer.Keys + " " + Answer.Label;
    const int indent = DisplayWidth(entry) <= Width ? 0 : std::min(kGap, Width / 2);
    std::vector<ScreenLine> lines;
    for (const std::string& piece : WrapAtWords(entry, Width - indent)) {
        const int blanks = lines.empty() ? 0 : indent;
        lines.push_back({std::string(static_cast<std::size_t>(blanks), ' ') + piece});
    }
    const std::size_t end = lines.front().Text.size();
    for (const StyledRange& range : KeyStyles(Answer.Keys)) {
        if (range.Begin < end) {
            lines.front().Styles.push_back({range.Begin, std::min(range.End, end), range.Style});
        }
    }
    return lines;
}

bool TakesMore(const ScreenLine& Line, const ScreenLine& More, int Width) {
    return DisplayWidth(Line.Text) + kGap + DisplayWidth(More.Text) <= Width;
}

void Append(ScreenLine& InOutLine, const ScreenLine& More) {
    InOutLine.Text.append(kGap, ' ');
    const std::size_t begin = InOutLine.Text.size();
    InOutLine.Text += More.Text;
    for (const StyledRange& range : More.Styles) {
        InOutLine.Styles.push_back({begin + range.Begin, begin + range.End, range.Style});
    }
}

} // namespace

BlockPart AnswerTable(int Importance, const std::vector<ListedAnswer>& Answers, int Width) {
    int indent = 0;
    for (const ListedAnswer& answer : Answers) {
        indent = std::max(indent, DisplayWidth(answer.Keys) + kGap);
    }
    if (Width < indent + kNarrowestLabel) {
        return FlowingAnswers(Importance, Answers, Width);
    }
    BlockPart table{Importance, {}};
    for (const ListedAnswer& answer : Answers) {
        ScreenLine line{answer.Keys, KeyStyles(answer.Keys)};
        for (const std::string& piece : WrapAtWords(answer.Label, Width - indent)) {
            line.Text.resize(static_cast<std::size_t>(indent), ' ');
            line.Text += piece;
            table.Lines.push_back(std::exchange(line, {}));
        }
    }
    return table;
}

BlockPart FlowingAnswers(int Importance, const std::vector<ListedAnswer>& Answers, int Width) {
    BlockPart flow{Importance, {}};
    for (const ListedAnswer& answer : Answers) {
        const std::vector<ScreenLine> lines = LinesOf(answer, Width);
        const bool bBeside = lines.size() == 1 && !flow.Lines.empty() &&
                             TakesMore(flow.Lines.back(), lines.front(), Width);
        if (bBeside) {
            Append(flow.Lines.back(), lines.front());
        } else {
            flow.Lines.insert(flow.Lines.end(), lines.begin(), lines.end());
        }
    }
    return flow;
}
