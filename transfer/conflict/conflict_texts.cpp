#include "conflict_texts.h"

#include <cctype>
#include <cstdint>

#include "conflict_choices.h"
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

ConflictLoss LossByDirectory(const TakenEntry& Entry) {
    if (!IsDirectory(Entry)) {
        return {.Sentence = "Merging replaces this " + WordFor(Entry) + " by a directory.",
                .bWarning = true};
    }
    if (Entry.bLink) {
        return {.Sentence = "Merging writes into the directory that the link leads to.",
                .bWarning = true};
    }
    return {};
}

ConflictLoss LossByFile(const TakenName& Name) {
    if (Name.Entry.bHasOtherNames) {
        return Name.bFollowLinks
                   ? ConflictLoss{.Sentence = "Overwriting changes the file under its other names.",
                                  .bWarning = true}
                   : ConflictLoss{.Sentence = "Overwriting leaves the old file its other names.",
                                  .bWarning = false};
    }
    if (ReplacesLink(Name)) {
        return {.Sentence = "Overwriting replaces the link itself, not what it leads to.",
                .bWarning = false};
    }
    if (Name.Entry.bLink) {
        return {.Sentence = "Overwriting writes through the link, into what it leads to.",
                .bWarning = true};
    }
    if (IsDirectory(Name.Entry)) {
        return {.Sentence = "Overwriting removes this whole directory with all in it.",
                .bWarning = true};
    }
    return {.Sentence = "Canceling while a file is being overwritten loses the old one.",
            .bWarning = false};
}

} // namespace

std::string WordFor(const TakenEntry& Entry) {
    if (Entry.bLink) {
        return "link";
    }
    if (IsDirectory(Entry)) {
        return "directory";
    }
    return Entry.LeadsTo == TakenEntry::Kind::Special ? "special file" : "file";
}

std::string ConflictTitle(const TakenName& Name) {
    std::string word = WordFor(Name.Entry);
    word.front() = static_cast<char>(std::toupper(word.front()));
    return word + " exists: ";
}

std::string DestinationFacts(const TakenName& Name) {
    const TarvaneTransferConflict& conflict = Name.Conflict;
    return SizeFact(conflict.bDestinationDirectory, conflict.bDestinationHasSize,
                    conflict.DestinationSizeBytes) +
           kBetween + DateFact(conflict.bDestinationHasModifiedTime, conflict.DestinationDate) +
           (Name.Entry.bLink ? kBetween + ("is a link to " + Name.Entry.LinkTarget) : "");
}

std::string SourceFacts(const TarvaneTransferConflict& Conflict) {
    const std::string marks = Marks(Conflict);
    return SizeFact(Conflict.bSourceDirectory, Conflict.bSourceHasSize, Conflict.SourceSizeBytes) +
           kBetween + DateFact(Conflict.bSourceHasModifiedTime, Conflict.SourceDate) +
           (marks.empty() ? "" : kBetween + marks);
}

ConflictLoss LossOf(const TakenName& Name) {
    if (Name.bHoldsSource) {
        return {.Sentence = "This directory holds the source, so nothing can take its place.",
                .bWarning = true};
    }
    if (IsSpecialInTheWay(Name)) {
        return {.Sentence = "A device, a pipe or a socket is never overwritten.", .bWarning = true};
    }
    return Name.Conflict.Kind == TarvaneTransferConflictKind::Directory
               ? LossByDirectory(Name.Entry)
               : LossByFile(Name);
}
