#include "run_again.h"

#include "conflict_choices.h"

namespace {

FileConflictChoice ChoiceForSecondRun(FileConflictChoice First) {
    switch (First) {
    case FileConflictChoice::Overwrite:
        return FileConflictChoice::Compare;
    // What is the same is neither older nor larger nor different.
    case FileConflictChoice::Older:
    case FileConflictChoice::Compare:
    case FileConflictChoice::Larger:
    case FileConflictChoice::SizeDiffers:
        return First;
    case FileConflictChoice::Ask:
    case FileConflictChoice::Skip:
    case FileConflictChoice::KeepBoth:
    case FileConflictChoice::Fail:
        break;
    }
    return FileConflictChoice::Skip;
}

} // namespace

// The first run has made directories that it has not filled, so all are merged into, and nothing in
// one that it was not to merge into may be replaced.
TransferRequest RequestToRunAgain(TransferRequest Request) {
    const FileConflictChoice first = Request.OnConflict.value_or(FileConflictChoice::Ask);
    const bool bMerged =
        ChosenForDirectories(first, Request.OnDirectoryConflict) == DirectoryConflictChoice::Merge;
    Request.OnConflict = bMerged ? ChoiceForSecondRun(first) : FileConflictChoice::Skip;
    Request.OnDirectoryConflict = DirectoryConflictChoice::Merge;
    return Request;
}
