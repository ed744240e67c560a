#include "walk_record.h"

using Kind = RecordedEntry::Kind;

void WalkRecord::AddFile(const WalkListing& Directory, const char* Name, const struct stat& Status,
                         const DestinationEntry& There) {
    if (Keeps(Directory)) {
        Writer->Add({.What = Kind::File,
                     .Name = Directory.RecordedNameOf(Name),
                     .Source = RecordedStatusOf(Status),
                     .There = RecordedTargetOf(There)});
    }
}

void WalkRecord::Enter(const WalkListing& Directory, const RecordedStatus& Status) {
    if (Keeps(Directory)) {
        Writer->Add({.What = Kind::Directory,
                     .Name = Directory.RecordedName,
                     .Source = Status,
                     .There = Directory.There});
    }
}

void WalkRecord::Leave(const WalkListing& Directory) {
    if (Keeps(Directory)) {
        Writer->Add({.What = Kind::End});
    }
}

void WalkRecord::NoteGap() {
    if (Writer) {
        Writer->NoteGap();
    }
}

void WalkRecord::Finish() {
    if (Writer) {
        Writer->Finish();
    }
}
