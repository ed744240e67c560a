#include "conflict_lines.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "conflict_texts.h"
#include "screen_text.h"
#include "surface.h"

namespace {

// Inside of a dialog that fills a window of 80 columns.
constexpr int kUsualColumns = 76;
constexpr int kMostPathRows = 3;
constexpr std::string_view kIndent = "  ";

// What is left out first where the window is too small for everything.
enum class Importance {
    Gap,
    ButtonsWithoutKeys,
    OldFileNote,
    Keys,
    Job,
    Label,
    Facts,
    Needed,
};

struct RankedLine {
    Importance Rank = Importance::Gap;
    DialogLine Line = {};
};

using RankedLines = std::vector<RankedLine>;

void AppendWords(RankedLines& OutLines, Importance Rank, std::string_view CleanText, int Columns,
                 CellRole Role) {
    if (CleanText.empty()) {
        return;
    }
    for (std::string& line : WrapAtWords(CleanText, Columns)) {
        OutLines.push_back({Rank, {std::move(line), Role}});
    }
}

// Two lines at most: where a link leads may be long, and it stands at the end.
std::vector<std::string> FactLines(std::string_view CleanFacts, int Columns) {
    std::vector<std::string> lines = WrapAtWords(CleanFacts, Columns);
    if (lines.size() <= 2) {
        return lines;
    }
    std::string_view rest = CleanFacts.substr(lines[0].size());
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    return {lines[0], ElideMiddle(rest, Columns)};
}

// One of the two entries that a question is about.
struct Side {
    const char* Label;
    const std::string& Path;
    std::string Facts;
};

void AppendSide(RankedLines& OutLines, const Side& Shown, int Columns, int PathRows) {
    const int room = Columns - DisplayWidth(kIndent);
    const std::string path = ElideMiddle(CleanForScreen(Shown.Path), room * PathRows);
    OutLines.push_back({Importance::Label, {Shown.Label}});
    for (const std::string& line : WrapAtColumns(path, room)) {
        OutLines.push_back({Importance::Needed, {std::string(kIndent) + line}});
    }
    for (const std::string& line : FactLines(CleanForScreen(Shown.Facts), room)) {
        OutLines.push_back({Importance::Facts, {std::string(kIndent) + line}});
    }
}

void AppendLoss(RankedLines& OutLines, const TakenName& Name, int Columns) {
    const ConflictLoss loss = LossOf(Name);
    const Importance rank = loss.bWarning ? Importance::Needed : Importance::OldFileNote;
    const CellRole role = loss.bWarning ? CellRole::Warning : CellRole::Dialog;
    AppendWords(OutLines, rank, loss.Sentence, Columns, role);
}

// The new name, or what is to be confirmed, and why the latest answer was not taken. There is a
// line for both even when there is nothing to say, so that the buttons stand still.
void AppendState(RankedLines& OutLines, const ConflictQuestion& Question, int Columns) {
    if (Question.NewName()) {
        OutLines.push_back({Importance::Needed, {.What = DialogLine::Kind::NewName}});
    } else if (Question.IsConfirming()) {
        const std::string what = "Remove the " + WordFor(Question.Asked().Entry) + "?";
        OutLines.push_back({Importance::Needed, {what, CellRole::Warning}});
    } else {
        OutLines.push_back({Importance::Gap});
    }
    if (Question.WhyNotTaken().empty()) {
        OutLines.push_back({Importance::Gap});
    }
    AppendWords(OutLines, Importance::Needed, CleanForScreen(Question.WhyNotTaken()), Columns,
                CellRole::Warning);
}

void AppendButtons(RankedLines& OutLines, const ConflictQuestion& Question, int Rows) {
    const Importance rank =
        Question.NewName() ? Importance::ButtonsWithoutKeys : Importance::Needed;
    OutLines.insert(OutLines.end(), static_cast<std::size_t>(Rows),
                    {rank, {.What = DialogLine::Kind::Buttons}});
}

// The second text at the right end; the first gives way.
std::string BesideEachOther(const std::string& Left, const std::string& Right, int Columns) {
    const std::string right =
        Right.empty() ? "" : ElideMiddle("  " + CleanForScreen(Right), Columns);
    return FitToColumns(CleanForScreen(Left), Columns - DisplayWidth(right)) + right;
}

const char* KeysOf(const ConflictQuestion& Question) {
    if (Question.NewName()) {
        return "Enter: use this name   Esc: back to the buttons";
    }
    if (Question.IsConfirming()) {
        return "y: remove it and go on   Esc: back to the buttons";
    }
    return "Tab, arrows: choose  Enter: answer  Esc: cancel transfer";
}

RankedLines AllLines(const ConflictQuestion& Question, const BelowConflict& Below, int Columns,
                     int PathRows) {
    const TakenName& name = Question.Asked();
    const TarvaneTransferConflict& conflict = name.Conflict;
    RankedLines lines;
    AppendSide(lines, {"Source", conflict.SourcePath, SourceFacts(conflict)}, Columns, PathRows);
    AppendSide(lines, {"Destination", conflict.DestinationPath, DestinationFacts(name)}, Columns,
               PathRows);
    lines.push_back({Importance::Gap});
    AppendLoss(lines, name, Columns);
    AppendState(lines, Question, Columns);
    lines.push_back({Importance::Gap});
    AppendButtons(lines, Question, Below.ButtonRows);
    lines.push_back({Importance::Gap});
    lines.push_back({Importance::Job, {BesideEachOther(Below.JobStage, Below.JobDone, Columns)}});
    lines.push_back({Importance::Keys, {FitToColumns(KeysOf(Question), Columns)}});
    return lines;
}

// Lines of one rank go together.
void LeaveOutWhatDoesNotFit(RankedLines& InOutLines, std::size_t Rows) {
    while (InOutLines.size() > Rows) {
        const Importance least = std::ranges::min_element(InOutLines, {}, &RankedLine::Rank)->Rank;
        if (least == Importance::Needed) {
            InOutLines.resize(Rows);
            return;
        }
        std::erase_if(InOutLines, [least](const RankedLine& Line) { return Line.Rank == least; });
    }
}

} // namespace

std::string ConflictDialogTitle(const TakenName& Name) {
    std::string title = WordFor(Name.Entry) + " already exists";
    title[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(title[0])));
    return title;
}

int WantedColumns(const TakenName& Name) {
    const int longer = std::max(DisplayWidth(CleanForScreen(Name.Conflict.SourcePath)),
                                DisplayWidth(CleanForScreen(Name.Conflict.DestinationPath)));
    return std::max(kUsualColumns, DisplayWidth(kIndent) + longer);
}

DialogLines LinesOfConflict(const ConflictQuestion& Question, const BelowConflict& Below,
                            TerminalSize Size) {
    const auto rows = static_cast<std::size_t>(std::max(0, Size.Rows));
    RankedLines ranked;
    for (int pathRows = kMostPathRows; pathRows > 0; --pathRows) {
        ranked = AllLines(Question, Below, Size.Columns, pathRows);
        if (ranked.size() <= rows) {
            break;
        }
    }
    LeaveOutWhatDoesNotFit(ranked, rows);
    DialogLines lines;
    for (RankedLine& line : ranked) {
        lines.push_back(std::move(line.Line));
    }
    return lines;
}
