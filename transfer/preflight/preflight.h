// Looks through the sources of a plan, before its job starts, for what would end the job or
// surprise its user. Nothing is changed.

#pragma once

#include "preflight_result.h"
#include "tarvanetransfer.h"
#include "track_list.h"

// Threads: any; one call at a time per Control, which may be read and written from others. Drives
// that are not among Discs are read, see ReadTrackList.
// Errors: what cannot be looked at is a finding.
PreflightResult RunPreflight(const TarvaneTransferPlan& Plan, PreflightControl& Control,
                             const KnownDiscs& Discs = {});
