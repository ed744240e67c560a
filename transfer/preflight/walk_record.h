// What a walk says of the entries that are going to be copied, for those who look at the copies.

#pragma once

#include "status_record.h"
#include "walk_listing.h"

#include <optional>

class WalkRecord {
public:
    // Nothing is kept without a record, which otherwise must outlive it.
    WalkRecord(StatusRecord* RecordToFill, std::optional<int> Descriptor) {
        if (RecordToFill != nullptr) {
            Writer.emplace(*RecordToFill, Descriptor.value_or(RecordToFill->FileDescriptor()));
        }
    }

    bool IsKept() const { return Writer.has_value(); }

    // A file in Directory, with a link to it followed in Status; There stands at its destination.
    void AddFile(const WalkListing& Directory, const char* Name, const struct stat& Status,
                 const DestinationEntry& There);

    // Before and after the entries of a directory. Nothing is said of one that is not copied.
    void Enter(const WalkListing& Directory, const RecordedStatus& Status);
    void Leave(const WalkListing& Directory);

    // Something in what is walked through could not be looked at.
    void NoteGap();

    // Comes after the last one.
    void Finish();

private:
    bool Keeps(const WalkListing& Directory) const {
        return IsKept() && Directory.Fate == Treatment::Copied;
    }

    std::optional<StatusRecord::Writer> Writer;
};
