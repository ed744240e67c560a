// Transfers as rows of the job list, and as scenes of the progress dialog.

#pragma once

#include "job_list_dialog.h"
#include "progress_scene.h"
#include "run_list.h"

#include <chrono>
#include <string>
#include <vector>

// "Copy: /home/u/Music": with the directory that all sources come from.
std::string TitleOf(const TransferRun& Run);

// Rates is shown in it and may be null.
ProgressScene SceneOf(TransferRun& Run, const RateHistory* Rates,
                      std::chrono::steady_clock::time_point Now);

// The engine's own rows for the jobs that it works on, ours for what comes before and after them.
std::vector<JobListRow> RowsOf(const RunList& Runs);
