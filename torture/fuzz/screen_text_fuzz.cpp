// A name on its way to the screen, and the width of what it is to fit into.

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz_target.h"
#include "screen_text.h"

namespace {

std::string WithoutBlanks(std::string Text) {
    std::erase(Text, ' ');
    return Text;
}

std::string Joined(const std::vector<std::string>& Lines) {
    std::string all;
    for (const std::string& line : Lines) {
        all += line;
    }
    return all;
}

int WidestCharacter(std::string_view Clean) {
    int widest = 0;
    while (!Clean.empty()) {
        const std::size_t length = Utf8SequenceLength(Clean);
        widest = std::max(widest, DisplayWidth(Clean.substr(0, length)));
        Clean.remove_prefix(length);
    }
    return widest;
}

void ExpectLines(const std::vector<std::string>& Lines, int Width) {
    Expect(!Lines.empty(), "there is a line");
    for (const std::string& line : Lines) {
        ExpectClean(line);
        Expect(DisplayWidth(line) <= Width, "a line fits");
    }
}

} // namespace

void RunInput(std::string_view Input) {
    InputReader reader(Input);
    const int width = reader.Number(120);
    const std::string clean = CleanForScreen(reader.Rest());
    ExpectClean(clean);
    Expect(CleanForScreen(clean) == clean, "clean text stays as it is");
    Expect(DisplayWidth(clean) >= 0, "text has a width");
    // One character stands in a line even where it has no room.
    const int room = std::max(width, WidestCharacter(clean));
    const std::vector<std::string> atColumns = WrapAtColumns(clean, width);
    ExpectLines(atColumns, room);
    Expect(Joined(atColumns) == clean, "nothing goes where a path is wrapped");
    const std::vector<std::string> atWords = WrapAtWords(clean, width);
    ExpectLines(atWords, room);
    Expect(WithoutBlanks(Joined(atWords)) == WithoutBlanks(clean), "nothing goes but blanks");
    Expect(WithoutBlanks(Joined(WrapWholeWords(clean, width))) == WithoutBlanks(clean),
           "nothing goes but blanks where words stay whole");
    const std::string shortened = ElideMiddle(clean, width);
    ExpectLines({shortened}, room);
    Expect(DisplayWidth(clean) > width || shortened == clean, "what fits is not shortened");
}
