#include "question_layout.h"

#include <utility>

#include "conflict_choices.h"
#include "conflict_texts.h"
#include "screen_text.h"

namespace {

// How much the parts of the question matter where the window is too small.
enum PartImportance {
    kOldFileNotePart,
    kSourcePathPart,
    kDestinationFactsPart,
    kSourceFactsPart,
    kTitlePart,
    kChoicesPart,
    kWarningPart,
    kReasonPart,
    kLastLinePart,
};

// Below it the line with the new name has no label.
constexpr int kNarrowWidth = 24;
constexpr const char* kBetween = "  ";

BlockPart LossPart(const TakenName& Name, int Width) {
    const ConflictLoss loss = LossOf(Name);
    return loss.bWarning
               ? InStyle(WordsPart(kWarningPart, loss.Sentence, Width), TextStyle::Warning)
               : WordsPart(kOldFileNotePart, loss.Sentence, Width);
}

std::vector<BlockPart> ConflictParts(const TakenName& Name, int Width) {
    const std::string title = ConflictTitle(Name);
    std::string sourceLabel = "Source: ";
    sourceLabel.resize(title.size(), ' ');
    return {
        PathPart(kTitlePart, title + Name.Conflict.DestinationPath, Width),
        PathPart(kSourcePathPart, sourceLabel + Name.Conflict.SourcePath, Width),
        WordsPart(kDestinationFactsPart, "  destination  " + DestinationFacts(Name), Width),
        WordsPart(kSourceFactsPart, "  source       " + SourceFacts(Name.Conflict), Width),
        LossPart(Name, Width),
    };
}

// The answers with their keys, as many in a line as fit; none is broken if a line has room for it.
BlockPart ChoicesPart(const TakenName& Name, int Width) {
    std::vector<std::string> entries;
    for (const ConflictChoice& choice : ChoicesFor(Name)) {
        const std::string key =
            choice.Letter == kDefaultChoiceLetter ? "s or Enter" : std::string(1, choice.Letter);
        entries.push_back(key + " " + choice.Label);
    }
    entries.emplace_back("Esc cancel the transfer");
    std::vector<std::string> lines = {""};
    for (const std::string& entry : entries) {
        std::string& line = lines.back();
        std::string longer = line;
        if (!longer.empty()) {
            longer += kBetween;
        }
        longer += entry;
        if (line.empty() || DisplayWidth(longer) <= Width) {
            line = std::move(longer);
        } else {
            lines.push_back(entry);
        }
    }
    BlockPart part{kChoicesPart, {}};
    for (const std::string& line : lines) {
        for (std::string& piece : WrapAtWords(line, Width)) {
            part.Lines.push_back({std::move(piece)});
        }
    }
    return part;
}

// The keys alone, where there is no room for the answers: "[mMsS Esc, ? lists] ".
std::string ShortChoices(const TakenName& Name) {
    std::string letters;
    for (const ConflictChoice& choice : ChoicesFor(Name)) {
        letters += choice.Letter;
    }
    return "[" + letters + " Esc, ? lists] ";
}

std::size_t RowsOf(const std::vector<BlockPart>& Parts) {
    std::size_t rows = 0;
    for (const BlockPart& part : Parts) {
        rows += part.Lines.size();
    }
    return rows;
}

std::vector<BlockPart> PartsAbove(const ConflictQuestion& Question, int Width) {
    std::vector<BlockPart> parts = ConflictParts(Question.Asked(), Width);
    parts.push_back(WordsPart(kReasonPart, Question.WhyNotTaken(), Width));
    return parts;
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

QuestionScreen LayOutWith(const ConflictQuestion& Question, const std::string& Keys,
                          const std::string& LastLine, TerminalSize Size) {
    std::vector<BlockPart> parts = PartsAbove(Question, LayoutWidth(Size));
    parts.push_back(WordsPart(kChoicesPart, Keys, LayoutWidth(Size)));
    return WithLastLine(std::move(parts), LastLine, Size);
}

QuestionScreen LayOutChoices(const ConflictQuestion& Question, TerminalSize Size) {
    std::vector<BlockPart> parts = PartsAbove(Question, LayoutWidth(Size));
    BlockPart choices = ChoicesPart(Question.Asked(), LayoutWidth(Size));
    const auto rows = static_cast<std::size_t>(Size.Rows);
    const std::size_t choicesRows = choices.Lines.size() + 1;
    if (RowsOf(parts) + choicesRows <= rows || (Question.IsListWanted() && choicesRows <= rows)) {
        parts.push_back(std::move(choices));
        return WithLastLine(std::move(parts), "? ", Size);
    }
    return WithLastLine(std::move(parts), ShortChoices(Question.Asked()), Size);
}

QuestionScreen LayOutRename(const ConflictQuestion& Question, TerminalSize Size) {
    const int width = LayoutWidth(Size);
    const std::string label = width < kNarrowWidth ? "" : "Rename to: ";
    const TextField::View view = Question.NewName()->Visible(width - DisplayWidth(label));
    QuestionScreen screen = LayOutWith(Question, "Enter use this name  Esc back to the answers",
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
        return LayOutWith(Question, "y remove it and go on  any other key: back",
                          "Remove the " + WordFor(Question.Asked().Entry) + "? ", Size);
    }
    return LayOutChoices(Question, Size);
}
