#include "pane_footer.h"

#include <cctype>

#include "entry_text.h"
#include "place_text.h"
#include "screen_text.h"
#include "size_text.h"

namespace {

// What somebody sees of a sentence that could be as long as a path.
constexpr int kLinesOfSentence = 3;

std::string ReadingLine(const std::filesystem::path& Place, int Columns) {
    const std::string before = "Reading ";
    const std::string after = " ...  Esc: stop";
    return before + ElideMiddle(PlaceText(Place), Columns - DisplayWidth(before + after)) + after;
}

std::vector<FooterLine> MessageLines(const std::string& Message, int Columns) {
    std::string sentence = CleanForScreen(Message) + ".";
    sentence[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(sentence[0])));
    std::vector<FooterLine> lines;
    for (std::string& line :
         WrapAtWords(ElideMiddle(sentence, kLinesOfSentence * Columns), Columns)) {
        lines.push_back({std::move(line), CellRole::Warning});
    }
    return lines;
}

std::string CurrentLine(const BrowseList& List, int Columns) {
    if (const ListedEntry* entry = List.CurrentEntry()) {
        return EntryDetails(*entry, Columns);
    }
    return List.HasParentRow() ? "/.." : "";
}

} // namespace

std::vector<FooterLine> PaneFooter(const BrowseList& List, const PaneState& State, int Columns) {
    if (State.Search) {
        const std::string search = "Find: " + CleanForScreen(*State.Search);
        return {{ElideMiddle(search, Columns), CellRole::Input}};
    }
    if (State.Reading) {
        return {{ReadingLine(*State.Reading, Columns), CellRole::Status}};
    }
    if (!State.Message.empty()) {
        return MessageLines(State.Message, Columns);
    }
    return {{CurrentLine(List, Columns)}};
}

std::string MarkedText(const BrowseList::MarkTotals& Marked, int Columns) {
    if (Marked.Entries == 0) {
        return "";
    }
    const std::string directories = std::to_string(Marked.Directories) +
                                    (Marked.Directories == 1 ? " directory" : " directories");
    if (Marked.Directories == Marked.Entries) {
        return "Marked " + directories;
    }
    const std::string files =
        "Marked " + std::to_string(Marked.Entries) + ": " + SizeText(Marked.Bytes);
    const std::string all = files + " and " + directories;
    return Marked.Directories > 0 && DisplayWidth(all) <= Columns ? all : files;
}
