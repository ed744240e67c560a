// Looks through the sources of a plan, and the destination where it is there already, before its
// job starts, for what would end the job or surprise its user. Nothing is changed.

#pragma once

#include "conflict_policy.h"
#include "preflight_result.h"
#include "tarvanetransfer.h"
#include "track_list.h"

struct PreflightTask {
    const TarvaneTransferPlan& Plan;
    // What they will do about taken names is foretold.
    ConflictRules Rules;
    PreflightScope Scope = PreflightScope::Everything;
    // Drives that are not among them are read, see ReadTrackList.
    KnownDiscs Discs = {};
};

// A look for guards only goes only where names may be taken, or a move may remove through links;
// its totals are those of what it came to.
//
// Threads: any; Control may be read from others.
// Errors: what cannot be looked at is a finding.
PreflightResult RunPreflight(const PreflightTask& Task, PreflightControl& Control);
