// What the copy of one file, or of anything else that is no directory, comes to.

#pragma once

#include "access_rights.h"
#include "preflight_result.h"
#include "space_demand.h"
#include "taken_names.h"
#include "walk_record.h"

#include <set>
#include <string>

#include <sys/stat.h>

class FileLook {
public:
    // Adds to the findings and totals of Result, to Demand and to the record, which must outlive
    // it.
    FileLook(PreflightResult& ResultToFill, TakenNames& NamesToAsk, SpaceDemand& DemandToFill,
             WalkRecord& RecordToFill, bool bMoveSources)
        : Result(ResultToFill), Names(NamesToAsk), Demand(DemandToFill), Record(RecordToFill),
          bMove(bMoveSources) {}

    // Name is in Directory, with a link to it followed in Status; There stands at its destination.
    // Returns whether it is copied.
    bool LookAt(WalkListing& Directory, const char* Name, const struct stat& Status, bool bLink,
                const DestinationEntry& There);

    // The same for a file at a name that it is skipped for, whatever it is like.
    void Skip(WalkListing& Directory);

    // The same for a pipe, a socket or a device at a free name.
    void AddSpecial(WalkListing& Directory, const char* Name);

    // Counts an entry that is copied, one that is left out, or one that has no bytes and goes the
    // way of its directory.
    void CountCopied(WalkListing& Directory, std::uint64_t Bytes);
    void CountSkipped(const WalkListing& Directory, std::uint64_t Bytes);
    void Count(WalkListing& Directory);

    // Whether an entry, the copy of which has a name of its own, can have it at all. Otherwise that
    // is a finding.
    bool FitsItsNames(const WalkListing& Directory, const char* Name);
    // Finds that nothing can be created in a directory; once for each.
    void CheckCreation(WalkListing& Directory);

private:
    struct File;

    NameFate FateOf(const File& Source);
    void LookAtCopy(const File& Source, NameFate Fate);
    void CheckOverwriting(const File& Source, NameFate Fate);
    void AddSpace(const File& Source, NameFate Fate);

    PreflightResult& Result;
    TakenNames& Names;
    SpaceDemand& Demand;
    WalkRecord& Record;
    const bool bMove;
    const AccessRights Rights;
    std::set<std::string> UnwritableDirectories;
};
