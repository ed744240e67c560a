#include "answered_names.h"

#include "tarvanepane.h"

void AnsweredNames::Add(const AnsweredConflict& Answered) {
    const std::string& path = Answered.Conflict.DestinationPath;
    switch (Answered.Action) {
    case TarvaneTransferConflictAction::Rename:
        NewNames.insert_or_assign(path, Answered.RenamePath);
        if (TarvaneIsCddaPath(Answered.Conflict.SourcePath)) {
            TrackNames.push_back(Answered.RenamePath);
        }
        break;
    case TarvaneTransferConflictAction::CompareByContent:
        Compared.insert(HashOf(path));
        break;
    case TarvaneTransferConflictAction::Skip:
    case TarvaneTransferConflictAction::SkipAll:
    case TarvaneTransferConflictAction::Cancel:
        LeaveAlone(path);
        break;
    case TarvaneTransferConflictAction::Overwrite:
    case TarvaneTransferConflictAction::OverwriteAll:
    case TarvaneTransferConflictAction::OverwriteAllOlder:
    case TarvaneTransferConflictAction::Merge:
    case TarvaneTransferConflictAction::MergeAll:
        break;
    }
}

void AnsweredNames::LeaveAlone(const std::string& Path) {
    if (const auto renamed = NewNames.find(Path); renamed != NewNames.end()) {
        std::erase(TrackNames, renamed->second);
        NewNames.erase(renamed);
    }
    Skipped.insert(HashOf(Path));
}

const std::string* AnsweredNames::NewNameOf(std::string_view Path) const {
    const auto found = NewNames.empty() ? NewNames.end() : NewNames.find(std::string(Path));
    return found == NewNames.end() ? nullptr : &found->second;
}
