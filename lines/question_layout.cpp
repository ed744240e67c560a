#include "question_layout.h"

#include <utility>

#include "conflict_choices.h"
#include "conflict_texts.h"
#include "screen_text.h"

namespace {

constexpr const char* kBetween = "  ";

BlockPart LossPart(const TarvaneTransferConflict& Conflict, int Width) {
    const ConflictLoss loss = LossOf(Conflict);
    BlockPart part =
        WordsPart(loss.bWarning ? kWarningPart : kOldFileNotePart, loss.Sentence, Width);
    for (ScreenLine& line : part.Lines) {
        line.bWarning = loss.bWarning;
    }
    return part;
}

} // namespace

std::vector<BlockPart> ConflictParts(const TarvaneTransferConflict& Conflict, int Width) {
    const std::string title = ConflictTitle(Conflict);
    std::string sourceLabel = "Source: ";
    sourceLabel.resize(title.size(), ' ');
    return {
        PathPart(kTitlePart, title + Conflict.DestinationPath, Width),
        PathPart(kSourcePathPart, sourceLabel + Conflict.SourcePath, Width),
        WordsPart(kDestinationFactsPart, "  destination  " + DestinationFacts(Conflict), Width),
        WordsPart(kSourceFactsPart, "  source       " + SourceFacts(Conflict), Width),
        LossPart(Conflict, Width),
    };
}

BlockPart ChoicesPart(TarvaneTransferConflictKind Kind, int Width) {
    std::vector<std::string> entries;
    for (const ConflictChoice& choice : ChoicesFor(Kind)) {
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

std::string ShortChoices(TarvaneTransferConflictKind Kind) {
    std::string letters;
    for (const ConflictChoice& choice : ChoicesFor(Kind)) {
        letters += choice.Letter;
    }
    return "[" + letters + " Esc, ? lists] ";
}
