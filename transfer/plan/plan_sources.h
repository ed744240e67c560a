// The sources of a transfer as the operands name them.

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "plan_refusal.h"
#include "tarvanetransfer.h"
#include "track_list.h"

struct PlanSource {
    // What the engine gets: absolute, or a track's path as it was given.
    std::filesystem::path Path;
    // What it is called, and what it becomes called in a directory.
    std::string Name;
    // Links are followed.
    bool bDirectory = false;
    bool bTrack = false;
    // The operand ends in "." or "..", or is "/": it has no name that it could keep in a directory,
    // so its contents go there.
    bool bContentsOnly = false;
};

// Looks each operand up and opens up whole CDs. Adds every one that cannot be a source to what is
// wrong, and returns the others. Where something is wrong already no drive is waited for.
//
// Every CD is listed, also for a track that is named: nothing can interrupt the job while a drive
// gets ready, so that is waited for here.
std::vector<PlanSource> FindSources(const std::vector<std::filesystem::path>& Operands, bool bMove,
                                    const TrackLister& ListTracks, PlanRefusal& InOutRefusal);

bool IsCdPath(const std::filesystem::path& Path);

// Whether any of the sources, or every one, is a track of a CD.
bool HasTracks(const TarvaneTransferPlan& Plan);
bool HasOnlyTracks(const TarvaneTransferPlan& Plan);
