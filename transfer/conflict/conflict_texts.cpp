#include "conflict_texts.h"

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

} // namespace

std::string ConflictTitle(const TarvaneTransferConflict& Conflict) {
    return Conflict.bDestinationDirectory ? "Directory exists: " : "File exists: ";
}

std::string DestinationFacts(const TarvaneTransferConflict& Conflict) {
    return SizeFact(Conflict.bDestinationDirectory, Conflict.bDestinationHasSize,
                    Conflict.DestinationSizeBytes) +
           kBetween + DateFact(Conflict.bDestinationHasModifiedTime, Conflict.DestinationDate);
}

std::string SourceFacts(const TarvaneTransferConflict& Conflict) {
    const std::string marks = Marks(Conflict);
    return SizeFact(Conflict.bSourceDirectory, Conflict.bSourceHasSize, Conflict.SourceSizeBytes) +
           kBetween + DateFact(Conflict.bSourceHasModifiedTime, Conflict.SourceDate) +
           (marks.empty() ? "" : kBetween + marks);
}

ConflictLoss LossOf(const TarvaneTransferConflict& Conflict) {
    const bool bDirectoryComes = Conflict.Kind == TarvaneTransferConflictKind::Directory;
    if (bDirectoryComes && Conflict.bDestinationDirectory) {
        return {};
    }
    if (bDirectoryComes) {
        return {.Sentence = "Merging replaces this file by a directory.", .bWarning = true};
    }
    if (Conflict.bDestinationDirectory) {
        return {.Sentence = "Overwriting removes this whole directory with all in it.",
                .bWarning = true};
    }
    return {.Sentence = "Canceling while a file is being overwritten loses the old one.",
            .bWarning = false};
}
