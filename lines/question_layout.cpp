#include "question_layout.h"

#include <algorithm>
#include <utility>

#include "answer_list.h"
#include "conflict_choices.h"
#include "conflict_texts.h"
#include "screen_text.h"

namespace {

// How much the parts of the question matter where the window is too small. What stands at a path
// says nothing without the path.
enum PartImportance {
    kOldFileNotePart,
    kDestinationFactsPart,
    kSourceFactsPart,
    kSourcePathPart,
    kTitlePart,
    kChoicesPart,
    kWarningPart,
    kReasonPart,
    kLastLinePart,
};

// Below it the line with the new name has no label.
constexpr int kNarrowWidth = 24;
constexpr const char* kBetween = "  ";
constexpr const char* kCursorLine = "? ";
// The whole list is shown instead of what stands at the two paths.
constexpr const char* kCursorLineForDetails = "[? details] ";

// One of the two entries that a question is about.
struct Side {
    PartImportance PathImportance;
    PartImportance FactsImportance;
    std::string Label;
    std::string Path;
    std::string Facts;
};

std::vector<Side> SidesOf(const TakenName& Name) {
    const TarvaneTransferConflict& conflict = Name.Conflict;
    const std::string title = ConflictTitle(Name);
    std::string sourceLabel = "Source: ";
    sourceLabel.resize(title.size(), ' ');
    return {{kTitlePart, kDestinationFactsPart, title, CleanForScreen(conflict.DestinationPath),
             CleanForScreen(DestinationFacts(Name))},
            {kSourcePathPart, kSourceFactsPart, sourceLabel, CleanForScreen(conflict.SourcePath),
             CleanForScreen(SourceFacts(conflict))}};
}

// Each side in one line, the facts below each other; nothing where that does not fit.
std::vector<BlockPart> SidesInLines(const std::vector<Side>& Sides, int Width) {
    int pathWidth = 0;
    for (const Side& side : Sides) {
        pathWidth = std::max(pathWidth, DisplayWidth(side.Path));
    }
    std::vector<BlockPart> parts;
    for (const Side& side : Sides) {
        const auto blanks = static_cast<std::size_t>(pathWidth - DisplayWidth(side.Path));
        std::string line =
            side.Label + side.Path + std::string(blanks, ' ') + kBetween + side.Facts;
        if (DisplayWidth(line) > Width) {
            return {};
        }
        parts.push_back({side.PathImportance, {{std::move(line)}}});
    }
    return parts;
}

// The facts of each side below its path, which takes at most PathRows.
std::vector<BlockPart> SidesInParagraphs(const std::vector<Side>& Sides, int Width, int PathRows) {
    std::vector<BlockPart> parts;
    for (const Side& side : Sides) {
        const int labelWidth = DisplayWidth(side.Label);
        const std::string path = ElideMiddle(side.Path, Width * PathRows - labelWidth);
        parts.push_back(PathPart(side.PathImportance, side.Label + path, Width));
        const int indent = std::min(labelWidth, Width / 3);
        BlockPart facts = WordsPart(side.FactsImportance, side.Facts, Width - indent);
        for (ScreenLine& line : facts.Lines) {
            line.Text.insert(0, static_cast<std::size_t>(indent), ' ');
        }
        parts.push_back(std::move(facts));
    }
    return parts;
}

BlockPart LossPart(const TakenName& Name, int Width) {
    const ConflictLoss loss = LossOf(Name);
    return loss.bWarning
               ? InStyle(WordsPart(kWarningPart, loss.Sentence, Width), TextStyle::Warning)
               : WordsPart(kOldFileNotePart, loss.Sentence, Width);
}

std::vector<BlockPart> PartsAbove(const ConflictQuestion& Question, int Width, int PathRows) {
    const std::vector<Side> sides = SidesOf(Question.Asked());
    std::vector<BlockPart> parts = SidesInLines(sides, Width);
    if (parts.empty()) {
        parts = SidesInParagraphs(sides, Width, PathRows);
    }
    parts.push_back(LossPart(Question.Asked(), Width));
    parts.push_back(WordsPart(kReasonPart, Question.WhyNotTaken(), Width));
    return parts;
}

bool HasRoomForLastLine(const std::vector<BlockPart>& Parts, TerminalSize Size) {
    return RowsOf(Parts) < static_cast<std::size_t>(Size.Rows);
}

// All that is asked, with the paths as short as it takes to leave room for Choices and the last
// line; with one row for each where even that is not enough.
std::vector<BlockPart> PartsWith(const ConflictQuestion& Question, const BlockPart& Choices,
                                 TerminalSize Size) {
    const auto partsWith = [&](int PathRows) {
        std::vector<BlockPart> parts = PartsAbove(Question, LayoutWidth(Size), PathRows);
        parts.push_back(Choices);
        return parts;
    };
    std::vector<BlockPart> whole = partsWith(Size.Rows);
    if (HasRoomForLastLine(whole, Size)) {
        return whole;
    }
    std::vector<BlockPart> shortest = partsWith(1);
    const int spareRows = Size.Rows - 1 - static_cast<int>(RowsOf(shortest));
    std::vector<BlockPart> shortened = partsWith(1 + std::max(0, spareRows / 2));
    // A wide character at the end of a row can take one more.
    return HasRoomForLastLine(shortened, Size) ? shortened : shortest;
}

QuestionScreen WithLastLine(std::vector<BlockPart> Parts, const std::string& LastLine,
                            TerminalSize Size) {
    const std::string shown = WrapAtColumns(LastLine, LayoutWidth(Size)).front();
    Parts.push_back({kLastLinePart, {{shown}}});
    QuestionScreen screen;
    screen.Lines = FitToRows(std::move(Parts), Size.Rows);
    screen.Cursor = {screen.Lines.size() - 1, shown};
    return screen;
}

QuestionScreen LayOutWith(const ConflictQuestion& Question,
                          const std::vector<ListedAnswer>& Answers, const std::string& LastLine,
                          TerminalSize Size) {
    const BlockPart choices = FlowingAnswers(kChoicesPart, Answers, LayoutWidth(Size));
    return WithLastLine(PartsWith(Question, choices, Size), LastLine, Size);
}

std::vector<ListedAnswer> AnswersTo(const TakenName& Name) {
    std::vector<ListedAnswer> answers;
    for (const ConflictChoice& choice : ChoicesFor(Name)) {
        const bool bDefault = choice.Letter == kDefaultChoiceLetter;
        answers.push_back(
            {std::string(1, choice.Letter) + (bDefault ? " or Enter" : ""), choice.Label});
    }
    answers.push_back({"Esc", "cancel the transfer"});
    return answers;
}

// The keys alone, where there is no room for the answers: "[mMsS Esc, ? lists] ".
std::string ShortChoices(const TakenName& Name) {
    std::string letters;
    for (const ConflictChoice& choice : ChoicesFor(Name)) {
        letters += choice.Letter;
    }
    return "[" + letters + " Esc, ? lists] ";
}

// Whether Choices fit below what nobody may answer without.
bool FitsBelowTitle(const std::vector<BlockPart>& Parts, TerminalSize Size) {
    std::size_t rows = 1;
    for (const BlockPart& part : Parts) {
        rows += part.Importance >= kTitlePart ? part.Lines.size() : 0;
    }
    return rows <= static_cast<std::size_t>(Size.Rows);
}

// The window is too small for everything: the answers, or what they are about, with the other
// behind `?`.
QuestionScreen LayOutHalf(const ConflictQuestion& Question, const BlockPart& Answers,
                          TerminalSize Size) {
    std::vector<BlockPart> parts = PartsWith(Question, Answers, Size);
    const bool bListFitsAlone = HasRoomForLastLine({Answers}, Size);
    const bool bListFits = FitsBelowTitle(parts, Size);
    if (bListFits && !Question.IsListWanted()) {
        return WithLastLine(std::move(parts), kCursorLineForDetails, Size);
    }
    if (!bListFits && bListFitsAlone && Question.IsListWanted()) {
        return WithLastLine(std::move(parts), kCursorLine, Size);
    }
    const BlockPart none{kChoicesPart, {}};
    return WithLastLine(PartsWith(Question, none, Size), ShortChoices(Question.Asked()), Size);
}

QuestionScreen LayOutChoices(const ConflictQuestion& Question, TerminalSize Size) {
    const std::vector<ListedAnswer> answers = AnswersTo(Question.Asked());
    const BlockPart table = AnswerTable(kChoicesPart, answers, LayoutWidth(Size));
    const BlockPart flow = FlowingAnswers(kChoicesPart, answers, LayoutWidth(Size));
    for (const BlockPart& list : {table, flow}) {
        std::vector<BlockPart> parts = PartsWith(Question, list, Size);
        if (HasRoomForLastLine(parts, Size)) {
            return WithLastLine(std::move(parts), kCursorLine, Size);
        }
    }
    return LayOutHalf(Question, flow, Size);
}

QuestionScreen LayOutRename(const ConflictQuestion& Question, TerminalSize Size) {
    const int width = LayoutWidth(Size);
    const std::string label = width < kNarrowWidth ? "" : "Rename to: ";
    const TextField::View view = Question.NewName()->Visible(width - DisplayWidth(label));
    QuestionScreen screen =
        LayOutWith(Question, {{"Enter", "use this name"}, {"Esc", "back to the answers"}},
                   label + view.Shown, Size);
    screen.Cursor.Prefix = label + view.BeforeCursor;
    return screen;
}

} // namespace

QuestionScreen LayOutQuestion(const ConflictQuestion& Question, TerminalSize Size) {
    if (Question.NewName()) {
        return LayOutRename(Question, Size);
    }
    if (Question.IsConfirming()) {
        return LayOutWith(Question, {{"y", "remove it and go on"}, {"any other key:", "back"}},
                          "Remove the " + WordFor(Question.Asked().Entry) + "? ", Size);
    }
    return LayOutChoices(Question, Size);
}
