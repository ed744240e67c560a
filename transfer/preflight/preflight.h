// Looks through the sources of a plan, and the destination where it is there already, before its
// job starts, for what would end the job or surprise its user. Nothing is changed.

#pragma once

#include "conflict_policy.h"
#include "preflight_result.h"
#include "status_record.h"
#include "tarvanetransfer.h"
#include "track_list.h"

#include <optional>

struct PreflightTask {
    const TarvaneTransferPlan& Plan;
    // What they will do about taken names is foretold.
    ConflictRules Rules;
    PreflightScope Scope = PreflightScope::Everything;
    // Drives that are not among them are read, see ReadTrackList.
    KnownDiscs Discs = {};
    // Gets every entry that is going to be copied, whatever the scope; must outlive the look.
    StatusRecord* Record = nullptr;
    // Leads to its file where the record's own descriptor does not, in another process.
    std::optional<int> RecordDescriptor = {};
};

// A look for guards goes only where names may be taken, a move may remove through links, or a
// directory may not be readable, which for all but root may be anywhere; its totals are those of
// what it came to. For a record it goes through all that is copied.
//
// Threads: any; Control may be read from others.
// Errors: what cannot be looked at is a finding. std::system_error when the record cannot be
// written.
PreflightResult RunPreflight(const PreflightTask& Task, PreflightControl& Control);
