#include "conflict_texts.h"

#include <cstdint>
#include <utility>

#include "conflict_choices.h"
#include "screen_text.h"
#include "size_text.h"

namespace {

constexpr const char* kBetween = "  ";

std::string SizeFact(bool bDirectory, bool bHasSize, std::uint64_t SizeBytes) {
    if (bDirectory) {
        return "directory";
    }
    return bHasSize ? SizeTextWithBytes(SizeBytes) : "size unknown";
}

std::string DateFact(bool bHasTime, const std::string& Date) {
    return bHasTime ? Date : "date unknown";
}

std::string DateMark(const TarvaneTransferConflict& Conflict) {
    if (!Conflict.bSourceHasModifiedTime || !Conflict.bDestinationHasModifiedTime) {
        return {};
    }
    if (Conflict.SourceModifiedTicks == Conflict.DestinationModifiedTicks) {
        return "same date";
    }
    return IsSourceNewer(Conflict) ? "newer" : "older";
}

// How the source compares with the destination: "newer, same size".
std::string Marks(const TarvaneTransferConflict& Conflict) {
    std::string marks = DateMark(Conflict);
    if (HasBothSizes(Conflict) && Conflict.SourceSizeBytes == Conflict.DestinationSizeBytes) {
        marks += marks.empty() ? "same size" : ", same size";
    }
    return marks;
}

std::string DestinationFacts(const TarvaneTransferConflict& Conflict) {
    return "  destination  " +
           SizeFact(Conflict.bDestinationDirectory, Conflict.bDestinationHasSize,
                    Conflict.DestinationSizeBytes) +
           "  " + DateFact(Conflict.bDestinationHasModifiedTime, Conflict.DestinationDate);
}

std::string SourceFacts(const TarvaneTransferConflict& Conflict) {
    const std::string marks = Marks(Conflict);
    return "  source       " +
           SizeFact(Conflict.bSourceDirectory, Conflict.bSourceHasSize, Conflict.SourceSizeBytes) +
           "  " + DateFact(Conflict.bSourceHasModifiedTime, Conflict.SourceDate) +
           (marks.empty() ? "" : "  " + marks);
}

BlockPart LossPart(const TarvaneTransferConflict& Conflict, int Width) {
    const bool bDirectoryComes = Conflict.Kind == TarvaneTransferConflictKind::Directory;
    if (bDirectoryComes && Conflict.bDestinationDirectory) {
        return {kOldFileNotePart, {}};
    }
    if (!bDirectoryComes && !Conflict.bDestinationDirectory) {
        return WordsPart(kOldFileNotePart,
                         "Canceling while a file is being overwritten loses the old one.", Width);
    }
    BlockPart part =
        WordsPart(kWarningPart,
                  bDirectoryComes ? "Merging replaces this file by a directory."
                                  : "Overwriting removes this whole directory with all in it.",
                  Width);
    for (ScreenLine& line : part.Lines) {
        line.bWarning = true;
    }
    return part;
}

} // namespace

std::string ConflictTitle(const TarvaneTransferConflict& Conflict) {
    return Conflict.bDestinationDirectory ? "Directory exists: " : "File exists: ";
}

std::vector<BlockPart> ConflictParts(const TarvaneTransferConflict& Conflict, int Width) {
    const std::string title = ConflictTitle(Conflict);
    std::string sourceLabel = "Source: ";
    sourceLabel.resize(title.size(), ' ');
    return {
        PathPart(kTitlePart, title + Conflict.DestinationPath, Width),
        PathPart(kSourcePathPart, sourceLabel + Conflict.SourcePath, Width),
        WordsPart(kDestinationFactsPart, DestinationFacts(Conflict), Width),
        WordsPart(kSourceFactsPart, SourceFacts(Conflict), Width),
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
